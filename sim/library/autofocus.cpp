// The autofocus module.
#include "hal/autofocus.h"

#include "sim/library/base_impl.h"
#include "sim/library/call.h"

namespace hal {

using sim::call;
using sim::in;
using sim::out;
namespace operations = sim::operations;

int autofocus_t::get_status(unsigned char& status) const {
    return call<operations::autofocus_t::get_status>(impl_, out(status));
}

int autofocus_t::get_revision(revision_t& revision) const {
    return call<operations::autofocus_t::get_revision>(impl_, out(revision));
}

bool autofocus_t::set_present() {
    return call<operations::autofocus_t::set_present>(impl_);
}

bool autofocus_t::is_present() const {
    return call<operations::autofocus_t::is_present>(impl_, in(sim::Hidden<bool>{present_}));
}

int autofocus_t::get_position(unsigned short& position) const {
    return call<operations::autofocus_t::get_position>(impl_, out(position));
}

int autofocus_t::set_position(unsigned int position) const {
    return call<operations::autofocus_t::set_position>(impl_, in(position));
}

int autofocus_t::get_position_limits(unsigned short& min, unsigned short& max) const {
    return call<operations::autofocus_t::get_position_limits>(impl_, out(min, max));
}

int autofocus_t::get_position_mm(unsigned short& position) const {
    return call<operations::autofocus_t::get_position_mm>(impl_, out(position));
}

int autofocus_t::set_position_mm(unsigned int position) const {
    return call<operations::autofocus_t::set_position_mm>(impl_, in(position));
}

int autofocus_t::get_position_limits_mm(std::string const& device_type, unsigned short& min,
                                        unsigned short& max) const {
    return call<operations::autofocus_t::get_position_limits_mm>(impl_, in(device_type), out(min, max));
}

int autofocus_t::reset() {
    return call<operations::autofocus_t::reset>(impl_);
}

int autofocus_t::calibrate() {
    return call<operations::autofocus_t::calibrate>(impl_);
}

int autofocus_t::get_calibration_frequency(unsigned short& frequency_hz) const {
    return call<operations::autofocus_t::get_calibration_frequency>(impl_, out(frequency_hz));
}

int autofocus_t::read_error(af_error& error) const {
    return call<operations::autofocus_t::read_error>(impl_, out(error));
}

int autofocus_t::set_doe_mode(doe_mode_te mode) {
    return call<operations::autofocus_t::set_doe_mode>(impl_, in(mode));
}

int autofocus_t::set_doe_force_active(bool active) {
    return call<operations::autofocus_t::set_doe_force_active>(impl_, in(active));
}

int autofocus_t::set_maintenance_mode(bool enabled) const {
    return call<operations::autofocus_t::set_maintenance_mode>(impl_, in(enabled));
}

}  // namespace hal
