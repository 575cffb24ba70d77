// The state that the device shows to its user, and the heartbeat that keeps the device alive.
#include "sim/models/system_state.h"

#include <cerrno>

namespace sim {

namespace {

bool is_assigned(hal::device_state_te state) {
    auto const code = static_cast<int>(state);
    return (code >= 1 && code <= 6) || code == 9 || code == 10;
}

}  // namespace

int SystemState::set_state(hal::device_state_te state) {
    if (!is_assigned(state)) {
        errno = EINVAL;
        return -1;
    }
    state_ = state;
    return 0;
}

int SystemState::get_state(hal::device_state_te& state) const {
    state = state_;
    return 0;
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

void SystemState::describe(Properties& properties, std::function<Time()> const& now) {
    properties.add(
        "system.state", "state shown to the user: 1-6, 9, 10", [this] { return state_; },
        [this](hal::device_state_te state) { return set_state(state) == 0 ? Error() : Error("not a device state"); });
    properties.add("system.heartbeat.count", "heartbeats since the start", [this] { return heartbeats_; });
    properties.add("system.heartbeat.last", "time of the last heartbeat, s; 0: none yet",
                   [this] { return static_cast<double>(last_heartbeat_.count()) / 1e6; });
    properties.add_variable("system.heartbeat.timeout", "ms after the last heartbeat until the software counts as dead",
                            timeout_ms_);
    properties.add("system.alive", "whether there was a heartbeat within the timeout",
                   [this, now] { return alive(now()); });
}

}  // namespace sim
