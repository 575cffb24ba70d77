// Hands each sample of one virtual sensor to a function.
#pragma once

#include <functional>

#include "hal/quaternion.h"

namespace hal {

class gyro_t;

class gyro_delegate_t {
public:
    // `function` is called from a thread of the library with every sample of virtual sensor `sensor_id`
    // of `gyro`, which must outlive the delegate.
    gyro_delegate_t(gyro_t& gyro, int sensor_id, std::function<void(unsigned char, cb_struct_te, void*)> function);
    gyro_delegate_t(gyro_delegate_t const&) = delete;
    gyro_delegate_t& operator=(gyro_delegate_t const&) = delete;
    // Returns only when the function is not running, unless it is called from it.
    ~gyro_delegate_t();

private:
    struct impl;
    impl* impl_;
};

}  // namespace hal
