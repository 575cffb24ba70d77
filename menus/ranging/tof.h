// The ranging menu: settings, calibration and single shots of the time-of-flight sensor.
#pragma once

// Runs the menu at the terminal, in socket mode too, until its exit key. Returns 0.
int test_tof();
