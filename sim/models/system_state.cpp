// The state that the device shows to its user, and the heartbeat that keeps the device alive.
#include "sim/models/system_state.h"

#include "sim/models/refusal.h"

namespace sim {

namespace {

bool is_assigned(hal::device_state_te state) {
    switch (state) {
        case hal::device_state_te::boot:
        case hal::device_state_te::confirm:
        case hal::device_state_te::running:
        case hal::device_state_te::find_me:
        case hal::device_state_te::warning:
        case hal::device_state_te::error:
        case hal::device_state_te::preview_network_reset:
        case hal::device_state_te::preview_localize:
            return true;
    }
    return false;
}

}  // namespace

int SystemState::set_state(hal::device_state_te state) {
    if (!is_assigned(state)) {
        return refuse(EINVAL);
    }
    state_ = state;
    return 0;
}

int SystemState::get_state(hal::device_state_te& state) const {
    state = state_;
    return 0;
}

void SystemState::lose_power() {
    state_ = hal::device_state_te::boot;
    heartbeats_ = 0;
    last_heartbeat_ = Time(0);
}

int SystemState::trigger_heartbeat(Time now) {
    ++heartbeats_;
    last_heartbeat_ = now;
    return 0;
}

int SystemState::get_heartbeat_timeout(unsigned int& timeout_ms) const {
    timeout_ms = timeout_ms_;
    return 0;
}

bool SystemState::alive(Time now) const {
    return heartbeats_ > 0 && now - last_heartbeat_ <= std::chrono::milliseconds(timeout_ms_);
}

}  // namespace sim
