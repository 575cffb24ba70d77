// The second library: illumination and autofocus.
#include "hal/autofocus.h"
#include "hal/illumination.h"
#include "tests/second_library/second_library.h"

namespace second_library {

template <>
hal::spot_states taken() {
    hal::spot_states states{};
    states.light_range = taken<std::uint32_t>();
    states.operating_mode = taken<std::uint32_t>();
    for (std::uint8_t& segment : states.segments) {
        segment = taken<std::uint8_t>();
    }
    states.further_state = taken<std::uint8_t>();
    return states;
}

}  // namespace second_library

namespace hal {

using second_library::answer;
using second_library::called;
using second_library::taken;

int illumination_t::get_status(unsigned char& status) const {
    return answer(this, status);
}

int illumination_t::get_revision(revision_t& revision) const {
    return answer(this, revision);
}

int illumination_t::get_pattern(light_pattern_te& pattern) const {
    return answer(this, pattern);
}

int illumination_t::set_pattern(light_pattern_te) {
    return answer(this);
}

int illumination_t::get_segments(unsigned int& segments) const {
    return answer(this, segments);
}

int illumination_t::set_segments(unsigned int) {
    return answer(this);
}

int illumination_t::get_segments_limits(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return answer(this, min, max, step);
}

int illumination_t::get_brightness(unsigned int& brightness) const {
    return answer(this, brightness);
}

int illumination_t::set_brightness(unsigned int) {
    return answer(this);
}

int illumination_t::get_brightness_limits(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return answer(this, min, max, step);
}

int illumination_t::get_brightness_red(unsigned int& brightness) const {
    return answer(this, brightness);
}

int illumination_t::set_brightness_red(unsigned int) {
    return answer(this);
}

int illumination_t::get_brightness_limits_red(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return answer(this, min, max, step);
}

int illumination_t::get_brightness_green(unsigned int& brightness) const {
    return answer(this, brightness);
}

int illumination_t::set_brightness_green(unsigned int) {
    return answer(this);
}

int illumination_t::get_brightness_limits_green(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return answer(this, min, max, step);
}

int illumination_t::get_brightness_blue(unsigned int& brightness) const {
    return answer(this, brightness);
}

int illumination_t::set_brightness_blue(unsigned int) {
    return answer(this);
}

int illumination_t::get_brightness_limits_blue(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return answer(this, min, max, step);
}

int illumination_t::set_write_protection(bool) const {
    return answer(this);
}

int illumination_t::get_red_led(bool& enabled) const {
    return answer(this, enabled);
}

int illumination_t::set_red_led(bool) const {
    return answer(this);
}

int illumination_t::get_green_led(bool& enabled) const {
    return answer(this, enabled);
}

int illumination_t::set_green_led(bool) const {
    return answer(this);
}

int illumination_t::get_alter_led(bool& enabled) const {
    return answer(this, enabled);
}

int illumination_t::set_alter_led(bool) const {
    return answer(this);
}

int illumination_t::get_dc_brightness_limit(unsigned int& limit) const {
    return answer(this, limit);
}

int illumination_t::set_dc_brightness_limit(unsigned int) const {
    return answer(this);
}

int illumination_t::get_flash_brightness_limit(unsigned int& limit) const {
    return answer(this, limit);
}

int illumination_t::set_flash_brightness_limit(unsigned int) const {
    return answer(this);
}

int illumination_t::get_mode(illumination_mode_te& mode) const {
    return answer(this, mode);
}

int illumination_t::set_mode(illumination_mode_te) {
    return answer(this);
}

int illumination_t::get_ot_off_limit(unsigned int& limit) const {
    return answer(this, limit);
}

int illumination_t::set_ot_off_limit(unsigned int) const {
    return answer(this);
}

int illumination_t::set_limit_ot_decrease(unsigned int) const {
    return answer(this);
}

int illumination_t::is_present(bool& present) const {
    return answer(this, present);
}

int illumination_t::is_rgbw_illumination(bool& rgbw) const {
    return answer(this, rgbw);
}

int illumination_t::get_spot_states(spot_states& states) const {
    return answer(this, states);
}

int illumination_t::get_spot_flags(spot_flags& flags) const {
    return answer(this, flags);
}

int illumination_t::get_error_code(illu_error_code& code) const {
    return answer(this, code);
}

int illumination_t::get_exposure_mode(exposure_mode& mode) const {
    return answer(this, mode);
}

int illumination_t::set_exposure_mode(exposure_mode, unsigned int) const {
    return answer(this);
}

int illumination_t::get_internal_temperature(unsigned int& temperature) const {
    return answer(this, temperature);
}

int illumination_t::get_external_temperature(unsigned int& temperature) const {
    return answer(this, temperature);
}

int illumination_t::get_guards(illu_guards& guards) const {
    return answer(this, guards);
}

int illumination_t::set_guards(illu_guards) const {
    return answer(this);
}

bool autofocus_t::set_present() {
    called(this);
    return taken<bool>();
}

bool autofocus_t::is_present() const {
    called(this);
    return present_;
}

int autofocus_t::get_status(unsigned char& status) const {
    return answer(this, status);
}

int autofocus_t::get_revision(revision_t& revision) const {
    return answer(this, revision);
}

int autofocus_t::get_position(unsigned short& position) const {
    return answer(this, position);
}

int autofocus_t::set_position(unsigned int) const {
    return answer(this);
}

int autofocus_t::get_position_limits(unsigned short& min, unsigned short& max) const {
    return answer(this, min, max);
}

int autofocus_t::get_position_mm(unsigned short& position) const {
    return answer(this, position);
}

int autofocus_t::set_position_mm(unsigned int) const {
    return answer(this);
}

int autofocus_t::get_position_limits_mm(std::string const&, unsigned short& min, unsigned short& max) const {
    return answer(this, min, max);
}

int autofocus_t::reset() {
    return answer(this);
}

int autofocus_t::calibrate() {
    return answer(this);
}

int autofocus_t::get_calibration_frequency(unsigned short& frequency_hz) const {
    return answer(this, frequency_hz);
}

int autofocus_t::read_error(af_error& error) const {
    return answer(this, error);
}

int autofocus_t::set_doe_mode(doe_mode_te) {
    return answer(this);
}

int autofocus_t::set_doe_force_active(bool) {
    return answer(this);
}

int autofocus_t::set_maintenance_mode(bool) const {
    return answer(this);
}

}  // namespace hal
