// A second, read-only door to the real-time unit.
#include "hal/rtu_delegate.h"

#include "sim/library/call.h"

namespace hal {

using sim::call;
using sim::in;
using sim::out;
namespace operations = sim::operations;

struct rtu_delegate_t::impl : sim::Object {};

rtu_delegate_t::rtu_delegate_t(char const* device, int access) : impl_(new impl) {
    sim::construct<operations::rtu_delegate_t::constructor>(*impl_, in(device, access));
}

rtu_delegate_t::~rtu_delegate_t() {
    sim::destroy<operations::rtu_delegate_t::destructor>(*impl_);
    delete impl_;
}

int rtu_delegate_t::get_status(unsigned char& status) const {
    return call<operations::rtu_delegate_t::get_status>(impl_, out(status));
}

int rtu_delegate_t::get_revision(revision_t& revision) const {
    return call<operations::rtu_delegate_t::get_revision>(impl_, out(revision));
}

int rtu_delegate_t::get_heartbeat_timeout(unsigned int& timeout_ms) const {
    return call<operations::rtu_delegate_t::get_heartbeat_timeout>(impl_, out(timeout_ms));
}

}  // namespace hal
