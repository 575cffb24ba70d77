// The state that the device shows to its user, and the heartbeat that keeps the device alive.
#pragma once

#include "hal/types.h"
#include "sim/core/clock.h"
#include "sim/device/properties.h"

namespace sim {

class SystemState {
public:
    // Refuses (-1, EINVAL) a state that is not assigned and keeps the old one.
    int set_state(hal::device_state_te state);
    int get_state(hal::device_state_te& state) const;

    int trigger_heartbeat(Time now);
    int get_heartbeat_timeout(unsigned int& timeout_ms) const;
    // Whether there was a heartbeat within the timeout.
    bool alive(Time now) const;

    // `now` answers the device's time.
    void describe(Properties& properties, std::function<Time()> const& now);

private:
    hal::device_state_te state_ = hal::device_state_te::boot;
    unsigned int heartbeats_ = 0;
    Time last_heartbeat_{0};
    unsigned int timeout_ms_ = 1000;
};

}  // namespace sim
