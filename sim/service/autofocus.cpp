// The autofocus module.
#include "sim/service/handlers.h"
#include "sim/service/module_answer.h"

namespace sim {

namespace {

using AnyTarget = CallTarget<ServedObject>;

}  // namespace

int handlers::autofocus_t::get_status(AnyTarget& t, unsigned char& s) {
    return ask(t->autofocus, [&](Autofocus&) { return t->modules.get_status(Module::autofocus, s); });
}

int handlers::autofocus_t::get_revision(AnyTarget& t, hal::revision_t& r) {
    return ask(t->autofocus, [&](Autofocus&) { return t->modules.get_revision(Module::autofocus, r); });
}

bool handlers::autofocus_t::set_present(AnyTarget& t) {
    return ask(t->autofocus, [](Autofocus&) { return 0; }) == 0;
}

bool handlers::autofocus_t::is_present(AnyTarget&, Hidden<bool> const& present) {
    return present.value;
}

int handlers::autofocus_t::get_position(AnyTarget& t, unsigned short& a) {
    return ask(t->autofocus, [&](Autofocus& m) { return m.get_position(a); });
}

int handlers::autofocus_t::set_position(AnyTarget& t, unsigned int position) {
    return ask(t->autofocus, [&](Autofocus& m) { return m.set_position(position); });
}

int handlers::autofocus_t::get_position_limits(AnyTarget& t, unsigned short& a, unsigned short& b) {
    return ask(t->autofocus, [&](Autofocus& m) { return m.get_position_limits(a, b); });
}

int handlers::autofocus_t::get_position_mm(AnyTarget& t, unsigned short& a) {
    return ask(t->autofocus, [&](Autofocus& m) { return m.get_position_mm(a); });
}

int handlers::autofocus_t::set_position_mm(AnyTarget& t, unsigned int position) {
    return ask(t->autofocus, [&](Autofocus& m) { return m.set_position_mm(position); });
}

int handlers::autofocus_t::get_position_limits_mm(AnyTarget& t, std::string const& device_type, unsigned short& a,
                                                  unsigned short& b) {
    return ask(t->autofocus, [&](Autofocus& m) { return m.get_position_limits_mm(device_type, a, b); });
}

int handlers::autofocus_t::reset(AnyTarget& t) {
    return ask(t->autofocus, [](Autofocus& m) { return m.reset(); });
}

int handlers::autofocus_t::calibrate(AnyTarget& t) {
    return ask(t->autofocus, [](Autofocus& m) { return m.calibrate(); });
}

int handlers::autofocus_t::get_calibration_frequency(AnyTarget& t, unsigned short& a) {
    return ask(t->autofocus, [&](Autofocus& m) { return m.get_calibration_frequency(a); });
}

int handlers::autofocus_t::read_error(AnyTarget& t, hal::af_error& e) {
    return done(t->autofocus, [&](Autofocus& m) { e = m.errors(); });
}

int handlers::autofocus_t::set_doe_mode(AnyTarget& t, hal::doe_mode_te mode) {
    return ask(t->autofocus, [&](Autofocus& m) { return m.set_doe_mode(mode); });
}

int handlers::autofocus_t::set_doe_force_active(AnyTarget& t, bool active) {
    return done(t->autofocus, [&](Autofocus& m) { m.set_doe_force_active(active); });
}

int handlers::autofocus_t::set_maintenance_mode(AnyTarget& t, bool enabled) {
    return done(t->autofocus, [&](Autofocus& m) { m.set_maintenance_mode(enabled); });
}

}  // namespace sim
