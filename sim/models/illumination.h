// The illumination module: what it is told to shine, what it really shines, and how warm it gets from that.
#pragma once

#include <array>
#include <cstddef>

#include "hal/illumination.h"
#include "sim/core/clock.h"
#include "sim/models/exposure_signal.h"

namespace sim {

// Lowest and highest legal value of a setting, and the distance of two neighbours.
struct Limits {
    unsigned int min;
    unsigned int max;
    unsigned int step;
};

// How warm it is.
struct Warmth {
    double inside;   // C
    double outside;  // C
    bool too_hot;    // from the off limit until it has fallen by the decrease
};

// What the warmth goes by while nothing changes.
struct Heating {
    double load;     // of the light while it is not switched off, as Illumination::load() has it
    double ambient;  // C
    double off;      // C, from which on it is too hot
    double back;     // C, down to which it stays so
    bool guarded;    // too hot, the light is switched off

    friend bool operator==(Heating const& one, Heating const& other) {
        return one.load == other.load && one.ambient == other.ambient && one.off == other.off &&
               one.back == other.back && one.guarded == other.guarded;
    }
};

// The warmth after `length` of one heating: exact, and at once for any length. It becomes too hot, and is so no more,
// on the microsecond.
Warmth after(Duration length, Warmth const& start, Heating const& heating);

// Time passes in advance() alone: call it before every other operation, and before the exposure signal changes. How
// often it is called changes nothing. Operations that return an int answer 0, or -1 and errno where they refuse; a
// refused value leaves the old one. Units: brightness 0-14, colours in percent, temperatures in degrees Celsius.
class Illumination {
public:
    static constexpr unsigned int kSegments = 4;
    static constexpr Limits kSegmentLimits{0, (1U << kSegments) - 1, 1};
    static constexpr Limits kBrightnessLimits{0, 14, 1};
    static constexpr Limits kColourLimits{0, 100, 1};
    // C, of the over-temperature off limit: above any workshop, below what spoils the LEDs.
    static constexpr Limits kOffLimits{40, 100, 1};
    // K, of the fall that brings the light back: so much that it does not flicker, and still above most workshops.
    static constexpr Limits kDecreaseLimits{1, 30, 1};
    // us: shorter the drivers do not switch; longer is no flash, for at 60 frames a second it is most of the time.
    static constexpr Limits kFlashTimes{10, 10000, 1};

    enum Colour { red, green, blue, kColours };
    enum Led { red_led, green_led, alter_led, kLeds };
    // The settings that are numbers.
    enum class Setting { segments, brightness, red, green, blue, dc_limit, flash_limit, ot_off_limit, ot_decrease };
    // C, that a temperature can be set to: what industrial parts stand.
    static constexpr double kColdest = -40.0;
    static constexpr double kHottest = 125.0;

    // What the module is; set by hand.
    struct Module {
        bool rgbw = true;  // otherwise white alone: it has no colours
    };
    // Flags that nothing in this model raises; set by hand.
    struct Disturbances {
        bool low_power = false;
        bool driver_error = false;
        bool calibration_error = false;
        bool dvsc = false;
        bool bc = false;
    };

    Module module;
    Disturbances disturbances;

    // `signal` is what came since the last call.
    void advance(Time now, ExposureSignal const& signal);

    // Forgets all but what the write protection covers, which the module keeps for good, and its temperatures.
    void lose_power();

    // By hand. It comes back as after power-on.
    void set_present(bool present);
    bool present() const { return present_; }
    // Whether the module is there at all: ENODEV. The operations below take that as given.
    int answer() const;

    int set_pattern(hal::light_pattern_te pattern);
    hal::light_pattern_te pattern() const { return pattern_; }
    int set_segments(unsigned int mask);
    unsigned int segments() const { return setting(Setting::segments); }
    int set_brightness(unsigned int brightness);
    unsigned int brightness() const { return setting(Setting::brightness); }
    // ENOTSUP where the module is white.
    int set_colour(Colour colour, unsigned int percent);
    int get_colour(Colour colour, unsigned int& percent) const;
    int get_colour_limits(Limits& limits) const;

    void set_write_protection(bool enabled) { write_protected_ = enabled; }
    bool write_protected() const { return write_protected_; }
    // The five that the write protection covers: EPERM while it is on, as it is at the start.
    int set_dc_brightness_limit(unsigned int limit);
    int set_flash_brightness_limit(unsigned int limit);
    int set_ot_off_limit(unsigned int limit);
    int set_limit_ot_decrease(unsigned int kelvin);
    int set_guards(hal::illu_guards guards);
    unsigned int dc_brightness_limit() const { return setting(Setting::dc_limit); }
    unsigned int flash_brightness_limit() const { return setting(Setting::flash_limit); }
    unsigned int ot_off_limit() const { return setting(Setting::ot_off_limit); }
    unsigned int limit_ot_decrease() const { return setting(Setting::ot_decrease); }
    hal::illu_guards guards() const { return guards_; }

    unsigned int setting(Setting setting) const { return settings_[static_cast<std::size_t>(setting)]; }
    static Limits const& limits_of(Setting setting);
    // By hand, past the write protection and the kind of the module: EINVAL beyond the limits.
    int put(Setting setting, unsigned int value);
    void put_guards(hal::illu_guards guards) { guards_ = guards; }

    void set_led(Led led, bool enabled) { leds_[led] = enabled; }
    bool led(Led led) const { return leds_[led]; }
    int set_mode(hal::illumination_mode_te mode);
    hal::illumination_mode_te mode() const { return mode_; }
    // The time is of use for the flash alone.
    int set_exposure_mode(hal::exposure_mode mode, unsigned int time_us);
    hal::exposure_mode exposure_mode() const { return exposure_mode_; }
    unsigned int flash_time() const { return flash_time_; }

    hal::spot_states states() const;
    hal::spot_flags flags() const;
    // Number of the gravest flag, as its offset in the record of flags; 0 where none is set.
    hal::illu_error_code error_code() const;

    // Whether it gives light now, or would at the next trigger.
    bool lit() const;
    // The heat that it makes: 1 is that of full light without a pause at the nominal current; 0-3.
    double load() const;
    double internal_temperature() const { return warmth_.inside; }
    double external_temperature() const { return warmth_.outside; }
    double ambient_temperature() const { return ambient_; }
    // Put it to a temperature, from which it goes on by itself: EINVAL beyond kColdest and kHottest.
    int set_internal_temperature(double temperature);
    int set_external_temperature(double temperature);
    // Of the surroundings; the same limits.
    int set_ambient_temperature(double temperature);

private:
    static constexpr double kRoom = 25.0;  // C

    bool flashing() const;
    bool switched_off() const { return warmth_.too_hot && guards_.over_temperature != 0; }
    double light() const;
    double duty() const;
    unsigned int overdrive() const;
    Heating heating() const;
    int put_protected(Setting setting, unsigned int value);
    void judge_warmth();
    void begin_course();

    Time now_{0};
    ExposureSignal signal_{0.0, 0};
    hal::light_pattern_te pattern_ = hal::light_pattern_te::continuous;
    hal::illumination_mode_te mode_ = hal::illumination_mode_te::active;
    hal::exposure_mode exposure_mode_ = hal::exposure_mode::continuous;
    unsigned int flash_time_ = 0;  // us
    // In the order of Setting. The light goes before the 90 C or so at which LEDs begin to age, and comes back 10 K
    // below.
    std::array<unsigned int, 9> settings_{kSegmentLimits.max,    0,  0, 0, 0, kBrightnessLimits.max,
                                          kBrightnessLimits.max, 85, 10};
    bool leds_[kLeds] = {};
    bool write_protected_ = true;
    hal::illu_guards guards_{true, true, true, true};
    bool present_ = true;
    double ambient_ = kRoom;
    Warmth warmth_{kRoom, kRoom, false};
    // The warmth is always reckoned from where its present course began, so that no look at it adds up.
    Time course_began_{0};
    Warmth course_start_ = warmth_;
    Heating course_heating_{};
};

}  // namespace sim
