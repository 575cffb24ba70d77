// The state that the device shows to its user, and its heartbeat.
#include "hal/system.h"

#include "sim/library/call.h"

namespace hal {

using sim::call;
using sim::in;
using sim::out;
namespace operations = sim::operations;

struct system_t::impl : sim::Object {};

system_t::system_t(char const* device, int access) : impl_(new impl) {
    sim::construct<operations::system_t::constructor>(*impl_, in(device, access));
}

system_t::~system_t() {
    sim::destroy<operations::system_t::destructor>(*impl_);
    delete impl_;
}

int system_t::get_device_status(device_state_te& state) const {
    return call<operations::system_t::get_device_status>(impl_, out(state));
}

int system_t::set_device_status(device_state_te state) {
    return call<operations::system_t::set_device_status>(impl_, in(state));
}

int system_t::trigger_heartbeat() const {
    return call<operations::system_t::trigger_heartbeat>(impl_);
}

}  // namespace hal
