// The system state menu: the state that the device shows to its user, and its heartbeat.
#pragma once

#include "hal/system.h"

// Runs the menu at the terminal, in socket mode too. Does not return: its exit key ends the process with status 0.
void test_system();

// Reads the state and prints its number. Returns 0, whatever the library answered.
int get_device_status(hal::system_t& system);
