// The illumination module.
#include "hal/illumination.h"

#include <cmath>

#include "sim/library/base_impl.h"
#include "sim/library/gate.h"

namespace hal {

using sim::Device;
using sim::gate;
using sim::Illumination;
using sim::in;
using sim::Module;
using sim::out;

namespace {

// Asks the module as it is now; refused where it is missing.
template <typename Operation>
int ask(Device& device, Operation operation) {
    device.advance_imaging();
    return device.illumination.answer() == 0 ? operation(device.illumination) : -1;
}

// Operations that cannot be refused by the module itself.
template <typename Operation>
int done(Device& device, Operation operation) {
    return ask(device, [&](Illumination& module) {
        operation(module);
        return 0;
    });
}

int write_limits(sim::Limits const& limits, unsigned int& min, unsigned int& max, unsigned int& step) {
    min = limits.min;
    max = limits.max;
    step = limits.step;
    return 0;
}

int read_colour_limits(Device& device, unsigned int& min, unsigned int& max, unsigned int& step) {
    return ask(device, [&](Illumination& module) {
        sim::Limits limits{};
        int const status = module.get_colour_limits(limits);
        return status == 0 ? write_limits(limits, min, max, step) : status;
    });
}

// The library speaks of whole degrees, and of none below 0.
unsigned int whole_degrees(double temperature) {
    return temperature > 0.0 ? static_cast<unsigned int>(std::lround(temperature)) : 0U;
}

}  // namespace

int illumination_t::get_status(unsigned char& status) const {
    return gate(impl_, "illumination_t::get_status", out(status), [](Device& d, auto& s) {
        return ask(d, [&](Illumination&) { return d.modules.get_status(Module::illumination, s); });
    });
}

int illumination_t::get_revision(revision_t& revision) const {
    return gate(impl_, "illumination_t::get_revision", out(revision), [](Device& d, auto& r) {
        return ask(d, [&](Illumination&) { return d.modules.get_revision(Module::illumination, r); });
    });
}

int illumination_t::get_pattern(light_pattern_te& pattern) const {
    return gate(impl_, "illumination_t::get_pattern", out(pattern),
                [](Device& d, auto& a) { return done(d, [&](Illumination& m) { a = m.pattern(); }); });
}

int illumination_t::set_pattern(light_pattern_te pattern) {
    return gate(impl_, "illumination_t::set_pattern", in(pattern),
                [&](Device& d) { return ask(d, [&](Illumination& m) { return m.set_pattern(pattern); }); });
}

int illumination_t::get_segments(unsigned int& segments) const {
    return gate(impl_, "illumination_t::get_segments", out(segments),
                [](Device& d, auto& a) { return done(d, [&](Illumination& m) { a = m.segments(); }); });
}

int illumination_t::set_segments(unsigned int segments) {
    return gate(impl_, "illumination_t::set_segments", in(segments),
                [&](Device& d) { return ask(d, [&](Illumination& m) { return m.set_segments(segments); }); });
}

int illumination_t::get_segments_limits(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return gate(impl_, "illumination_t::get_segments_limits", out(min, max, step),
                [](Device& d, auto& least, auto& most, auto& by) {
                    return ask(
                        d, [&](Illumination&) { return write_limits(Illumination::kSegmentLimits, least, most, by); });
                });
}

int illumination_t::get_brightness(unsigned int& brightness) const {
    return gate(impl_, "illumination_t::get_brightness", out(brightness),
                [](Device& d, auto& a) { return done(d, [&](Illumination& m) { a = m.brightness(); }); });
}

int illumination_t::set_brightness(unsigned int brightness) {
    return gate(impl_, "illumination_t::set_brightness", in(brightness),
                [&](Device& d) { return ask(d, [&](Illumination& m) { return m.set_brightness(brightness); }); });
}

int illumination_t::get_brightness_limits(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return gate(impl_, "illumination_t::get_brightness_limits", out(min, max, step),
                [](Device& d, auto& least, auto& most, auto& by) {
                    return ask(d, [&](Illumination&) {
                        return write_limits(Illumination::kBrightnessLimits, least, most, by);
                    });
                });
}

int illumination_t::get_brightness_red(unsigned int& brightness) const {
    return gate(impl_, "illumination_t::get_brightness_red", out(brightness), [](Device& d, auto& percent) {
        return ask(d, [&](Illumination& m) { return m.get_colour(Illumination::red, percent); });
    });
}

int illumination_t::set_brightness_red(unsigned int brightness) {
    return gate(impl_, "illumination_t::set_brightness_red", in(brightness), [&](Device& d) {
        return ask(d, [&](Illumination& m) { return m.set_colour(Illumination::red, brightness); });
    });
}

int illumination_t::get_brightness_limits_red(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return gate(impl_, "illumination_t::get_brightness_limits_red", out(min, max, step), read_colour_limits);
}

int illumination_t::get_brightness_green(unsigned int& brightness) const {
    return gate(impl_, "illumination_t::get_brightness_green", out(brightness), [](Device& d, auto& percent) {
        return ask(d, [&](Illumination& m) { return m.get_colour(Illumination::green, percent); });
    });
}

int illumination_t::set_brightness_green(unsigned int brightness) {
    return gate(impl_, "illumination_t::set_brightness_green", in(brightness), [&](Device& d) {
        return ask(d, [&](Illumination& m) { return m.set_colour(Illumination::green, brightness); });
    });
}

int illumination_t::get_brightness_limits_green(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return gate(impl_, "illumination_t::get_brightness_limits_green", out(min, max, step), read_colour_limits);
}

int illumination_t::get_brightness_blue(unsigned int& brightness) const {
    return gate(impl_, "illumination_t::get_brightness_blue", out(brightness), [](Device& d, auto& percent) {
        return ask(d, [&](Illumination& m) { return m.get_colour(Illumination::blue, percent); });
    });
}

int illumination_t::set_brightness_blue(unsigned int brightness) {
    return gate(impl_, "illumination_t::set_brightness_blue", in(brightness), [&](Device& d) {
        return ask(d, [&](Illumination& m) { return m.set_colour(Illumination::blue, brightness); });
    });
}

int illumination_t::get_brightness_limits_blue(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return gate(impl_, "illumination_t::get_brightness_limits_blue", out(min, max, step), read_colour_limits);
}

int illumination_t::set_write_protection(bool enabled) const {
    return gate(impl_, "illumination_t::set_write_protection", in(enabled),
                [&](Device& d) { return done(d, [&](Illumination& m) { m.set_write_protection(enabled); }); });
}

int illumination_t::get_red_led(bool& enabled) const {
    return gate(impl_, "illumination_t::get_red_led", out(enabled),
                [](Device& d, auto& a) { return done(d, [&](Illumination& m) { a = m.led(Illumination::red_led); }); });
}

int illumination_t::set_red_led(bool enabled) const {
    return gate(impl_, "illumination_t::set_red_led", in(enabled), [&](Device& d) {
        return done(d, [&](Illumination& m) { m.set_led(Illumination::red_led, enabled); });
    });
}

int illumination_t::get_green_led(bool& enabled) const {
    return gate(impl_, "illumination_t::get_green_led", out(enabled), [](Device& d, auto& a) {
        return done(d, [&](Illumination& m) { a = m.led(Illumination::green_led); });
    });
}

int illumination_t::set_green_led(bool enabled) const {
    return gate(impl_, "illumination_t::set_green_led", in(enabled), [&](Device& d) {
        return done(d, [&](Illumination& m) { m.set_led(Illumination::green_led, enabled); });
    });
}

int illumination_t::get_alter_led(bool& enabled) const {
    return gate(impl_, "illumination_t::get_alter_led", out(enabled), [](Device& d, auto& a) {
        return done(d, [&](Illumination& m) { a = m.led(Illumination::alter_led); });
    });
}

int illumination_t::set_alter_led(bool enabled) const {
    return gate(impl_, "illumination_t::set_alter_led", in(enabled), [&](Device& d) {
        return done(d, [&](Illumination& m) { m.set_led(Illumination::alter_led, enabled); });
    });
}

int illumination_t::get_dc_brightness_limit(unsigned int& limit) const {
    return gate(impl_, "illumination_t::get_dc_brightness_limit", out(limit),
                [](Device& d, auto& a) { return done(d, [&](Illumination& m) { a = m.dc_brightness_limit(); }); });
}

int illumination_t::set_dc_brightness_limit(unsigned int limit) const {
    return gate(impl_, "illumination_t::set_dc_brightness_limit", in(limit),
                [&](Device& d) { return ask(d, [&](Illumination& m) { return m.set_dc_brightness_limit(limit); }); });
}

int illumination_t::get_flash_brightness_limit(unsigned int& limit) const {
    return gate(impl_, "illumination_t::get_flash_brightness_limit", out(limit),
                [](Device& d, auto& a) { return done(d, [&](Illumination& m) { a = m.flash_brightness_limit(); }); });
}

int illumination_t::set_flash_brightness_limit(unsigned int limit) const {
    return gate(impl_, "illumination_t::set_flash_brightness_limit", in(limit), [&](Device& d) {
        return ask(d, [&](Illumination& m) { return m.set_flash_brightness_limit(limit); });
    });
}

int illumination_t::get_mode(illumination_mode_te& mode) const {
    return gate(impl_, "illumination_t::get_mode", out(mode),
                [](Device& d, auto& a) { return done(d, [&](Illumination& m) { a = m.mode(); }); });
}

int illumination_t::set_mode(illumination_mode_te mode) {
    return gate(impl_, "illumination_t::set_mode", in(mode),
                [&](Device& d) { return ask(d, [&](Illumination& m) { return m.set_mode(mode); }); });
}

int illumination_t::get_ot_off_limit(unsigned int& limit) const {
    return gate(impl_, "illumination_t::get_ot_off_limit", out(limit),
                [](Device& d, auto& a) { return done(d, [&](Illumination& m) { a = m.ot_off_limit(); }); });
}

int illumination_t::set_ot_off_limit(unsigned int limit) const {
    return gate(impl_, "illumination_t::set_ot_off_limit", in(limit),
                [&](Device& d) { return ask(d, [&](Illumination& m) { return m.set_ot_off_limit(limit); }); });
}

int illumination_t::set_limit_ot_decrease(unsigned int limit) const {
    return gate(impl_, "illumination_t::set_limit_ot_decrease", in(limit),
                [&](Device& d) { return ask(d, [&](Illumination& m) { return m.set_limit_ot_decrease(limit); }); });
}

int illumination_t::is_present(bool& present) const {
    return gate(impl_, "illumination_t::is_present", out(present),
                [](Device& d, auto& a) { return done(d, [&](Illumination& m) { a = m.module.present; }); });
}

int illumination_t::is_rgbw_illumination(bool& rgbw) const {
    return gate(impl_, "illumination_t::is_rgbw_illumination", out(rgbw),
                [](Device& d, auto& a) { return done(d, [&](Illumination& m) { a = m.module.rgbw; }); });
}

int illumination_t::get_spot_states(spot_states& states) const {
    return gate(impl_, "illumination_t::get_spot_states", out(states),
                [](Device& d, auto& a) { return done(d, [&](Illumination& m) { a = m.states(); }); });
}

int illumination_t::get_spot_flags(spot_flags& flags) const {
    return gate(impl_, "illumination_t::get_spot_flags", out(flags),
                [](Device& d, auto& a) { return done(d, [&](Illumination& m) { a = m.flags(); }); });
}

int illumination_t::get_error_code(illu_error_code& code) const {
    return gate(impl_, "illumination_t::get_error_code", out(code),
                [](Device& d, auto& a) { return done(d, [&](Illumination& m) { a = m.error_code(); }); });
}

int illumination_t::get_exposure_mode(exposure_mode& mode) const {
    return gate(impl_, "illumination_t::get_exposure_mode", out(mode),
                [](Device& d, auto& a) { return done(d, [&](Illumination& m) { a = m.exposure_mode(); }); });
}

int illumination_t::set_exposure_mode(exposure_mode mode, unsigned int exposure_time_us) const {
    return gate(impl_, "illumination_t::set_exposure_mode", in(mode, exposure_time_us), [&](Device& d) {
        return ask(d, [&](Illumination& m) { return m.set_exposure_mode(mode, exposure_time_us); });
    });
}

int illumination_t::get_internal_temperature(unsigned int& temperature) const {
    return gate(impl_, "illumination_t::get_internal_temperature", out(temperature), [](Device& d, auto& a) {
        return done(d, [&](Illumination& m) { a = whole_degrees(m.internal_temperature()); });
    });
}

int illumination_t::get_external_temperature(unsigned int& temperature) const {
    return gate(impl_, "illumination_t::get_external_temperature", out(temperature), [](Device& d, auto& a) {
        return done(d, [&](Illumination& m) { a = whole_degrees(m.external_temperature()); });
    });
}

int illumination_t::get_guards(illu_guards& guards) const {
    return gate(impl_, "illumination_t::get_guards", out(guards),
                [](Device& d, auto& a) { return done(d, [&](Illumination& m) { a = m.guards(); }); });
}

int illumination_t::set_guards(illu_guards guards) const {
    return gate(impl_, "illumination_t::set_guards", in(guards),
                [&](Device& d) { return ask(d, [&](Illumination& m) { return m.set_guards(guards); }); });
}

}  // namespace hal
