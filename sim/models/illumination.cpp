// The illumination module: what it is told to shine, what it really shines, and how warm it gets from that.
#include "sim/models/illumination.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>

#include "sim/models/refusal.h"

namespace sim {

namespace {

constexpr double kInnerTimeConstant = 120.0;  // s
constexpr double kOuterTimeConstant = 600.0;  // s
// Once this long has passed without a change nothing is left of the past, and no more needs to be reckoned.
constexpr double kSettled = 20.0 * kOuterTimeConstant;

// The shorter the flash, the more current the light stands.
constexpr unsigned int kLongestTripleFlash = 200;   // us
constexpr unsigned int kLongestDoubleFlash = 1000;  // us

constexpr std::uint32_t kLightRanges[] = {0x40, 0x80, 0xC0};
constexpr std::uint32_t kFlashMode = 0x10;
constexpr std::uint32_t kContinuousMode = 0x30;

int write(unsigned int& setting, unsigned int value, Limits const& limits) {
    if (value < limits.min || value > limits.max) {
        return refuse(EINVAL);
    }
    setting = value;
    return 0;
}

// The setting that holds the share of a colour.
Illumination::Setting setting_of(Illumination::Colour colour) {
    using Setting = Illumination::Setting;
    return colour == Illumination::red ? Setting::red : colour == Illumination::green ? Setting::green : Setting::blue;
}

int set_temperature(double& variable, double temperature) {
    if (!(temperature >= Illumination::kColdest && temperature <= Illumination::kHottest)) {
        return refuse(EINVAL);
    }
    variable = temperature;
    return 0;
}

double approach(double from, double to, double seconds, double time_constant) {
    return to + (from - to) * std::exp(-seconds / time_constant);
}

// Until a temperature on its way from `from` to `to` passes `mark`; infinite where it never does.
double time_to_reach(double mark, double from, double to, double time_constant) {
    double const share = (mark - to) / (from - to);
    if (!(share > 0.0 && share <= 1.0)) {
        return std::numeric_limits<double>::infinity();
    }
    return -time_constant * std::log(share);
}

// The offset of the first flag that is set, in order of gravity; 0 where none is.
unsigned int gravest(hal::spot_flags const& flags) {
    using Flags = hal::spot_flags;
    struct {
        unsigned char set;
        std::size_t offset;
    } const order[] = {
        {flags.driver_error, offsetof(Flags, driver_error)},
        {flags.over_temperature, offsetof(Flags, over_temperature)},
        {flags.calibration_error, offsetof(Flags, calibration_error)},
        {flags.low_power, offsetof(Flags, low_power)},
        {flags.dvsc, offsetof(Flags, dvsc)},
        {flags.bc, offsetof(Flags, bc)},
        {flags.trigger_overflow, offsetof(Flags, trigger_overflow)},
    };
    for (auto const& flag : order) {
        if (flag.set != 0) {
            return static_cast<unsigned int>(flag.offset);
        }
    }
    return 0;
}

}  // namespace

void Illumination::advance(Time now, ExposureSignal const& signal) {
    signal_ = signal;
    if (now <= now_) {
        return;
    }
    double rest = std::min(std::chrono::duration<double>(now - now_).count(), kSettled);
    now_ = now;
    watch_temperature();
    while (rest > 0.0) {
        double const mark = too_hot_ ? light_again() : ot_off_limit();
        double const goal = ambient_ + load() * kFullLoadRise;
        double const change = time_to_reach(mark, inside_, goal, kInnerTimeConstant);
        pass(std::min(rest, change));
        if (change < rest) {
            inside_ = mark;  // exactly, whatever the reckoning left over
            watch_temperature();
        }
        rest -= change;
    }
    watch_temperature();
}

void Illumination::pass(double seconds) {
    double const heat = load();
    inside_ = approach(inside_, ambient_ + heat * kFullLoadRise, seconds, kInnerTimeConstant);
    outside_ = approach(outside_, ambient_ + heat * kFullLoadOuterRise, seconds, kOuterTimeConstant);
}

double Illumination::light_again() const {
    return static_cast<double>(ot_off_limit()) - limit_ot_decrease();
}

void Illumination::watch_temperature() {
    if (inside_ >= ot_off_limit()) {
        too_hot_ = true;
    } else if (inside_ <= light_again()) {
        too_hot_ = false;
    }
}

int Illumination::set_internal_temperature(double temperature) {
    int const status = set_temperature(inside_, temperature);
    watch_temperature();
    return status;
}

int Illumination::set_external_temperature(double temperature) {
    return set_temperature(outside_, temperature);
}

int Illumination::set_ambient_temperature(double temperature) {
    return set_temperature(ambient_, temperature);
}

Limits const& Illumination::limits_of(Setting setting) {
    switch (setting) {
        case Setting::segments:
            return kSegmentLimits;
        case Setting::red:
        case Setting::green:
        case Setting::blue:
            return kColourLimits;
        case Setting::ot_off_limit:
            return kOffLimits;
        case Setting::ot_decrease:
            return kDecreaseLimits;
        default:
            return kBrightnessLimits;
    }
}

int Illumination::put(Setting setting, unsigned int value) {
    return write(settings_[static_cast<std::size_t>(setting)], value, limits_of(setting));
}

int Illumination::put_protected(Setting setting, unsigned int value) {
    return write_protected_ ? refuse(EPERM) : put(setting, value);
}

int Illumination::answer() const {
    return module.present ? 0 : refuse(ENODEV);
}

int Illumination::set_pattern(hal::light_pattern_te pattern) {
    if (pattern != hal::light_pattern_te::continuous && pattern != hal::light_pattern_te::strobe) {
        return refuse(EINVAL);
    }
    pattern_ = pattern;
    return 0;
}

int Illumination::set_segments(unsigned int mask) {
    return put(Setting::segments, mask);
}

int Illumination::set_brightness(unsigned int brightness) {
    return put(Setting::brightness, brightness);
}

int Illumination::set_colour(Colour colour, unsigned int percent) {
    return module.rgbw ? put(setting_of(colour), percent) : refuse(ENOTSUP);
}

int Illumination::get_colour(Colour colour, unsigned int& percent) const {
    if (!module.rgbw) {
        return refuse(ENOTSUP);
    }
    percent = setting(setting_of(colour));
    return 0;
}

int Illumination::get_colour_limits(Limits& limits) const {
    if (!module.rgbw) {
        return refuse(ENOTSUP);
    }
    limits = kColourLimits;
    return 0;
}

int Illumination::set_dc_brightness_limit(unsigned int limit) {
    return put_protected(Setting::dc_limit, limit);
}

int Illumination::set_flash_brightness_limit(unsigned int limit) {
    return put_protected(Setting::flash_limit, limit);
}

int Illumination::set_ot_off_limit(unsigned int limit) {
    return put_protected(Setting::ot_off_limit, limit);
}

int Illumination::set_limit_ot_decrease(unsigned int kelvin) {
    return put_protected(Setting::ot_decrease, kelvin);
}

int Illumination::set_guards(hal::illu_guards guards) {
    if (write_protected_) {
        return refuse(EPERM);
    }
    guards_ = guards;
    return 0;
}

int Illumination::set_mode(hal::illumination_mode_te mode) {
    if (mode != hal::illumination_mode_te::inactive && mode != hal::illumination_mode_te::active) {
        return refuse(EINVAL);
    }
    mode_ = mode;
    return 0;
}

int Illumination::set_exposure_mode(hal::exposure_mode mode, unsigned int time_us) {
    switch (mode) {
        case hal::exposure_mode::flash:
            if (write(flash_time_, time_us, kFlashTimes) != 0) {
                return -1;
            }
            break;
        case hal::exposure_mode::continuous:
        case hal::exposure_mode::switched:
            flash_time_ = 0;
            break;
        default:
            return refuse(EINVAL);
    }
    exposure_mode_ = mode;
    return 0;
}

bool Illumination::flashing() const {
    return exposure_mode_ == hal::exposure_mode::flash;
}

// Steady where both are continuous; otherwise lit by the exposure signal, in a flash for a time of its own.
double Illumination::duty() const {
    if (pattern_ == hal::light_pattern_te::continuous && exposure_mode_ == hal::exposure_mode::continuous) {
        return 1.0;
    }
    double const length = flashing() ? flash_time_ : signal_.time_us;
    return std::min(1.0, signal_.rate * length / 1e6);
}

unsigned int Illumination::overdrive() const {
    if (!flashing() || flash_time_ > kLongestDoubleFlash) {
        return 1;
    }
    return flash_time_ > kLongestTripleFlash ? 2 : 3;
}

bool Illumination::lit() const {
    bool const any = brightness() + colours() > 0;
    bool const switched_off = too_hot_ && guards_.over_temperature != 0;
    return module.present && mode_ == hal::illumination_mode_te::active && segments() != 0 && any && !switched_off;
}

// Percent, of the three together.
unsigned int Illumination::colours() const {
    return setting(Setting::red) + setting(Setting::green) + setting(Setting::blue);
}

// White and colours share one supply: together they cannot make more heat than full white.
double Illumination::load() const {
    if (!lit()) {
        return 0.0;
    }
    unsigned int const limit = flashing() ? flash_brightness_limit() : dc_brightness_limit();
    double const highest = static_cast<double>(limit) / kBrightnessLimits.max;
    double const white = std::min(highest, static_cast<double>(brightness()) / kBrightnessLimits.max);
    double const sum = colours();
    double const coloured = module.rgbw ? std::min(highest, sum / (kColours * kColourLimits.max)) : 0.0;
    unsigned int on = 0;
    for (unsigned int mask = segments(); mask != 0; mask >>= 1) {
        on += mask & 1;
    }
    double const light = std::min(1.0, white + coloured) * on / 4.0;
    return std::min(1.0, light * overdrive() * duty());
}

hal::spot_states Illumination::states() const {
    hal::spot_states states{};
    states.light_range = kLightRanges[overdrive() - 1];
    states.operating_mode = flashing() ? kFlashMode : kContinuousMode;
    for (unsigned int i = 0; i < 4; ++i) {
        states.segments[i] = lit() && (segments() >> i & 1) != 0;
    }
    return states;
}

hal::spot_flags Illumination::flags() const {
    hal::spot_flags flags{};
    flags.low_power = disturbances.low_power;
    flags.driver_error = disturbances.driver_error;
    flags.calibration_error = disturbances.calibration_error;
    flags.dvsc = disturbances.dvsc;
    flags.bc = disturbances.bc;
    flags.over_temperature = too_hot_;
    // The next trigger comes before the flash has ended.
    flags.trigger_overflow = flashing() && lit() && signal_.rate * flash_time_ > 1e6;
    flags.general_error = gravest(flags) != 0;
    return flags;
}

hal::illu_error_code Illumination::error_code() const {
    return static_cast<hal::illu_error_code>(gravest(flags()));
}

}  // namespace sim
