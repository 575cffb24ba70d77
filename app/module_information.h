// The module information commands that most component menus share.
#pragma once

#include "hal/base.h"

// Prints the options that these commands have in every menu: 1 status, 2 revision, 3 serial number, 0 exit.
void top_usage();

// Each prints its answer on standard output, a failure on standard error. Only a negative result is a failure.
// Returns 0.
int get_status(hal::base_t* module);
// Returns 0.
int get_revision(hal::base_t* module);
// Does nothing and returns -1: the modules' serial numbers are not read.
int get_serial_number(hal::base_t* module);

// What key '0' of these menus does: says goodbye and ends the process with status 0. Objects of the menu are
// not destroyed.
[[noreturn]] void exit_console();
