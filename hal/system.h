// The state that the device shows to its user, and its heartbeat.
#pragma once

#include "hal/types.h"

namespace hal {

class system_t {
public:
    // Opens the real-time unit's node; `access` as for base_t.
    system_t(char const* device, int access);
    system_t(system_t const&) = delete;
    system_t& operator=(system_t const&) = delete;
    ~system_t();

    int get_device_status(device_state_te& state) const;
    int set_device_status(device_state_te state);
    // Tells the real-time unit once that the device's software is alive.
    int trigger_heartbeat() const;

private:
    struct impl;
    impl* impl_;
};

}  // namespace hal
