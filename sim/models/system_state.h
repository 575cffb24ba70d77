// The state that the device shows to its user, and the heartbeat that keeps the device alive.
#pragma once

#include "hal/types.h"
#include "sim/core/clock.h"

namespace sim {

class SystemState {
public:
    // Long enough for a program's own cycle, short enough that nobody waits long for a dead one.
    static constexpr unsigned int kUsualTimeout = 1000;  // ms

    // Refuses (-1, EINVAL) a state that is not assigned and keeps the old one.
    int set_state(hal::device_state_te state);
    int get_state(hal::device_state_te& state) const;
    hal::device_state_te state() const { return state_; }

    // Boots anew, without a heartbeat so far. The timeout stays.
    void lose_power();

    int trigger_heartbeat(Time now);
    int get_heartbeat_timeout(unsigned int& timeout_ms) const;
    unsigned int heartbeat_timeout() const { return timeout_ms_; }
    void set_heartbeat_timeout(unsigned int timeout_ms) { timeout_ms_ = timeout_ms; }
    unsigned int heartbeats() const { return heartbeats_; }
    // 0 where there was none.
    Time last_heartbeat() const { return last_heartbeat_; }
    // Whether there was a heartbeat within the timeout.
    bool alive(Time now) const;

private:
    hal::device_state_te state_ = hal::device_state_te::boot;
    unsigned int heartbeats_ = 0;
    Time last_heartbeat_{0};
    unsigned int timeout_ms_ = kUsualTimeout;
};

}  // namespace sim
