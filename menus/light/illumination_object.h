// The illumination module of the menu that runs, and what both sources of its commands do with it.
#pragma once

#include "hal/illumination.h"

// Set on entry of the menu. Every command works on it.
extern hal::illumination_t* p_illumination;

namespace illumination_menu {

// Says so where the status is a failure, that is not 0.
void print_failure(int status);
// Reads a number and prints it behind the label; after a failed read the failure, and then 0.
void show_number(char const* label, int (hal::illumination_t::*get)(unsigned int&) const);

}  // namespace illumination_menu
