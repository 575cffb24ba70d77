// What every module of the device can be asked.
#include "hal/base.h"

#include "sim/library/base_impl.h"
#include "sim/library/call.h"

namespace hal {

using sim::call;
using sim::in;
using sim::out;
namespace operations = sim::operations;

base_t::base_t(char const* device, int access) : impl_(new impl) {
    sim::construct<operations::base_t::constructor>(*impl_, in(device, access));
}

base_t::base_t(impl* opened) : impl_(opened) {}

base_t::~base_t() {
    if (impl_ != nullptr) {
        sim::destroy<operations::base_t::destructor>(*impl_);
        delete impl_;
    }
}

int base_t::get_status(unsigned char& status) const {
    return call<operations::base_t::get_status>(impl_, out(status));
}

int base_t::get_revision(revision_t& revision) const {
    return call<operations::base_t::get_revision>(impl_, out(revision));
}

}  // namespace hal
