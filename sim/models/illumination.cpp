// The illumination module: what it is told to shine, what it really shines, and how warm it gets from that.
#include "sim/models/illumination.h"

#include <algorithm>
#include <bitset>
#include <chrono>
#include <cmath>
#include <optional>

#include "sim/models/refusal.h"

namespace sim {

namespace {

// Two stages, each of first order: the LEDs' board inside warms in minutes, the heavier housing in a quarter of an
// hour.
constexpr double kInnerTimeConstant = 120.0;  // s
constexpr double kOuterTimeConstant = 600.0;  // s
// Full light is more than the module stands for good, so that its guard has something to do: in a room, 25 C, it passes
// the off limit. The housing ends where it can still be touched.
constexpr double kInnerRise = 80.0;  // K, of full light
constexpr double kOuterRise = 30.0;  // K, of full light

// The shorter the flash, the more current the LEDs stand: their heat has about a millisecond's time to leave them. The
// voltage of an LED hardly rises with its current, so its heat goes as its current does.
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

double in_seconds(Duration length) {
    return std::chrono::duration<double>(length).count();
}

double approach(double from, double to, Duration length, double time_constant) {
    return to + (from - to) * std::exp(-in_seconds(length) / time_constant);
}

double load_of(Warmth const& warmth, Heating const& heating) {
    return warmth.too_hot && heating.guarded ? 0.0 : heating.load;
}

double inner_goal(Warmth const& warmth, Heating const& heating) {
    return heating.ambient + load_of(warmth, heating) * kInnerRise;
}

// While it stays too hot, or does not become so.
Warmth pass(Duration length, Warmth const& start, Heating const& heating) {
    double const outer_goal = heating.ambient + load_of(start, heating) * kOuterRise;
    return {approach(start.inside, inner_goal(start, heating), length, kInnerTimeConstant),
            approach(start.outside, outer_goal, length, kOuterTimeConstant), start.too_hot};
}

double next_mark(Warmth const& start, Heating const& heating) {
    return start.too_hot ? heating.back : heating.off;
}

// Until it becomes too hot, or is so no more; nothing where that never comes.
std::optional<Duration> time_to_turn(Warmth const& start, Heating const& heating) {
    double const goal = inner_goal(start, heating);
    double const share = (next_mark(start, heating) - goal) / (start.inside - goal);
    if (!(share > 0.0 && share < 1.0)) {
        return std::nullopt;
    }
    std::chrono::duration<double> const time(-kInnerTimeConstant * std::log(share));
    return std::chrono::ceil<Duration>(time);
}

// As it is then: on the mark exactly, so that each round of turns is like the last.
Warmth turned(Duration length, Warmth const& start, Heating const& heating) {
    return {next_mark(start, heating), pass(length, start, heating).outside, !start.too_hot};
}

// The light that goes off and comes back without end: as many whole rounds at once as `left` holds. At its start it has
// just turned.
Warmth skip_rounds(Duration& left, Warmth const& start, Heating const& heating) {
    auto const first = time_to_turn(start, heating);
    if (!first) {
        return start;
    }
    Warmth const half = turned(*first, start, heating);
    auto const second = time_to_turn(half, heating);
    if (!second) {
        return start;
    }
    Warmth const whole = turned(*second, half, heating);
    Duration const round = *first + *second;
    auto const rounds = left / round;
    left -= rounds * round;
    // Outside, each round leaves the same share of the difference to where all of them lead.
    double const share = std::exp(-in_seconds(round) / kOuterTimeConstant);
    double const goal = (whole.outside - share * start.outside) / (1.0 - share);
    return {start.inside, goal + (start.outside - goal) * std::pow(share, rounds), start.too_hot};
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

Warmth after(Duration length, Warmth const& start, Heating const& heating) {
    Duration left = length;
    Warmth warmth = start;
    for (auto next = time_to_turn(warmth, heating); next && *next <= left; next = time_to_turn(warmth, heating)) {
        warmth = turned(*next, warmth, heating);
        left -= *next;
        warmth = skip_rounds(left, warmth, heating);
    }
    return pass(left, warmth, heating);
}

void Illumination::advance(Time now, ExposureSignal const& signal) {
    signal_ = signal;
    if (now <= now_) {
        return;
    }
    // Whatever was set since the last call has been so from then on.
    if (!(heating() == course_heating_)) {
        begin_course();
    }
    now_ = now;
    warmth_ = after(now_ - course_began_, course_start_, course_heating_);
}

Heating Illumination::heating() const {
    double const off = ot_off_limit();
    return {light() * overdrive() * duty(), ambient_, off, off - limit_ot_decrease(), guards_.over_temperature != 0};
}

void Illumination::begin_course() {
    course_began_ = now_;
    course_start_ = warmth_;
    course_heating_ = heating();
}

// By the limits, once these or the temperature were set.
void Illumination::judge_warmth() {
    Heating const limits = heating();
    warmth_.too_hot = warmth_.inside >= limits.off || (warmth_.too_hot && warmth_.inside > limits.back);
    begin_course();
}

int Illumination::set_internal_temperature(double temperature) {
    if (set_temperature(warmth_.inside, temperature) != 0) {
        return -1;
    }
    judge_warmth();
    return 0;
}

int Illumination::set_external_temperature(double temperature) {
    if (set_temperature(warmth_.outside, temperature) != 0) {
        return -1;
    }
    begin_course();
    return 0;
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
    if (write(settings_[static_cast<std::size_t>(setting)], value, limits_of(setting)) != 0) {
        return -1;
    }
    judge_warmth();
    return 0;
}

int Illumination::put_protected(Setting setting, unsigned int value) {
    return write_protected_ ? refuse(EPERM) : put(setting, value);
}

void Illumination::lose_power() {
    Illumination fresh;
    fresh.module = module;
    fresh.disturbances = disturbances;
    fresh.now_ = now_;
    for (Setting const kept : {Setting::dc_limit, Setting::flash_limit, Setting::ot_off_limit, Setting::ot_decrease}) {
        fresh.settings_[static_cast<std::size_t>(kept)] = setting(kept);
    }
    fresh.guards_ = guards_;
    fresh.present_ = present_;
    fresh.ambient_ = ambient_;
    fresh.warmth_ = warmth_;
    *this = fresh;
}

void Illumination::set_present(bool present) {
    if (present != present_) {
        present_ = present;
        lose_power();  // also when it comes: what was set by hand meanwhile met nobody
    }
}

int Illumination::answer() const {
    return present_ ? 0 : refuse(ENODEV);
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

// The share of full light that it is told to give, 0-1: white and colours share one supply.
double Illumination::light() const {
    if (!present_ || mode_ != hal::illumination_mode_te::active) {
        return 0.0;
    }
    unsigned int const limit = flashing() ? flash_brightness_limit() : dc_brightness_limit();
    double const highest = static_cast<double>(limit) / kBrightnessLimits.max;
    double const white = std::min(highest, static_cast<double>(brightness()) / kBrightnessLimits.max);
    double const percent = setting(Setting::red) + setting(Setting::green) + setting(Setting::blue);
    double const coloured = module.rgbw ? std::min(highest, percent / (kColours * kColourLimits.max)) : 0.0;
    auto const segments_on = static_cast<double>(std::bitset<kSegments>(segments()).count());
    return std::min(1.0, white + coloured) * segments_on / kSegments;
}

bool Illumination::lit() const {
    return light() > 0.0 && !switched_off();
}

double Illumination::load() const {
    return load_of(warmth_, heating());
}

hal::spot_states Illumination::states() const {
    hal::spot_states states{};
    states.light_range = kLightRanges[overdrive() - 1];
    states.operating_mode = flashing() ? kFlashMode : kContinuousMode;
    for (unsigned int i = 0; i < kSegments; ++i) {
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
    flags.over_temperature = warmth_.too_hot;
    // The next trigger comes before the flash has ended.
    flags.trigger_overflow = flashing() && lit() && signal_.rate * flash_time_ > 1e6;
    flags.general_error = gravest(flags) != 0;
    return flags;
}

hal::illu_error_code Illumination::error_code() const {
    return static_cast<hal::illu_error_code>(gravest(flags()));
}

}  // namespace sim
