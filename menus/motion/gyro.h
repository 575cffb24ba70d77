// The low-level menu of the motion sensor hub.
#pragma once

// Runs the menu at the terminal, in socket mode too. Boots the hub, then answers until its exit key and returns 0;
// key '0' ends the process with status 0. Sensor ids, rates and latencies stay for the next run.
int test_gyro();

// Switches the menu's virtual sensor on; with `prompt` it asks for its id, rate and latency first. The id is taken
// over from the menu at the first call only. The menu must be running. Throws no_answer.
void activate_sensor_prompt(bool prompt);
