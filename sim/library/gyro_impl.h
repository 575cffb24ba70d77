// The library's side of hal::gyro_t, shared by the delegates and alarms that work through it.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "hal/gyro.h"
#include "sim/device/sample_feed.h"
#include "sim/library/object.h"

namespace sim {

struct GyroExtra : Object::Extra {
    std::string firmware;
    std::string irq_value;
    std::shared_ptr<SampleFeed> feed;
};

std::shared_ptr<SampleFeed> feed_of(hal::gyro_t const& gyro);

// Calls a data callback of the program with a sample.
void call(std::function<void(unsigned char, hal::cb_struct_te, void*)> const& function,
          SampleFeed::Sample const& sample);

}  // namespace sim
