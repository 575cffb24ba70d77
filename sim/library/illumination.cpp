// The illumination module.
#include "hal/illumination.h"

#include "sim/library/base_impl.h"
#include "sim/library/call.h"

#include <cmath>

namespace hal {

using sim::call;
using sim::in;
using sim::out;
namespace operations = sim::operations;

int illumination_t::get_status(unsigned char& status) const {
    return call<operations::illumination_t::get_status>(impl_, out(status));
}

int illumination_t::get_revision(revision_t& revision) const {
    return call<operations::illumination_t::get_revision>(impl_, out(revision));
}

int illumination_t::get_pattern(light_pattern_te& pattern) const {
    return call<operations::illumination_t::get_pattern>(impl_, out(pattern));
}

int illumination_t::set_pattern(light_pattern_te pattern) {
    return call<operations::illumination_t::set_pattern>(impl_, in(pattern));
}

int illumination_t::get_segments(unsigned int& segments) const {
    return call<operations::illumination_t::get_segments>(impl_, out(segments));
}

int illumination_t::set_segments(unsigned int segments) {
    return call<operations::illumination_t::set_segments>(impl_, in(segments));
}

int illumination_t::get_segments_limits(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return call<operations::illumination_t::get_segments_limits>(impl_, out(min, max, step));
}

int illumination_t::get_brightness(unsigned int& brightness) const {
    return call<operations::illumination_t::get_brightness>(impl_, out(brightness));
}

int illumination_t::set_brightness(unsigned int brightness) {
    return call<operations::illumination_t::set_brightness>(impl_, in(brightness));
}

int illumination_t::get_brightness_limits(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return call<operations::illumination_t::get_brightness_limits>(impl_, out(min, max, step));
}

int illumination_t::get_brightness_red(unsigned int& brightness) const {
    return call<operations::illumination_t::get_brightness_red>(impl_, out(brightness));
}

int illumination_t::set_brightness_red(unsigned int brightness) {
    return call<operations::illumination_t::set_brightness_red>(impl_, in(brightness));
}

int illumination_t::get_brightness_limits_red(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return call<operations::illumination_t::get_brightness_limits_red>(impl_, out(min, max, step));
}

int illumination_t::get_brightness_green(unsigned int& brightness) const {
    return call<operations::illumination_t::get_brightness_green>(impl_, out(brightness));
}

int illumination_t::set_brightness_green(unsigned int brightness) {
    return call<operations::illumination_t::set_brightness_green>(impl_, in(brightness));
}

int illumination_t::get_brightness_limits_green(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return call<operations::illumination_t::get_brightness_limits_green>(impl_, out(min, max, step));
}

int illumination_t::get_brightness_blue(unsigned int& brightness) const {
    return call<operations::illumination_t::get_brightness_blue>(impl_, out(brightness));
}

int illumination_t::set_brightness_blue(unsigned int brightness) {
    return call<operations::illumination_t::set_brightness_blue>(impl_, in(brightness));
}

int illumination_t::get_brightness_limits_blue(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return call<operations::illumination_t::get_brightness_limits_blue>(impl_, out(min, max, step));
}

int illumination_t::set_write_protection(bool enabled) const {
    return call<operations::illumination_t::set_write_protection>(impl_, in(enabled));
}

int illumination_t::get_red_led(bool& enabled) const {
    return call<operations::illumination_t::get_red_led>(impl_, out(enabled));
}

int illumination_t::set_red_led(bool enabled) const {
    return call<operations::illumination_t::set_red_led>(impl_, in(enabled));
}

int illumination_t::get_green_led(bool& enabled) const {
    return call<operations::illumination_t::get_green_led>(impl_, out(enabled));
}

int illumination_t::set_green_led(bool enabled) const {
    return call<operations::illumination_t::set_green_led>(impl_, in(enabled));
}

int illumination_t::get_alter_led(bool& enabled) const {
    return call<operations::illumination_t::get_alter_led>(impl_, out(enabled));
}

int illumination_t::set_alter_led(bool enabled) const {
    return call<operations::illumination_t::set_alter_led>(impl_, in(enabled));
}

int illumination_t::get_dc_brightness_limit(unsigned int& limit) const {
    return call<operations::illumination_t::get_dc_brightness_limit>(impl_, out(limit));
}

int illumination_t::set_dc_brightness_limit(unsigned int limit) const {
    return call<operations::illumination_t::set_dc_brightness_limit>(impl_, in(limit));
}

int illumination_t::get_flash_brightness_limit(unsigned int& limit) const {
    return call<operations::illumination_t::get_flash_brightness_limit>(impl_, out(limit));
}

int illumination_t::set_flash_brightness_limit(unsigned int limit) const {
    return call<operations::illumination_t::set_flash_brightness_limit>(impl_, in(limit));
}

int illumination_t::get_mode(illumination_mode_te& mode) const {
    return call<operations::illumination_t::get_mode>(impl_, out(mode));
}

int illumination_t::set_mode(illumination_mode_te mode) {
    return call<operations::illumination_t::set_mode>(impl_, in(mode));
}

int illumination_t::get_ot_off_limit(unsigned int& limit) const {
    return call<operations::illumination_t::get_ot_off_limit>(impl_, out(limit));
}

int illumination_t::set_ot_off_limit(unsigned int limit) const {
    return call<operations::illumination_t::set_ot_off_limit>(impl_, in(limit));
}

int illumination_t::set_limit_ot_decrease(unsigned int limit) const {
    return call<operations::illumination_t::set_limit_ot_decrease>(impl_, in(limit));
}

int illumination_t::is_present(bool& present) const {
    return call<operations::illumination_t::is_present>(impl_, out(present));
}

int illumination_t::is_rgbw_illumination(bool& rgbw) const {
    return call<operations::illumination_t::is_rgbw_illumination>(impl_, out(rgbw));
}

int illumination_t::get_spot_states(spot_states& states) const {
    return call<operations::illumination_t::get_spot_states>(impl_, out(states));
}

int illumination_t::get_spot_flags(spot_flags& flags) const {
    return call<operations::illumination_t::get_spot_flags>(impl_, out(flags));
}

int illumination_t::get_error_code(illu_error_code& code) const {
    return call<operations::illumination_t::get_error_code>(impl_, out(code));
}

int illumination_t::get_exposure_mode(exposure_mode& mode) const {
    return call<operations::illumination_t::get_exposure_mode>(impl_, out(mode));
}

int illumination_t::set_exposure_mode(exposure_mode mode, unsigned int exposure_time_us) const {
    return call<operations::illumination_t::set_exposure_mode>(impl_, in(mode, exposure_time_us));
}

int illumination_t::get_internal_temperature(unsigned int& temperature) const {
    return call<operations::illumination_t::get_internal_temperature>(impl_, out(temperature));
}

int illumination_t::get_external_temperature(unsigned int& temperature) const {
    return call<operations::illumination_t::get_external_temperature>(impl_, out(temperature));
}

int illumination_t::get_guards(illu_guards& guards) const {
    return call<operations::illumination_t::get_guards>(impl_, out(guards));
}

int illumination_t::set_guards(illu_guards guards) const {
    return call<operations::illumination_t::set_guards>(impl_, in(guards));
}

}  // namespace hal
