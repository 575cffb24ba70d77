// A second, read-only door to the real-time unit.
#include "hal/rtu_delegate.h"

#include "sim/library/gate.h"

namespace hal {

using sim::construct;
using sim::destroy;
using sim::Device;
using sim::gate;
using sim::in;
using sim::Module;
using sim::out;

struct rtu_delegate_t::impl : sim::Object {
    using Object::Object;
};

rtu_delegate_t::rtu_delegate_t(char const* device, int access) : impl_(new impl({device})) {
    construct(*impl_, "rtu_delegate_t::rtu_delegate_t", in(device, access));
}

rtu_delegate_t::~rtu_delegate_t() {
    destroy(*impl_, "rtu_delegate_t::~rtu_delegate_t");
    delete impl_;
}

int rtu_delegate_t::get_status(unsigned char& status) const {
    return gate(impl_, "rtu_delegate_t::get_status", out(status),
                [](Device& d, auto& s) { return d.modules.get_status(Module::rtu, s); });
}

int rtu_delegate_t::get_revision(revision_t& revision) const {
    return gate(impl_, "rtu_delegate_t::get_revision", out(revision),
                [](Device& d, auto& r) { return d.modules.get_revision(Module::rtu, r); });
}

int rtu_delegate_t::get_heartbeat_timeout(unsigned int& timeout_ms) const {
    return gate(impl_, "rtu_delegate_t::get_heartbeat_timeout", out(timeout_ms),
                [](Device& d, auto& ms) { return d.system.get_heartbeat_timeout(ms); });
}

}  // namespace hal
