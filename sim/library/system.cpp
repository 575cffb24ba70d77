// The state that the device shows to its user, and its heartbeat.
#include "hal/system.h"

#include "sim/library/gate.h"

namespace hal {

using sim::construct;
using sim::destroy;
using sim::Device;
using sim::gate;
using sim::in;
using sim::out;

struct system_t::impl : sim::Object {
    using Object::Object;
};

system_t::system_t(char const* device, int access) : impl_(new impl({device})) {
    construct(*impl_, "system_t::system_t", in(device, access));
}

system_t::~system_t() {
    destroy(*impl_, "system_t::~system_t");
    delete impl_;
}

int system_t::get_device_status(device_state_te& state) const {
    return gate(impl_, "system_t::get_device_status", out(state),
                [](Device& d, auto& s) { return d.system.get_state(s); });
}

int system_t::set_device_status(device_state_te state) {
    return gate(impl_, "system_t::set_device_status", in(state), [&](Device& d) { return d.system.set_state(state); });
}

int system_t::trigger_heartbeat() const {
    return gate(impl_, "system_t::trigger_heartbeat", [](Device& d) { return d.system.trigger_heartbeat(d.now()); });
}

}  // namespace hal
