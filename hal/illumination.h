// The illumination module: segments, brightness, indicator LEDs, guards and exposure coupling.
#pragma once

#include <cstddef>
#include <cstdint>

#include "hal/base.h"

namespace hal {

enum class light_pattern_te : unsigned int { continuous = 0, strobe = 0xFFFF };

// Codes are typed by number at the console, so any int may arrive.
enum class illumination_mode_te : int { inactive = 0, active = 1 };

enum class exposure_mode : unsigned int { continuous = 0, flash = 0xFFFE, switched = 0xFFFF };

// The module's own error number; 0 means none.
enum class illu_error_code : unsigned int {};

// Flags: any byte but 0 is true.
struct spot_flags {
    unsigned char general_error;
    unsigned char low_power;
    unsigned char trigger_overflow;
    unsigned char driver_error;
    unsigned char calibration_error;
    unsigned char dvsc;
    unsigned char bc;
    unsigned char over_temperature;
};
static_assert(sizeof(spot_flags) == 8);
static_assert(offsetof(spot_flags, low_power) == 1);
static_assert(offsetof(spot_flags, trigger_overflow) == 2);
static_assert(offsetof(spot_flags, driver_error) == 3);
static_assert(offsetof(spot_flags, calibration_error) == 4);
static_assert(offsetof(spot_flags, dvsc) == 5);
static_assert(offsetof(spot_flags, bc) == 6);
static_assert(offsetof(spot_flags, over_temperature) == 7);

struct spot_states {
    std::uint32_t light_range;     // 0x40 nominal, 0x80 double, 0xC0 triple
    std::uint32_t operating_mode;  // 0x10 flash, 0x30 continuous
    std::uint8_t segments[4];      // nonzero: on
    std::uint8_t further_state;
};
static_assert(sizeof(spot_states) == 16);
static_assert(offsetof(spot_states, operating_mode) == 4);
static_assert(offsetof(spot_states, segments) == 8);
static_assert(offsetof(spot_states, further_state) == 12);

// Flags, as above.
struct illu_guards {
    unsigned char over_temperature;
    unsigned char dvs;
    unsigned char autocal;
    unsigned char pvd;
};
static_assert(sizeof(illu_guards) == 4);
static_assert(offsetof(illu_guards, dvs) == 1);
static_assert(offsetof(illu_guards, autocal) == 2);
static_assert(offsetof(illu_guards, pvd) == 3);

// Brightness, limits and temperatures are in the module's own units.
class illumination_t : public base_t {
public:
    illumination_t(char const* device, int access) : base_t(device, access) {}
    ~illumination_t() override = default;

    int get_status(unsigned char& status) const override;
    int get_revision(revision_t& revision) const override;

    int get_pattern(light_pattern_te& pattern) const;
    int set_pattern(light_pattern_te pattern);

    // One bit per light segment, bits 0-3.
    int get_segments(unsigned int& segments) const;
    int set_segments(unsigned int segments);
    int get_segments_limits(unsigned int& min, unsigned int& max, unsigned int& step) const;

    int get_brightness(unsigned int& brightness) const;
    int set_brightness(unsigned int brightness);
    int get_brightness_limits(unsigned int& min, unsigned int& max, unsigned int& step) const;
    int get_brightness_red(unsigned int& brightness) const;
    int set_brightness_red(unsigned int brightness);
    int get_brightness_limits_red(unsigned int& min, unsigned int& max, unsigned int& step) const;
    int get_brightness_green(unsigned int& brightness) const;
    int set_brightness_green(unsigned int brightness);
    int get_brightness_limits_green(unsigned int& min, unsigned int& max, unsigned int& step) const;
    int get_brightness_blue(unsigned int& brightness) const;
    int set_brightness_blue(unsigned int brightness);
    int get_brightness_limits_blue(unsigned int& min, unsigned int& max, unsigned int& step) const;

    // While the protection is on, the protected settings are refused.
    int set_write_protection(bool enabled) const;

    int get_red_led(bool& enabled) const;
    int set_red_led(bool enabled) const;
    int get_green_led(bool& enabled) const;
    int set_green_led(bool enabled) const;
    int get_alter_led(bool& enabled) const;
    int set_alter_led(bool enabled) const;

    int get_dc_brightness_limit(unsigned int& limit) const;
    int set_dc_brightness_limit(unsigned int limit) const;
    int get_flash_brightness_limit(unsigned int& limit) const;
    int set_flash_brightness_limit(unsigned int limit) const;

    int get_mode(illumination_mode_te& mode) const;
    int set_mode(illumination_mode_te mode);

    // Temperature above which the over-temperature guard switches the light off.
    int get_ot_off_limit(unsigned int& limit) const;
    int set_ot_off_limit(unsigned int limit) const;
    // How far the temperature must fall below that limit before the light comes back.
    int set_limit_ot_decrease(unsigned int limit) const;

    // A negative status means that the module is missing; any other, that it is there.
    int is_present(bool& present) const;

    int is_rgbw_illumination(bool& rgbw) const;
    int get_spot_states(spot_states& states) const;
    int get_spot_flags(spot_flags& flags) const;
    int get_error_code(illu_error_code& code) const;
    int get_exposure_mode(exposure_mode& mode) const;
    // `exposure_time_us` goes with the flash mode and is 0 otherwise.
    int set_exposure_mode(exposure_mode mode, unsigned int exposure_time_us) const;
    int get_internal_temperature(unsigned int& temperature) const;
    int get_external_temperature(unsigned int& temperature) const;
    int get_guards(illu_guards& guards) const;
    int set_guards(illu_guards guards) const;
};

}  // namespace hal
