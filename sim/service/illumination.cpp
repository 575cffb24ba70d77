// The illumination module.
#include <cmath>

#include "sim/service/handlers.h"
#include "sim/service/module_answer.h"

namespace sim {

namespace {

using AnyTarget = CallTarget<ServedObject>;

int write_limits(Limits const& limits, unsigned int& min, unsigned int& max, unsigned int& step) {
    min = limits.min;
    max = limits.max;
    step = limits.step;
    return 0;
}

int read_colour_limits(AnyTarget& t, unsigned int& min, unsigned int& max, unsigned int& step) {
    return ask(t->illumination, [&](Illumination& module) {
        Limits limits{};
        int const status = module.get_colour_limits(limits);
        return status == 0 ? write_limits(limits, min, max, step) : status;
    });
}

// The library speaks of whole degrees, and of none below 0.
unsigned int whole_degrees(double temperature) {
    return temperature > 0.0 ? static_cast<unsigned int>(std::lround(temperature)) : 0U;
}

}  // namespace

int handlers::illumination_t::get_status(AnyTarget& t, unsigned char& s) {
    return ask(t->illumination, [&](Illumination&) { return t->modules.get_status(Module::illumination, s); });
}

int handlers::illumination_t::get_revision(AnyTarget& t, hal::revision_t& r) {
    return ask(t->illumination, [&](Illumination&) { return t->modules.get_revision(Module::illumination, r); });
}

int handlers::illumination_t::get_pattern(AnyTarget& t, hal::light_pattern_te& a) {
    return done(t->illumination, [&](Illumination& m) { a = m.pattern(); });
}

int handlers::illumination_t::set_pattern(AnyTarget& t, hal::light_pattern_te pattern) {
    return ask(t->illumination, [&](Illumination& m) { return m.set_pattern(pattern); });
}

int handlers::illumination_t::get_segments(AnyTarget& t, unsigned int& a) {
    return done(t->illumination, [&](Illumination& m) { a = m.segments(); });
}

int handlers::illumination_t::set_segments(AnyTarget& t, unsigned int segments) {
    return ask(t->illumination, [&](Illumination& m) { return m.set_segments(segments); });
}

int handlers::illumination_t::get_segments_limits(AnyTarget& t, unsigned int& least, unsigned int& most,
                                                  unsigned int& by) {
    return ask(t->illumination,
               [&](Illumination&) { return write_limits(Illumination::kSegmentLimits, least, most, by); });
}

int handlers::illumination_t::get_brightness(AnyTarget& t, unsigned int& a) {
    return done(t->illumination, [&](Illumination& m) { a = m.brightness(); });
}

int handlers::illumination_t::set_brightness(AnyTarget& t, unsigned int brightness) {
    return ask(t->illumination, [&](Illumination& m) { return m.set_brightness(brightness); });
}

int handlers::illumination_t::get_brightness_limits(AnyTarget& t, unsigned int& least, unsigned int& most,
                                                    unsigned int& by) {
    return ask(t->illumination,
               [&](Illumination&) { return write_limits(Illumination::kBrightnessLimits, least, most, by); });
}

int handlers::illumination_t::get_brightness_red(AnyTarget& t, unsigned int& percent) {
    return ask(t->illumination, [&](Illumination& m) { return m.get_colour(Illumination::red, percent); });
}

int handlers::illumination_t::set_brightness_red(AnyTarget& t, unsigned int brightness) {
    return ask(t->illumination, [&](Illumination& m) { return m.set_colour(Illumination::red, brightness); });
}

int handlers::illumination_t::get_brightness_limits_red(AnyTarget& t, unsigned int& min, unsigned int& max,
                                                        unsigned int& step) {
    return read_colour_limits(t, min, max, step);
}

int handlers::illumination_t::get_brightness_green(AnyTarget& t, unsigned int& percent) {
    return ask(t->illumination, [&](Illumination& m) { return m.get_colour(Illumination::green, percent); });
}

int handlers::illumination_t::set_brightness_green(AnyTarget& t, unsigned int brightness) {
    return ask(t->illumination, [&](Illumination& m) { return m.set_colour(Illumination::green, brightness); });
}

int handlers::illumination_t::get_brightness_limits_green(AnyTarget& t, unsigned int& min, unsigned int& max,
                                                          unsigned int& step) {
    return read_colour_limits(t, min, max, step);
}

int handlers::illumination_t::get_brightness_blue(AnyTarget& t, unsigned int& percent) {
    return ask(t->illumination, [&](Illumination& m) { return m.get_colour(Illumination::blue, percent); });
}

int handlers::illumination_t::set_brightness_blue(AnyTarget& t, unsigned int brightness) {
    return ask(t->illumination, [&](Illumination& m) { return m.set_colour(Illumination::blue, brightness); });
}

int handlers::illumination_t::get_brightness_limits_blue(AnyTarget& t, unsigned int& min, unsigned int& max,
                                                         unsigned int& step) {
    return read_colour_limits(t, min, max, step);
}

int handlers::illumination_t::set_write_protection(AnyTarget& t, bool enabled) {
    return done(t->illumination, [&](Illumination& m) { m.set_write_protection(enabled); });
}

int handlers::illumination_t::get_red_led(AnyTarget& t, bool& a) {
    return done(t->illumination, [&](Illumination& m) { a = m.led(Illumination::red_led); });
}

int handlers::illumination_t::set_red_led(AnyTarget& t, bool enabled) {
    return done(t->illumination, [&](Illumination& m) { m.set_led(Illumination::red_led, enabled); });
}

int handlers::illumination_t::get_green_led(AnyTarget& t, bool& a) {
    return done(t->illumination, [&](Illumination& m) { a = m.led(Illumination::green_led); });
}

int handlers::illumination_t::set_green_led(AnyTarget& t, bool enabled) {
    return done(t->illumination, [&](Illumination& m) { m.set_led(Illumination::green_led, enabled); });
}

int handlers::illumination_t::get_alter_led(AnyTarget& t, bool& a) {
    return done(t->illumination, [&](Illumination& m) { a = m.led(Illumination::alter_led); });
}

int handlers::illumination_t::set_alter_led(AnyTarget& t, bool enabled) {
    return done(t->illumination, [&](Illumination& m) { m.set_led(Illumination::alter_led, enabled); });
}

int handlers::illumination_t::get_dc_brightness_limit(AnyTarget& t, unsigned int& a) {
    return done(t->illumination, [&](Illumination& m) { a = m.dc_brightness_limit(); });
}

int handlers::illumination_t::set_dc_brightness_limit(AnyTarget& t, unsigned int limit) {
    return ask(t->illumination, [&](Illumination& m) { return m.set_dc_brightness_limit(limit); });
}

int handlers::illumination_t::get_flash_brightness_limit(AnyTarget& t, unsigned int& a) {
    return done(t->illumination, [&](Illumination& m) { a = m.flash_brightness_limit(); });
}

int handlers::illumination_t::set_flash_brightness_limit(AnyTarget& t, unsigned int limit) {
    return ask(t->illumination, [&](Illumination& m) { return m.set_flash_brightness_limit(limit); });
}

int handlers::illumination_t::get_mode(AnyTarget& t, hal::illumination_mode_te& a) {
    return done(t->illumination, [&](Illumination& m) { a = m.mode(); });
}

int handlers::illumination_t::set_mode(AnyTarget& t, hal::illumination_mode_te mode) {
    return ask(t->illumination, [&](Illumination& m) { return m.set_mode(mode); });
}

int handlers::illumination_t::get_ot_off_limit(AnyTarget& t, unsigned int& a) {
    return done(t->illumination, [&](Illumination& m) { a = m.ot_off_limit(); });
}

int handlers::illumination_t::set_ot_off_limit(AnyTarget& t, unsigned int limit) {
    return ask(t->illumination, [&](Illumination& m) { return m.set_ot_off_limit(limit); });
}

int handlers::illumination_t::set_limit_ot_decrease(AnyTarget& t, unsigned int limit) {
    return ask(t->illumination, [&](Illumination& m) { return m.set_limit_ot_decrease(limit); });
}

int handlers::illumination_t::is_present(AnyTarget& t, bool& a) {
    return done(t->illumination, [&](Illumination& m) { a = m.present(); });
}

int handlers::illumination_t::is_rgbw_illumination(AnyTarget& t, bool& a) {
    return done(t->illumination, [&](Illumination& m) { a = m.module.rgbw; });
}

int handlers::illumination_t::get_spot_states(AnyTarget& t, hal::spot_states& a) {
    return done(t->illumination, [&](Illumination& m) { a = m.states(); });
}

int handlers::illumination_t::get_spot_flags(AnyTarget& t, hal::spot_flags& a) {
    return done(t->illumination, [&](Illumination& m) { a = m.flags(); });
}

int handlers::illumination_t::get_error_code(AnyTarget& t, hal::illu_error_code& a) {
    return done(t->illumination, [&](Illumination& m) { a = m.error_code(); });
}

int handlers::illumination_t::get_exposure_mode(AnyTarget& t, hal::exposure_mode& a) {
    return done(t->illumination, [&](Illumination& m) { a = m.exposure_mode(); });
}

int handlers::illumination_t::set_exposure_mode(AnyTarget& t, hal::exposure_mode mode, unsigned int exposure_time_us) {
    return ask(t->illumination, [&](Illumination& m) { return m.set_exposure_mode(mode, exposure_time_us); });
}

int handlers::illumination_t::get_internal_temperature(AnyTarget& t, unsigned int& a) {
    return done(t->illumination, [&](Illumination& m) { a = whole_degrees(m.internal_temperature()); });
}

int handlers::illumination_t::get_external_temperature(AnyTarget& t, unsigned int& a) {
    return done(t->illumination, [&](Illumination& m) { a = whole_degrees(m.external_temperature()); });
}

int handlers::illumination_t::get_guards(AnyTarget& t, hal::illu_guards& a) {
    return done(t->illumination, [&](Illumination& m) { a = m.guards(); });
}

int handlers::illumination_t::set_guards(AnyTarget& t, hal::illu_guards const& guards) {
    return ask(t->illumination, [&](Illumination& m) { return m.set_guards(guards); });
}

}  // namespace sim
