// The autofocus module.
#include "hal/autofocus.h"

#include "sim/library/base_impl.h"
#include "sim/library/gate.h"

namespace hal {

using sim::Autofocus;
using sim::Device;
using sim::gate;
using sim::in;
using sim::Module;
using sim::out;
using sim::recall;

namespace {

// Asks the module as it is now; refused where it cannot be reached.
template <typename Operation>
int ask(Device& device, Operation operation) {
    device.autofocus.advance(device.now());
    return device.autofocus.answer() == 0 ? operation(device.autofocus) : -1;
}

// Operations that cannot be refused by the module itself.
template <typename Operation>
int done(Device& device, Operation operation) {
    return ask(device, [&](Autofocus& module) {
        operation(module);
        return 0;
    });
}

}  // namespace

int autofocus_t::get_status(unsigned char& status) const {
    return gate(impl_, "autofocus_t::get_status", out(status), [](Device& d, auto& s) {
        return ask(d, [&](Autofocus&) { return d.modules.get_status(Module::autofocus, s); });
    });
}

int autofocus_t::get_revision(revision_t& revision) const {
    return gate(impl_, "autofocus_t::get_revision", out(revision), [](Device& d, auto& r) {
        return ask(d, [&](Autofocus&) { return d.modules.get_revision(Module::autofocus, r); });
    });
}

bool autofocus_t::set_present() {
    return gate(impl_, "autofocus_t::set_present", [](Device& d) { return ask(d, [](Autofocus&) { return 0; }) == 0; });
}

bool autofocus_t::is_present() const {
    return recall(impl_, "autofocus_t::is_present", [&](Device&) { return present_; });
}

int autofocus_t::get_position(unsigned short& position) const {
    return gate(impl_, "autofocus_t::get_position", out(position),
                [](Device& d, auto& a) { return ask(d, [&](Autofocus& m) { return m.get_position(a); }); });
}

int autofocus_t::set_position(unsigned int position) const {
    return gate(impl_, "autofocus_t::set_position", in(position),
                [&](Device& d) { return ask(d, [&](Autofocus& m) { return m.set_position(position); }); });
}

int autofocus_t::get_position_limits(unsigned short& min, unsigned short& max) const {
    return gate(impl_, "autofocus_t::get_position_limits", out(min, max), [](Device& d, auto& a, auto& b) {
        return ask(d, [&](Autofocus& m) { return m.get_position_limits(a, b); });
    });
}

int autofocus_t::get_position_mm(unsigned short& position) const {
    return gate(impl_, "autofocus_t::get_position_mm", out(position),
                [](Device& d, auto& a) { return ask(d, [&](Autofocus& m) { return m.get_position_mm(a); }); });
}

int autofocus_t::set_position_mm(unsigned int position) const {
    return gate(impl_, "autofocus_t::set_position_mm", in(position),
                [&](Device& d) { return ask(d, [&](Autofocus& m) { return m.set_position_mm(position); }); });
}

int autofocus_t::get_position_limits_mm(std::string const& device_type, unsigned short& min,
                                        unsigned short& max) const {
    return gate(impl_, "autofocus_t::get_position_limits_mm", in(device_type), out(min, max),
                [&](Device& d, auto& a, auto& b) {
                    return ask(d, [&](Autofocus& m) { return m.get_position_limits_mm(device_type, a, b); });
                });
}

int autofocus_t::reset() {
    return gate(impl_, "autofocus_t::reset", [](Device& d) { return ask(d, [](Autofocus& m) { return m.reset(); }); });
}

int autofocus_t::calibrate() {
    return gate(impl_, "autofocus_t::calibrate",
                [](Device& d) { return ask(d, [](Autofocus& m) { return m.calibrate(); }); });
}

int autofocus_t::get_calibration_frequency(unsigned short& frequency_hz) const {
    return gate(impl_, "autofocus_t::get_calibration_frequency", out(frequency_hz), [](Device& d, auto& a) {
        return ask(d, [&](Autofocus& m) { return m.get_calibration_frequency(a); });
    });
}

int autofocus_t::read_error(af_error& error) const {
    return gate(impl_, "autofocus_t::read_error", out(error),
                [](Device& d, auto& e) { return done(d, [&](Autofocus& m) { e = m.errors(); }); });
}

int autofocus_t::set_doe_mode(doe_mode_te mode) {
    return gate(impl_, "autofocus_t::set_doe_mode", in(mode),
                [&](Device& d) { return ask(d, [&](Autofocus& m) { return m.set_doe_mode(mode); }); });
}

int autofocus_t::set_doe_force_active(bool active) {
    return gate(impl_, "autofocus_t::set_doe_force_active", in(active),
                [&](Device& d) { return done(d, [&](Autofocus& m) { m.set_doe_force_active(active); }); });
}

int autofocus_t::set_maintenance_mode(bool enabled) const {
    return gate(impl_, "autofocus_t::set_maintenance_mode", in(enabled),
                [&](Device& d) { return done(d, [&](Autofocus& m) { m.set_maintenance_mode(enabled); }); });
}

}  // namespace hal
