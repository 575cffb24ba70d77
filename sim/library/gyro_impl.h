// What the classes that work through a hal::gyro_t share.
#pragma once

#include <functional>

#include "hal/gyro.h"
#include "sim/calls/messages.h"

namespace sim {

// For the calls of those who work through it.
ObjectNumber number_of(hal::gyro_t const& gyro);

// Calls a data callback of the program with a sample.
void call_with(std::function<void(unsigned char, hal::cb_struct_te, void*)> const& function, SampleData const& sample);

}  // namespace sim
