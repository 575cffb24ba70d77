// The console's own tilt watchdog: compares each orientation sample with a saved position.
#pragma once

#include <cstdint>
#include <functional>

#include "hal/quaternion.h"

// What the watchdog does when the device comes back to the saved position and when it leaves it. Both must be set
// for a sample to be judged. To be set while no sample can arrive; called from the thread of the sample.
extern std::function<void()> g_on_running;
extern std::function<void()> g_on_warning;

// Makes the next orientation sample the saved position (0, 0, 0 at first). From any thread.
void request_save_position();

// Judges one sample of the orientation sensors 37 and 38; prints a trace for any sample. Runs on the library's
// thread, never twice at once. The saved position and the last judgement stay for the whole run of the console.
void cb_sensor_data(std::uint8_t sensor_id, hal::cb_struct_te kind, void* data);
