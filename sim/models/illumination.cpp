// The illumination module: what it is told to shine, what it really shines, and how warm it gets from that.
#include "sim/models/illumination.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <numeric>

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

constexpr double kColdest = -40.0;  // C, that can be set by hand
constexpr double kHottest = 125.0;

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

int write_protected_setting(bool write_protected, unsigned int& setting, unsigned int value, Limits const& limits) {
    return write_protected ? refuse(EPERM) : write(setting, value, limits);
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
        bool set;
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
        if (flag.set) {
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
        double const mark = too_hot_ ? off_limit_ - static_cast<double>(decrease_) : off_limit_;
        double const goal = ambient_temperature + load() * kFullLoadRise;
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
    inside_ = approach(inside_, ambient_temperature + heat * kFullLoadRise, seconds, kInnerTimeConstant);
    outside_ = approach(outside_, ambient_temperature + heat * kFullLoadOuterRise, seconds, kOuterTimeConstant);
}

void Illumination::watch_temperature() {
    if (inside_ >= off_limit_) {
        too_hot_ = true;
    } else if (inside_ <= off_limit_ - static_cast<double>(decrease_)) {
        too_hot_ = false;
    }
}

void Illumination::set_internal_temperature(double temperature) {
    inside_ = temperature;
    watch_temperature();
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
    return write(segments_, mask, kSegmentLimits);
}

int Illumination::set_brightness(unsigned int brightness) {
    return write(brightness_, brightness, kBrightnessLimits);
}

int Illumination::set_colour(Colour colour, unsigned int percent) {
    return module.rgbw ? write(colours_[colour], percent, kColourLimits) : refuse(ENOTSUP);
}

int Illumination::get_colour(Colour colour, unsigned int& percent) const {
    if (!module.rgbw) {
        return refuse(ENOTSUP);
    }
    percent = colours_[colour];
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
    return write_protected_setting(write_protected_, dc_limit_, limit, kBrightnessLimits);
}

int Illumination::set_flash_brightness_limit(unsigned int limit) {
    return write_protected_setting(write_protected_, flash_limit_, limit, kBrightnessLimits);
}

int Illumination::set_ot_off_limit(unsigned int limit) {
    return write_protected_setting(write_protected_, off_limit_, limit, kOffLimits);
}

int Illumination::set_limit_ot_decrease(unsigned int kelvin) {
    return write_protected_setting(write_protected_, decrease_, kelvin, kDecreaseLimits);
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
    bool const any = brightness_ > 0 || std::any_of(colours_, colours_ + kColours, [](auto c) { return c > 0; });
    bool const switched_off = too_hot_ && guards_.over_temperature;
    return module.present && mode_ == hal::illumination_mode_te::active && segments_ != 0 && any && !switched_off;
}

// White and colours share one supply: together they cannot make more heat than full white.
double Illumination::load() const {
    if (!lit()) {
        return 0.0;
    }
    double const highest = static_cast<double>(flashing() ? flash_limit_ : dc_limit_) / kBrightnessLimits.max;
    double const white = std::min(highest, static_cast<double>(brightness_) / kBrightnessLimits.max);
    double const sum = std::accumulate(colours_, colours_ + kColours, 0.0);
    double const coloured = module.rgbw ? std::min(highest, sum / (kColours * kColourLimits.max)) : 0.0;
    unsigned int on = 0;
    for (unsigned int mask = segments_; mask != 0; mask >>= 1) {
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
        states.segments[i] = lit() && (segments_ >> i & 1) != 0;
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

void Illumination::describe(Properties& properties) {
    auto const add_temperature = [&](char const* name, char const* help, double const& variable,
                                     void (Illumination::*set)(double)) {
        properties.add(
            name, help, [&variable] { return variable; },
            [this, set](double temperature) -> Error {
                if (temperature < kColdest || temperature > kHottest) {
                    return "out of range";
                }
                (this->*set)(temperature);
                return {};
            });
    };
    properties.add_variable("illumination.present", "whether the module is fitted", module.present);
    properties.add_variable("illumination.rgbw", "whether it has colours; otherwise it is white", module.rgbw);
    add_temperature("illumination.temperature.internal", "C, inside, -40 to 125; set: goes on from there", inside_,
                    &Illumination::set_internal_temperature);
    add_temperature("illumination.temperature.external", "C, outside, -40 to 125; set: goes on from there", outside_,
                    &Illumination::set_external_temperature);
    properties.add_variable("illumination.temperature.ambient", "C, of the surroundings, -40 to 125",
                            ambient_temperature, kColdest, kHottest);
    properties.add_variable("illumination.flags.low_power", "set by hand", disturbances.low_power);
    properties.add_variable("illumination.flags.driver_error", "set by hand", disturbances.driver_error);
    properties.add_variable("illumination.flags.calibration_error", "set by hand", disturbances.calibration_error);
    properties.add_variable("illumination.flags.dvsc", "set by hand", disturbances.dvsc);
    properties.add_variable("illumination.flags.bc", "set by hand", disturbances.bc);
    properties.add("illumination.flags.trigger_overflow", "the flash is longer than the triggers are apart",
                   [this] { return flags().trigger_overflow; });
    properties.add("illumination.flags.over_temperature", "from the off limit until it has cooled by the decrease",
                   [this] { return too_hot_; });
    properties.add("illumination.error_code", "number of the gravest flag; 0: none", [this] { return error_code(); });
    properties.add("illumination.lit", "whether it gives light", [this] { return lit(); });
    properties.add("illumination.load", "heat that it makes, as a share of full light: 0-1", [this] { return load(); });
    properties.add("illumination.exposure.mode", "0 continuous, 65534 flash, 65535 switch",
                   [this] { return exposure_mode_; });
    properties.add("illumination.exposure.time", "us, of the flash", [this] { return flash_time_; });
    properties.add(
        "illumination.pattern", "0 continuous, 65535 strobe", [this] { return pattern_; },
        [this](hal::light_pattern_te pattern) { return set_pattern(pattern) == 0 ? Error() : "not a pattern"; });
    properties.add_variable("illumination.mode", "0 inactive, 1 active", mode_, hal::illumination_mode_te::inactive,
                            hal::illumination_mode_te::active);
    auto const add_number = [&](char const* name, char const* help, unsigned int& setting, Limits const& limits) {
        properties.add_variable(name, help, setting, limits.min, limits.max);
    };
    add_number("illumination.segments", "mask, one bit per segment, 0-15", segments_, kSegmentLimits);
    add_number("illumination.brightness.total", "0-14", brightness_, kBrightnessLimits);
    add_number("illumination.brightness.red", "percent", colours_[red], kColourLimits);
    add_number("illumination.brightness.green", "percent", colours_[green], kColourLimits);
    add_number("illumination.brightness.blue", "percent", colours_[blue], kColourLimits);
    add_number("illumination.limit.dc", "highest brightness of steady light, 0-14", dc_limit_, kBrightnessLimits);
    add_number("illumination.limit.flash", "highest brightness of a flash, 0-14", flash_limit_, kBrightnessLimits);
    add_number("illumination.limit.ot_off", "C, at which the guard switches the light off, 40-100", off_limit_,
               kOffLimits);
    add_number("illumination.limit.ot_decrease", "K below that limit, at which the light comes back, 1-30", decrease_,
               kDecreaseLimits);
    properties.add_variable("illumination.write_protection",
                            "the library's limits and guards are refused while it is on", write_protected_);
    properties.add_variable("illumination.guards.ot", "over-temperature guard", guards_.over_temperature);
    properties.add_variable("illumination.guards.dvs", "kept, without effect", guards_.dvs);
    properties.add_variable("illumination.guards.autocal", "kept, without effect", guards_.autocal);
    properties.add_variable("illumination.guards.pvd", "kept, without effect", guards_.pvd);
    properties.add_variable("illumination.led.red", "indicator LED", leds_[red_led]);
    properties.add_variable("illumination.led.green", "indicator LED", leds_[green_led]);
    properties.add_variable("illumination.led.alter", "indicator LED", leds_[alter_led]);
}

}  // namespace sim
