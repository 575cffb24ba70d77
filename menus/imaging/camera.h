// The camera menu: triggers, capture and image settings of the sensor that is fitted.
#pragma once

// Runs the menu. Its camera is opened on entry, with the sensor detected then, and closed on return. Options and
// most numbers come through console I/O; gain and exposure are typed at the terminal, in socket mode too. Returns 0.
int test_camera();

// The commands below act on the camera of the running menu and may be called only while it runs.

// Prints how many triggers were missed and during which frame the last one was.
void get_trigger_counter();
// Returns the library's status.
int reset_trigger_counter();
// Asks for the scan mode and writes it. Throws no_answer. Returns the library's status, which is not printed.
int set_scanmode();
// Prints the scan mode, whatever the status, and adds the status to the client's reply. Returns the status.
int get_scanmode();
