// The autofocus module.
#include "hal/autofocus.h"

#include "sim/hal/base_impl.h"
#include "sim/hal/gate.h"

namespace hal {

using sim::destroy;
using sim::Device;
using sim::gate;
using sim::in;
using sim::Module;
using sim::no_model;
using sim::out;
using sim::recall;

autofocus_t::~autofocus_t() {
    destroy(*impl_, "autofocus_t::~autofocus_t");
}

int autofocus_t::get_status(unsigned char& status) const {
    return gate(impl_, "autofocus_t::get_status", out(status),
                [](Device& d, auto& s) { return d.modules.get_status(Module::autofocus, s); });
}

int autofocus_t::get_revision(revision_t& revision) const {
    return gate(impl_, "autofocus_t::get_revision", out(revision),
                [](Device& d, auto& r) { return d.modules.get_revision(Module::autofocus, r); });
}

bool autofocus_t::set_present() {
    return gate(impl_, "autofocus_t::set_present", [](Device&) { return false; });
}

bool autofocus_t::is_present() const {
    return recall(impl_, "autofocus_t::is_present", [&](Device&) { return present_; });
}

int autofocus_t::get_position(unsigned short& position) const {
    return gate(impl_, "autofocus_t::get_position", out(position), [](Device&, auto&) { return no_model(); });
}

int autofocus_t::set_position(unsigned int position) const {
    return gate(impl_, "autofocus_t::set_position", in(position), [](Device&) { return no_model(); });
}

int autofocus_t::get_position_limits(unsigned short& min, unsigned short& max) const {
    return gate(impl_, "autofocus_t::get_position_limits", out(min, max),
                [](Device&, auto&, auto&) { return no_model(); });
}

int autofocus_t::get_position_mm(unsigned short& position) const {
    return gate(impl_, "autofocus_t::get_position_mm", out(position), [](Device&, auto&) { return no_model(); });
}

int autofocus_t::set_position_mm(unsigned int position) const {
    return gate(impl_, "autofocus_t::set_position_mm", in(position), [](Device&) { return no_model(); });
}

int autofocus_t::get_position_limits_mm(std::string const& device_type, unsigned short& min,
                                        unsigned short& max) const {
    return gate(impl_, "autofocus_t::get_position_limits_mm", in(device_type), out(min, max),
                [](Device&, auto&, auto&) { return no_model(); });
}

int autofocus_t::reset() {
    return gate(impl_, "autofocus_t::reset", [](Device&) { return no_model(); });
}

int autofocus_t::calibrate() {
    return gate(impl_, "autofocus_t::calibrate", [](Device&) { return no_model(); });
}

int autofocus_t::get_calibration_frequency(unsigned short& frequency_hz) const {
    return gate(impl_, "autofocus_t::get_calibration_frequency", out(frequency_hz),
                [](Device&, auto&) { return no_model(); });
}

int autofocus_t::read_error(af_error& error) const {
    return gate(impl_, "autofocus_t::read_error", out(error), [](Device&, auto&) { return no_model(); });
}

int autofocus_t::set_doe_mode(doe_mode_te mode) {
    return gate(impl_, "autofocus_t::set_doe_mode", in(mode), [](Device&) { return no_model(); });
}

int autofocus_t::set_doe_force_active(bool active) {
    return gate(impl_, "autofocus_t::set_doe_force_active", in(active), [](Device&) { return no_model(); });
}

int autofocus_t::set_maintenance_mode(bool enabled) const {
    return gate(impl_, "autofocus_t::set_maintenance_mode", in(enabled), [](Device&) { return no_model(); });
}

}  // namespace hal
