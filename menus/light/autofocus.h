// The autofocus menu: focus position and its limits, calibration, errors, DOE and maintenance mode.
#pragma once

#include "hal/autofocus.h"

// The module of the menu that runs, set on entry.
extern hal::autofocus_t* p_autofocus;

// Runs the menu at the terminal, in socket mode too, until its exit key. Returns 0.
int test_autofocus();

// Prints whether the presence flag of p_autofocus is set.
void check_af();
