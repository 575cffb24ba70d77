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

// Runs one of these commands where the option is its key, and says whether it was. Key '0' ends the process.
bool run_module_option(char option, hal::base_t* module);
