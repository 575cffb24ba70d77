// The console from its root check to the end of its main menu.
#pragma once

// Path of the firmware that the gyro menus load into the sensor hub.
extern char const* g_gyro_firmware;

// Runs the console: on the starting thread with the process's arguments, and on the client's thread of socket mode
// with argc 1 and no argv. Returns 0; without root rights it ends the process with status -1.
int console_main(int argc, char** argv);
