// The illumination module.
#include "hal/illumination.h"

#include "sim/hal/base_impl.h"
#include "sim/hal/gate.h"

namespace hal {

using sim::construct;
using sim::destroy;
using sim::Device;
using sim::gate;
using sim::in;
using sim::Module;
using sim::no_model;
using sim::out;

illumination_t::illumination_t(char const* device, int access) : base_t(device, access) {
    construct(*impl_, "illumination_t::illumination_t", in(device, access));
}

illumination_t::~illumination_t() {
    destroy(*impl_, "illumination_t::~illumination_t");
}

int illumination_t::get_status(unsigned char& status) const {
    return gate(impl_, "illumination_t::get_status", out(status),
                [](Device& d, auto& s) { return d.modules.get_status(Module::illumination, s); });
}

int illumination_t::get_revision(revision_t& revision) const {
    return gate(impl_, "illumination_t::get_revision", out(revision),
                [](Device& d, auto& r) { return d.modules.get_revision(Module::illumination, r); });
}

int illumination_t::get_pattern(light_pattern_te& pattern) const {
    return gate(impl_, "illumination_t::get_pattern", out(pattern), [](Device&, auto&) { return no_model(); });
}

int illumination_t::set_pattern(light_pattern_te pattern) {
    return gate(impl_, "illumination_t::set_pattern", in(pattern), [](Device&) { return no_model(); });
}

int illumination_t::get_segments(unsigned int& segments) const {
    return gate(impl_, "illumination_t::get_segments", out(segments), [](Device&, auto&) { return no_model(); });
}

int illumination_t::set_segments(unsigned int segments) {
    return gate(impl_, "illumination_t::set_segments", in(segments), [](Device&) { return no_model(); });
}

int illumination_t::get_segments_limits(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return gate(impl_, "illumination_t::get_segments_limits", out(min, max, step),
                [](Device&, auto&, auto&, auto&) { return no_model(); });
}

int illumination_t::get_brightness(unsigned int& brightness) const {
    return gate(impl_, "illumination_t::get_brightness", out(brightness), [](Device&, auto&) { return no_model(); });
}

int illumination_t::set_brightness(unsigned int brightness) {
    return gate(impl_, "illumination_t::set_brightness", in(brightness), [](Device&) { return no_model(); });
}

int illumination_t::get_brightness_limits(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return gate(impl_, "illumination_t::get_brightness_limits", out(min, max, step),
                [](Device&, auto&, auto&, auto&) { return no_model(); });
}

int illumination_t::get_brightness_red(unsigned int& brightness) const {
    return gate(impl_, "illumination_t::get_brightness_red", out(brightness),
                [](Device&, auto&) { return no_model(); });
}

int illumination_t::set_brightness_red(unsigned int brightness) {
    return gate(impl_, "illumination_t::set_brightness_red", in(brightness), [](Device&) { return no_model(); });
}

int illumination_t::get_brightness_limits_red(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return gate(impl_, "illumination_t::get_brightness_limits_red", out(min, max, step),
                [](Device&, auto&, auto&, auto&) { return no_model(); });
}

int illumination_t::get_brightness_green(unsigned int& brightness) const {
    return gate(impl_, "illumination_t::get_brightness_green", out(brightness),
                [](Device&, auto&) { return no_model(); });
}

int illumination_t::set_brightness_green(unsigned int brightness) {
    return gate(impl_, "illumination_t::set_brightness_green", in(brightness), [](Device&) { return no_model(); });
}

int illumination_t::get_brightness_limits_green(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return gate(impl_, "illumination_t::get_brightness_limits_green", out(min, max, step),
                [](Device&, auto&, auto&, auto&) { return no_model(); });
}

int illumination_t::get_brightness_blue(unsigned int& brightness) const {
    return gate(impl_, "illumination_t::get_brightness_blue", out(brightness),
                [](Device&, auto&) { return no_model(); });
}

int illumination_t::set_brightness_blue(unsigned int brightness) {
    return gate(impl_, "illumination_t::set_brightness_blue", in(brightness), [](Device&) { return no_model(); });
}

int illumination_t::get_brightness_limits_blue(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return gate(impl_, "illumination_t::get_brightness_limits_blue", out(min, max, step),
                [](Device&, auto&, auto&, auto&) { return no_model(); });
}

int illumination_t::set_write_protection(bool enabled) const {
    return gate(impl_, "illumination_t::set_write_protection", in(enabled), [](Device&) { return no_model(); });
}

int illumination_t::get_red_led(bool& enabled) const {
    return gate(impl_, "illumination_t::get_red_led", out(enabled), [](Device&, auto&) { return no_model(); });
}

int illumination_t::set_red_led(bool enabled) const {
    return gate(impl_, "illumination_t::set_red_led", in(enabled), [](Device&) { return no_model(); });
}

int illumination_t::get_green_led(bool& enabled) const {
    return gate(impl_, "illumination_t::get_green_led", out(enabled), [](Device&, auto&) { return no_model(); });
}

int illumination_t::set_green_led(bool enabled) const {
    return gate(impl_, "illumination_t::set_green_led", in(enabled), [](Device&) { return no_model(); });
}

int illumination_t::get_alter_led(bool& enabled) const {
    return gate(impl_, "illumination_t::get_alter_led", out(enabled), [](Device&, auto&) { return no_model(); });
}

int illumination_t::set_alter_led(bool enabled) const {
    return gate(impl_, "illumination_t::set_alter_led", in(enabled), [](Device&) { return no_model(); });
}

int illumination_t::get_dc_brightness_limit(unsigned int& limit) const {
    return gate(impl_, "illumination_t::get_dc_brightness_limit", out(limit),
                [](Device&, auto&) { return no_model(); });
}

int illumination_t::set_dc_brightness_limit(unsigned int limit) const {
    return gate(impl_, "illumination_t::set_dc_brightness_limit", in(limit), [](Device&) { return no_model(); });
}

int illumination_t::get_flash_brightness_limit(unsigned int& limit) const {
    return gate(impl_, "illumination_t::get_flash_brightness_limit", out(limit),
                [](Device&, auto&) { return no_model(); });
}

int illumination_t::set_flash_brightness_limit(unsigned int limit) const {
    return gate(impl_, "illumination_t::set_flash_brightness_limit", in(limit), [](Device&) { return no_model(); });
}

int illumination_t::get_mode(illumination_mode_te& mode) const {
    return gate(impl_, "illumination_t::get_mode", out(mode), [](Device&, auto&) { return no_model(); });
}

int illumination_t::set_mode(illumination_mode_te mode) {
    return gate(impl_, "illumination_t::set_mode", in(mode), [](Device&) { return no_model(); });
}

int illumination_t::get_ot_off_limit(unsigned int& limit) const {
    return gate(impl_, "illumination_t::get_ot_off_limit", out(limit), [](Device&, auto&) { return no_model(); });
}

int illumination_t::set_ot_off_limit(unsigned int limit) const {
    return gate(impl_, "illumination_t::set_ot_off_limit", in(limit), [](Device&) { return no_model(); });
}

int illumination_t::set_limit_ot_decrease(unsigned int limit) const {
    return gate(impl_, "illumination_t::set_limit_ot_decrease", in(limit), [](Device&) { return no_model(); });
}

int illumination_t::is_present(bool& present) const {
    return gate(impl_, "illumination_t::is_present", out(present), [](Device&, auto&) { return no_model(); });
}

int illumination_t::is_rgbw_illumination(bool& rgbw) const {
    return gate(impl_, "illumination_t::is_rgbw_illumination", out(rgbw), [](Device&, auto&) { return no_model(); });
}

int illumination_t::get_spot_states(spot_states& states) const {
    return gate(impl_, "illumination_t::get_spot_states", out(states), [](Device&, auto&) { return no_model(); });
}

int illumination_t::get_spot_flags(spot_flags& flags) const {
    return gate(impl_, "illumination_t::get_spot_flags", out(flags), [](Device&, auto&) { return no_model(); });
}

int illumination_t::get_error_code(illu_error_code& code) const {
    return gate(impl_, "illumination_t::get_error_code", out(code), [](Device&, auto&) { return no_model(); });
}

int illumination_t::get_exposure_mode(exposure_mode& mode) const {
    return gate(impl_, "illumination_t::get_exposure_mode", out(mode), [](Device&, auto&) { return no_model(); });
}

int illumination_t::set_exposure_mode(exposure_mode mode, unsigned int exposure_time_us) const {
    return gate(impl_, "illumination_t::set_exposure_mode", in(mode, exposure_time_us),
                [](Device&) { return no_model(); });
}

int illumination_t::get_internal_temperature(unsigned int& temperature) const {
    return gate(impl_, "illumination_t::get_internal_temperature", out(temperature),
                [](Device&, auto&) { return no_model(); });
}

int illumination_t::get_external_temperature(unsigned int& temperature) const {
    return gate(impl_, "illumination_t::get_external_temperature", out(temperature),
                [](Device&, auto&) { return no_model(); });
}

int illumination_t::get_guards(illu_guards& guards) const {
    return gate(impl_, "illumination_t::get_guards", out(guards), [](Device&, auto&) { return no_model(); });
}

int illumination_t::set_guards(illu_guards guards) const {
    return gate(impl_, "illumination_t::set_guards", in(guards), [](Device&) { return no_model(); });
}

}  // namespace hal
