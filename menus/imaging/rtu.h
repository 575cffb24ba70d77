// The real-time unit menu: triggers, exposure timing and the digital I/O's power.
#pragma once

#include "hal/types.h"

// All of these act on one real-time unit object that is opened before main and closed at process exit.

// Runs the menu. Options and the timing values come from the terminal, in socket mode too; imager type and rate
// through console I/O. Returns 0 on its exit key; key '0' ends the process.
int test_rtu();

// Prints which supply the device has, and so whether the digital I/O is powered. Prints nothing where that is unknown.
void dio_available();

// The revision of the real-time unit, as the library answers it.
int get_version_rtu(hal::revision_t& rev);

// Reads status, revision and heartbeat timeout through the delegate and drops them. Returns 0.
int test_rtu_delegate();
