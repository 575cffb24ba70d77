// The ranging sensor: its settings, and what it measures of the scene.
#include "sim/models/ranging.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>

namespace sim {

namespace {

constexpr double kDegree = 3.14159265358979323846 / 180.0;
constexpr double kDiagonalView = 63.0;      // degrees
constexpr double kFarthest = 4000.0;        // mm
constexpr double kNearest = 20.0;           // mm
constexpr std::uint32_t kSpads = 256;       // of a zone of the coarse grid, or of the four in its place of the fine one
constexpr double kSignalAtOneMetre = 40.0;  // kcps/SPAD, of a target that reflects all; falls with the distance squared
// How far the light pulse reaches, there and back: some 3 ns. Each count tells the distance to within this; their mean
// does so better by the root of their number.
constexpr double kPulse = 500.0;  // mm
// Of the signal to its noise. Below the first a result is half-confident; below the second there is none, so that no
// zone ever takes noise for a target.
constexpr double kClear = 20.0;
constexpr double kDrowned = 10.0;

// Of the cross-talk calibration.
constexpr auto kSetup = std::chrono::milliseconds(500);
constexpr auto kPerSample = std::chrono::milliseconds(500);
constexpr double kTolerance = 0.1;  // of its target's distance and reflectance, as a share: set up by hand

constexpr std::uint8_t kValid = 5;
constexpr std::uint8_t kHalfConfident = 9;
constexpr std::uint8_t kNoTarget = 255;

int invalid() {
    errno = EINVAL;
    return Ranging::kInvalidParameter;
}

int failed(int status) {
    errno = EIO;
    return status;
}

template <typename T>
int write(T& setting, T value, bool legal) {
    if (!legal) {
        return invalid();
    }
    setting = value;
    return 0;
}

int write(double& setting, double value, Ranging::Range const& range) {
    return write(setting, value, value >= range.min && value <= range.max);
}

template <typename T>
int check(T value, int min, int max) {
    return value >= min && value <= max ? 0 : invalid();
}

bool about(double value, double wanted) {
    return std::abs(value - wanted) <= wanted * kTolerance;
}

}  // namespace

void Ranging::lose_power() {
    resolution_ = Resolution::zones_4x4;
    frequency_hz_ = 1;
    mode_ = RangingMode::autonomous;
    integration_ms_ = 5;
    power_ = PowerMode::wakeup;
    compensated_ = false;
}

template <typename T>
int Ranging::set(T& setting, T value, bool legal) {
    return legal && asleep() ? failed(kError) : write(setting, value, legal);
}

int Ranging::set_resolution(Resolution resolution) {
    bool const legal = resolution == Resolution::zones_4x4 || resolution == Resolution::zones_8x8;
    int const status = set(resolution_, resolution, legal);
    frequency_hz_ = std::min(frequency_hz_, highest_frequency());
    return status;
}

unsigned char Ranging::highest_frequency() const {
    return fine() ? 15 : 60;
}

int Ranging::set_frequency(unsigned char hz) {
    return set(frequency_hz_, hz, hz >= kLeastFrequency && hz <= highest_frequency());
}

int Ranging::set_ranging_mode(RangingMode mode) {
    return set(mode_, mode, mode == RangingMode::continuous || mode == RangingMode::autonomous);
}

int Ranging::set_integration_time(unsigned int ms) {
    return set(integration_ms_, ms, ms >= kLeastIntegration && ms <= kMostIntegration);
}

int Ranging::set_power_mode(PowerMode mode) {
    return write(power_, mode, mode == PowerMode::sleep || mode == PowerMode::wakeup);
}

int Ranging::check_reflectance(unsigned short percent) {
    return check(percent, 1, 99);
}

int Ranging::check_samples(unsigned char samples) {
    return check(samples, 1, 16);
}

int Ranging::check_distance(unsigned short mm) {
    return check(mm, 600, 3000);
}

// The fine grid is measured a quarter at a time.
int Ranging::integrations() const {
    return fine() ? 4 : 1;
}

Duration Ranging::period() const {
    return Duration(std::chrono::seconds(1)) / frequency_hz_;
}

// A frame comes at the frequency, unless its integrations take longer.
Duration Ranging::frame_time() const {
    return std::max(period(), exposure() * integrations());
}

// For how long a zone gathers light: the continuous mode does so all the time.
Duration Ranging::exposure() const {
    return mode_ == RangingMode::continuous ? period() / integrations() : std::chrono::milliseconds(integration_ms_);
}

Duration Ranging::shot_time(unsigned int measurements) const {
    return asleep() ? Duration(0) : frame_time() * std::clamp(measurements, 1U, kMostMeasurements);
}

int Ranging::shot(unsigned int measurements, VL53L5CX_ResultsData& results) {
    if (asleep() || !emitter_healthy_) {
        return failed(kError);
    }
    results = {};
    results.silicon_temp_degc = static_cast<std::int8_t>(std::lround(temperature_));
    unsigned int zone = 0;
    for (Direction const& direction : zones()) {
        measure(direction, std::clamp(measurements, 1U, kMostMeasurements), zone++, results);
    }
    return 0;
}

std::vector<int> Ranging::view() const {
    std::vector<int> distances;
    if (asleep() || !emitter_healthy_) {
        return distances;
    }
    for (Direction const& direction : zones()) {
        auto const echo = look(direction);
        distances.push_back(echo ? static_cast<int>(std::lround(std::clamp(echo->distance, 0.0, kFarthest))) : 0);
    }
    return distances;
}

// From the upper left one on.
std::vector<Ranging::Direction> Ranging::zones() const {
    int const side = fine() ? 8 : 4;
    double const half_width = std::tan(kDiagonalView / 2.0 * kDegree) / std::sqrt(2.0);
    auto const middle = [&](int at) { return ((at + 0.5) / side * 2.0 - 1.0) * half_width; };
    std::vector<Direction> zones;
    for (int row = 0; row < side; ++row) {
        for (int column = 0; column < side; ++column) {
            zones.push_back({middle(column), middle(row)});
        }
    }
    return zones;
}

std::uint32_t Ranging::spads() const {
    return fine() ? kSpads / 4 : kSpads;
}

// Nothing where there is no target, or where its light drowns.
std::optional<Ranging::Echo> Ranging::look(Direction const& direction) const {
    auto const target = scene_.look(direction.right, direction.down);
    if (!target || target->distance_mm > kFarthest || target->distance_mm < kNearest) {
        return std::nullopt;
    }
    double const metres = target->distance_mm / 1000.0;
    double const signal = kSignalAtOneMetre * target->reflectance / 100.0 / (metres * metres);
    // Light comes in counts, whose noise is their root; that of the surroundings is noise alone.
    double const gathering = spads() * std::chrono::duration<double, std::milli>(exposure()).count();  // SPAD * ms
    double const clearness = signal * std::sqrt(gathering / (signal + ambient_));
    if (clearness < kDrowned) {
        return std::nullopt;
    }
    double const pull = compensated_ ? 0.0 : crosstalk_ / 100.0 * target->distance_mm / kFarthest;
    return Echo{target->distance_mm * (1.0 - pull), signal, clearness, target->reflectance};
}

void Ranging::measure(Direction const& direction, unsigned int measurements, unsigned int zone,
                      VL53L5CX_ResultsData& results) {
    results.ambient_per_spad[zone] = static_cast<std::uint32_t>(std::lround(ambient_));
    results.nb_spads_enabled[zone] = spads();
    results.target_status[zone] = kNoTarget;
    auto const echo = look(direction);
    double const deviate = next_deviate();  // also where there is no target: the other zones must not depend on that
    if (!echo) {
        return;
    }
    double const sigma = noise_ * kPulse / echo->clearness / std::sqrt(measurements);
    double const distance = echo->distance + deviate * sigma;
    results.nb_target_detected[zone] = 1;
    results.signal_per_spad[zone] = static_cast<std::uint32_t>(std::lround(echo->signal));
    results.range_sigma_mm[zone] = static_cast<std::uint16_t>(std::lround(sigma));
    results.distance_mm[zone] = static_cast<std::int16_t>(std::lround(std::clamp(distance, 0.0, kFarthest)));
    results.reflectance[zone] = static_cast<std::uint8_t>(std::lround(echo->reflectance));
    results.target_status[zone] = echo->clearness < kClear ? kHalfConfident : kValid;
}

// About normal, by hand: the library's distributions differ from host to host.
double Ranging::next_deviate() {
    double sum = -6.0;
    for (int i = 0; i < 12; ++i) {
        sum += static_cast<double>(random_()) / 4294967296.0;
    }
    return sum;
}

Duration Ranging::calibration_time(Calibration const& calibration) const {
    return asleep() ? Duration(0) : kSetup + kPerSample * calibration.samples;
}

int Ranging::calibrate_crosstalk(Calibration const& calibration) {
    if (asleep() || !emitter_healthy_) {
        return failed(kError);
    }
    auto const target = scene_.flat();
    if (!target || !about(target->distance_mm, calibration.distance_mm) ||
        !about(target->reflectance, calibration.reflectance_percent)) {
        return failed(kCrosstalkFailed);
    }
    compensated_ = true;
    return 0;
}

Duration Ranging::module_test_time() const {
    return asleep() ? Duration(0) : frame_time();
}

int Ranging::test_illumination_module(bool illumination_present) const {
    return asleep() || !emitter_healthy_ || !illumination_present ? failed(kError) : 0;
}

int Ranging::set_crosstalk_pull(double percent) {
    return write(crosstalk_, percent, kPullRange);
}

int Ranging::set_noise(double factor) {
    return write(noise_, factor, kNoiseRange);
}

void Ranging::set_seed(std::uint32_t seed) {
    seed_ = seed;
    random_.seed(seed);
}

int Ranging::set_ambient_light(double kcps_per_spad) {
    return write(ambient_, kcps_per_spad, kAmbientRange);
}

int Ranging::set_temperature(double temperature) {
    return write(temperature_, temperature, kTemperatureRange);
}

}  // namespace sim
