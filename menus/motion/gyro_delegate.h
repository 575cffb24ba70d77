// The menus that show the orientation live: with the delegate alone, and together with the tilt alarm.
#pragma once

#include "hal/quaternion.h"

// Each runs its menu at the terminal, in socket mode too, until its exit key. Returns 0.
int test_gyro_delegate();
int test_gyro_delegate_and_alarm();

// Prints the angles of an orientation sample, and nothing for any other. Runs on the library's thread.
void print_orientation(unsigned char sensor_id, hal::cb_struct_te kind, void* data);
