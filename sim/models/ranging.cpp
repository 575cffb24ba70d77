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
constexpr std::uint32_t kSpads = 256;       // enabled for each zone
constexpr double kSignalAtOneMetre = 40.0;  // kcps/SPAD, of a target that reflects all
constexpr double kWeakSignal = 2.0;         // kcps/SPAD, below which the result is half-confident
constexpr double kLostSignal = 0.2;         // and below which there is none

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
    return std::abs(value - wanted) <= wanted / 10.0;
}

int side_of(hal::tof_t::Resolution resolution) {
    return resolution == hal::tof_t::Resolution::zones_8x8 ? 8 : 4;
}

}  // namespace

int Ranging::set_resolution(Resolution resolution) {
    bool const legal = resolution == Resolution::zones_4x4 || resolution == Resolution::zones_8x8;
    int const status = write(resolution_, resolution, legal);
    frequency_hz_ = std::min(frequency_hz_, highest_frequency());
    return status;
}

unsigned char Ranging::highest_frequency() const {
    return resolution_ == Resolution::zones_8x8 ? 15 : 60;
}

int Ranging::set_frequency(unsigned char hz) {
    return write(frequency_hz_, hz, hz >= 1 && hz <= highest_frequency());
}

int Ranging::set_ranging_mode(RangingMode mode) {
    return write(mode_, mode, mode == RangingMode::continuous || mode == RangingMode::autonomous);
}

int Ranging::set_integration_time(unsigned int ms) {
    return write(integration_ms_, ms, ms >= 2 && ms <= 1000);
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

// A frame comes at the frequency, unless its integrations take longer: one at 4x4, four at 8x8.
Duration Ranging::frame_time() const {
    Duration const period = Duration(std::chrono::seconds(1)) / frequency_hz_;
    if (mode_ == RangingMode::continuous) {
        return period;
    }
    int const integrations = resolution_ == Resolution::zones_8x8 ? 4 : 1;
    return std::max(period, Duration(std::chrono::milliseconds(integration_ms_)) * integrations);
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
    int const side = side_of(resolution_);
    double const half_width = std::tan(kDiagonalView / 2.0 * kDegree) / std::sqrt(2.0);
    unsigned int zone = 0;
    for (int row = 0; row < side; ++row) {
        for (int column = 0; column < side; ++column) {
            double const right = ((column + 0.5) / side * 2.0 - 1.0) * half_width;
            double const down = ((row + 0.5) / side * 2.0 - 1.0) * half_width;
            measure(right, down, std::clamp(measurements, 1U, kMostMeasurements), zone++, results);
        }
    }
    return 0;
}

void Ranging::measure(double right, double down, unsigned int measurements, unsigned int zone,
                      VL53L5CX_ResultsData& results) {
    results.ambient_per_spad[zone] = static_cast<std::uint32_t>(std::lround(ambient_));
    results.nb_spads_enabled[zone] = kSpads;
    results.target_status[zone] = kNoTarget;
    auto const target = scene_.look(right, down);
    double const deviate = next_deviate();  // also where there is no target: the other zones must not depend on that
    if (!target || target->distance_mm > kFarthest || target->distance_mm < kNearest) {
        return;
    }
    double const metres = target->distance_mm / 1000.0;
    double const signal = kSignalAtOneMetre * target->reflectance / 100.0 / (metres * metres);
    if (signal < kLostSignal) {
        return;
    }
    // The continuous mode integrates all the time; the autonomous one gains with its integration time.
    double const exposure = mode_ == RangingMode::continuous ? 20.0 : integration_ms_;
    double const usual = 1.0 + 2.0 * metres + 4.0 / std::sqrt(signal * exposure);
    double const sigma = usual * noise_ / std::sqrt(measurements);
    double const pull = compensated_ ? 0.0 : crosstalk_ / 100.0 * target->distance_mm / kFarthest;
    double const distance = target->distance_mm * (1.0 - pull) + deviate * sigma;
    results.nb_target_detected[zone] = 1;
    results.signal_per_spad[zone] = static_cast<std::uint32_t>(std::lround(signal));
    results.range_sigma_mm[zone] = static_cast<std::uint16_t>(std::lround(sigma));
    results.distance_mm[zone] = static_cast<std::int16_t>(std::lround(std::clamp(distance, 0.0, kFarthest)));
    results.reflectance[zone] = static_cast<std::uint8_t>(std::lround(target->reflectance));
    results.target_status[zone] = signal < kWeakSignal ? kHalfConfident : kValid;
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
    return asleep() ? Duration(0) : std::chrono::milliseconds(500) * (1 + calibration.samples);
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
