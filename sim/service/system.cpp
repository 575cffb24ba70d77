// The state that the device shows to its user, and its heartbeat.
#include "sim/service/handlers.h"

namespace sim {

namespace {

using AnyTarget = CallTarget<ServedObject>;

}  // namespace

int handlers::system_t::constructor(AnyTarget& t, Text const& device, int) {
    return t.construct<ServedObject>(std::vector<Text>{device});
}

int handlers::system_t::destructor(AnyTarget&) {
    return 0;
}

int handlers::system_t::get_device_status(AnyTarget& t, hal::device_state_te& s) {
    return t->system.get_state(s);
}

int handlers::system_t::set_device_status(AnyTarget& t, hal::device_state_te state) {
    return t->system.set_state(state);
}

int handlers::system_t::trigger_heartbeat(AnyTarget& t) {
    return t->system.trigger_heartbeat(t.now());
}

}  // namespace sim
