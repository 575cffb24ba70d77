// How the device lies in space: set or turning by control, measured with noise.
#pragma once

#include <cstdint>

#include "hal/quaternion.h"
#include "sim/core/clock.h"

namespace sim {

struct Angles {
    double yaw = 0.0;  // degrees, as all three
    double pitch = 0.0;
    double roll = 0.0;
};

// A rotation; of unit length.
struct Rotation {
    double w = 1.0;
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

Rotation rotation_of(Angles const& angles);
Angles angles_of(Rotation const& rotation);
// What the sensor hub's sample stands for.
Rotation rotation_of(hal::quaternion_s16_t const& sample);
// The angle in degrees, 0-180, of the turn that leads from one rotation to the other.
double angle_between(Rotation const& one, Rotation const& other);
// The angle in degrees, 0-180, between their verticals: a turn around the vertical makes none.
double tilt_between(Rotation const& one, Rotation const& other);

// Which edge of the device is the lower one, as in a screen that turns with it.
enum class Edge { none, left, right, front, back };
// None where the device lies as flat as `flat`, in degrees from the level.
Edge lower_edge(Rotation const& rotation, double flat);

// Level at first. The noise depends on the seed and the time alone, so that every run measures the same.
class Orientation {
public:
    // Degrees, either way.
    static constexpr double kMostTurn = 360.0;  // of yaw and roll
    static constexpr double kMostPitch = 90.0;
    static constexpr double kMostNoise = 10.0;
    static constexpr double kMostDrift = 10.0;  // degrees a minute

    // False, and nothing changes, where an angle is out of range.
    // Over a time the device turns evenly on the shortest way.
    bool tilt(Angles const& target, Time now, Duration over = Duration(0));

    Rotation at(Time now) const;
    // As the hub measures it, in its fixed point, after it has integrated the turn rates for so long.
    hal::quaternion_s16_t measure(Time now, Duration integrated = Duration(0)) const;

    // Standard deviation in degrees, around each of the three axes.
    double noise() const { return noise_; }
    // False, and the old one stays, beyond 0 to kMostNoise.
    bool set_noise(double degrees);
    // By which the measured heading runs away, degrees a minute: nothing tells the hub where north is.
    double drift() const { return drift_; }
    // False, and the old one stays, beyond 0 to kMostDrift.
    bool set_drift(double degrees_a_minute);
    std::uint64_t seed() const { return seed_; }
    void set_seed(std::uint64_t seed) { seed_ = seed; }

private:
    Rotation from_;
    Rotation to_;
    Time start_{0};
    Duration over_{0};
    double noise_ = 0.02;  // degrees: ours, of a hub that lies still
    double drift_ = 0.1;   // degrees a minute: ours, what is left of the turn rate's bias once the hub has trimmed it
    std::uint64_t seed_ = 1;
};

}  // namespace sim
