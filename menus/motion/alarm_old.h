// The legacy tilt alarm test, in which the console's own watchdog judges the samples.
#pragma once

// Runs the test's menu at the terminal until its exit key. Returns 0. No menu leads here: it is an entry point of
// its own.
int test_alarm_old();
