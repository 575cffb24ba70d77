// The ranging sensor: its settings, and what it measures of the scene.
#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <vector>

#include "hal/tof.h"
#include "sim/core/clock.h"
#include "sim/models/scene.h"

namespace sim {

// Operations that return an int answer the sensor's status: 0, or what refuses them; then the old value stays.
class Ranging {
public:
    using Resolution = hal::tof_t::Resolution;
    using RangingMode = hal::tof_t::RangingMode;
    using PowerMode = hal::tof_t::PowerMode;

    static constexpr int kCrosstalkFailed = 4;
    static constexpr int kInvalidParameter = 127;
    static constexpr int kError = 255;

    // What an object of the library keeps for itself.
    struct Calibration {
        unsigned short reflectance_percent = 3;
        unsigned char samples = 4;
        unsigned short distance_mm = 600;
    };

    // While the sensor sleeps it refuses a legal setting as it does a measurement; but for the power mode, which wakes
    // it. A frequency that the new resolution does not allow falls to the highest that it does.
    int set_resolution(Resolution resolution);
    Resolution resolution() const { return resolution_; }
    static constexpr unsigned char kLeastFrequency = 1;
    unsigned char highest_frequency() const;  // by the resolution
    int set_frequency(unsigned char hz);
    unsigned char frequency() const { return frequency_hz_; }
    int set_ranging_mode(RangingMode mode);
    RangingMode ranging_mode() const { return mode_; }
    static constexpr unsigned int kLeastIntegration = 2;
    static constexpr unsigned int kMostIntegration = 1000;
    int set_integration_time(unsigned int ms);
    unsigned int integration_time() const { return integration_ms_; }
    int set_power_mode(PowerMode mode);
    PowerMode power_mode() const { return power_; }

    static int check_reflectance(unsigned short percent);
    static int check_samples(unsigned char samples);
    static int check_distance(unsigned short mm);

    // Forgets what it was told, and what a calibration found: the sensor has no memory of its own.
    void lose_power();

    // Blocking operations come in two: how long it takes, then, once that has passed, what comes of it.
    // While the sensor sleeps it refuses them at once.
    Duration shot_time(unsigned int measurements) const;
    // The mean of so many measurements; 0 counts as 1, and no more than kMostMeasurements are made. With 64 zones each
    // has a quarter of the SPADs and of the light; light of the surroundings is noise: both cost exactness and reach.
    int shot(unsigned int measurements, VL53L5CX_ResultsData& results);
    // What a shot now would measure without its noise, mm by zone, 0 where there is no target; empty where it would be
    // refused. Changes nothing.
    std::vector<int> view() const;
    Duration calibration_time(Calibration const& calibration) const;
    // Needs a flat target of that reflectance at that distance, each within a tenth.
    int calibrate_crosstalk(Calibration const& calibration);
    Duration module_test_time() const;
    // Shines once and looks whether light comes through the illumination module.
    int test_illumination_module(bool illumination_present) const;

    void set_scene(Scene const& scene) { scene_ = scene; }
    Scene const& scene() const { return scene_; }

    // By hand. Setters refuse what is outside of their range.
    struct Range {
        double min;
        double max;
    };
    static constexpr Range kPullRange{0.0, 50.0};        // percent; a dirtier cover would be seen as a target itself
    static constexpr Range kNoiseRange{0.0, 100.0};      // times the usual; more than that is no measurement
    static constexpr Range kAmbientRange{0.0, 10000.0};  // kcps/SPAD; no SPAD counts faster
    static constexpr Range kTemperatureRange{-40.0, 125.0};  // C, that industrial parts stand

    // Whether a calibration took the cover's cross-talk away.
    bool crosstalk_compensated() const { return compensated_; }
    void set_crosstalk_compensated(bool compensated) { compensated_ = compensated; }
    // Percent by which the cover pulls a target at 4 m nearer.
    double crosstalk_pull() const { return crosstalk_; }
    int set_crosstalk_pull(double percent);
    bool emitter_healthy() const { return emitter_healthy_; }
    void set_emitter_healthy(bool healthy) { emitter_healthy_ = healthy; }
    double noise() const { return noise_; }
    int set_noise(double factor);
    std::uint32_t seed() const { return seed_; }
    // The noise starts anew.
    void set_seed(std::uint32_t seed);
    double ambient_light() const { return ambient_; }
    int set_ambient_light(double kcps_per_spad);
    double temperature() const { return temperature_; }
    int set_temperature(double temperature);

    static constexpr unsigned int kMostMeasurements = 32;  // half a minute of frames at 1 Hz

private:
    bool asleep() const { return power_ == PowerMode::sleep; }
    template <typename T>
    int set(T& setting, T value, bool legal);
    bool fine() const { return resolution_ == Resolution::zones_8x8; }
    int integrations() const;
    Duration period() const;
    Duration frame_time() const;
    Duration exposure() const;
    double next_deviate();
    struct Echo {
        double distance;   // mm, as the cover lets it seem
        double signal;     // kcps/SPAD
        double clearness;  // signal to noise
        double reflectance;
    };
    struct Direction {
        double right;
        double down;
    };
    std::vector<Direction> zones() const;
    std::optional<Echo> look(Direction const& direction) const;
    std::uint32_t spads() const;
    void measure(Direction const& direction, unsigned int measurements, unsigned int zone,
                 VL53L5CX_ResultsData& results);

    Resolution resolution_ = Resolution::zones_4x4;
    unsigned char frequency_hz_ = 1;
    RangingMode mode_ = RangingMode::autonomous;
    unsigned int integration_ms_ = 5;
    PowerMode power_ = PowerMode::wakeup;
    bool compensated_ = false;  // of the cover's cross-talk

    Scene scene_;
    bool emitter_healthy_ = true;
    double noise_ = 1.0;         // times the usual
    double crosstalk_ = 2.0;     // percent by which the cover, a clean one, pulls a target at 4 m nearer
    double ambient_ = 10.0;      // kcps/SPAD, of a lit workshop
    double temperature_ = 30.0;  // C, a little above the room's
    std::uint32_t seed_ = 1;
    std::mt19937 random_{1};
};

}  // namespace sim
