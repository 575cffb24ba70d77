// How the device lies in space: set or turning by control, measured with noise.
#include "sim/models/orientation.h"

#include <algorithm>
#include <cmath>

#include "sim/core/yaw_pitch_roll.h"

namespace sim {

namespace {

constexpr double kDegree = 3.14159265358979323846 / 180.0;  // in radians

Rotation product(Rotation const& a, Rotation const& b) {
    return {a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z, a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
            a.w * b.y - a.x * b.z + a.y * b.w + a.z * b.x, a.w * b.z + a.x * b.y - a.y * b.x + a.z * b.w};
}

Rotation inverse(Rotation const& r) {
    return {r.w, -r.x, -r.y, -r.z};
}

// The rotation by the length of a vector, in radians, around its direction.
Rotation turn_around(double x, double y, double z) {
    double const angle = std::hypot(x, y, z);
    if (angle == 0.0) {
        return {};
    }
    double const scale = std::sin(angle / 2) / angle;
    return {std::cos(angle / 2), x * scale, y * scale, z * scale};
}

// `part` (0-1) of the shortest way from one rotation to the other.
Rotation between(Rotation const& from, Rotation const& to, double part) {
    Rotation way = product(inverse(from), to);
    if (way.w < 0) {
        way = {-way.w, -way.x, -way.y, -way.z};
    }
    double const axis = std::hypot(way.x, way.y, way.z);
    if (axis == 0.0) {
        return to;
    }
    double const scale = part * 2 * std::atan2(axis, way.w) / axis;
    return product(from, turn_around(way.x * scale, way.y * scale, way.z * scale));
}

// The direction upwards, in the device's own axes.
struct Vertical {
    double x;
    double y;
    double z;
};

Vertical vertical_of(Rotation const& r) {
    return {2 * (r.x * r.z - r.w * r.y), 2 * (r.y * r.z + r.w * r.x), 1 - 2 * (r.x * r.x + r.y * r.y)};
}

// SplitMix64.
std::uint64_t next_random(std::uint64_t& state) {
    std::uint64_t z = state += 0x9E3779B97F4A7C15U;
    z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31U);
}

// Of deviation 1: twelve even ones added up.
double next_normal(std::uint64_t& state) {
    double sum = -6.0;
    for (int i = 0; i < 12; ++i) {
        sum += static_cast<double>(next_random(state) >> 11U) / static_cast<double>(1ULL << 53U);
    }
    return sum;
}

std::int16_t fixed_point(double value) {
    return static_cast<std::int16_t>(std::lround(value * kQuaternionOne));
}

}  // namespace

Rotation rotation_of(Angles const& angles) {
    Rotation const yaw = turn_around(0, 0, angles.yaw * kDegree);
    Rotation const pitch = turn_around(0, angles.pitch * kDegree, 0);
    Rotation const roll = turn_around(angles.roll * kDegree, 0, 0);
    return product(product(yaw, pitch), roll);
}

Angles angles_of(Rotation const& r) {
    YawPitchRoll const angles = yaw_pitch_roll(r.w, r.x, r.y, r.z);
    return {angles.yaw / kDegree, angles.pitch / kDegree, angles.roll / kDegree};
}

Rotation rotation_of(hal::quaternion_s16_t const& sample) {
    return {sample.w / kQuaternionOne, sample.x / kQuaternionOne, sample.y / kQuaternionOne, sample.z / kQuaternionOne};
}

double angle_between(Rotation const& one, Rotation const& other) {
    Rotation const way = product(inverse(one), other);
    return 2 * std::atan2(std::hypot(way.x, way.y, way.z), std::fabs(way.w)) / kDegree;
}

double tilt_between(Rotation const& one, Rotation const& other) {
    Vertical const a = vertical_of(one);
    Vertical const b = vertical_of(other);
    double const cosine = a.x * b.x + a.y * b.y + a.z * b.z;
    return std::acos(std::clamp(cosine, -1.0, 1.0)) / kDegree;
}

Edge lower_edge(Rotation const& rotation, double flat) {
    Vertical const up = vertical_of(rotation);
    if (std::hypot(up.x, up.y) <= std::sin(flat * kDegree)) {
        return Edge::none;
    }
    if (std::fabs(up.x) > std::fabs(up.y)) {
        return up.x < 0 ? Edge::front : Edge::back;
    }
    return up.y < 0 ? Edge::left : Edge::right;
}

bool Orientation::tilt(Angles const& target, Time now, Duration over) {
    bool const in_range = std::fabs(target.yaw) <= kMostTurn && std::fabs(target.pitch) <= kMostPitch &&
                          std::fabs(target.roll) <= kMostTurn;
    if (in_range) {
        from_ = at(now);
        to_ = rotation_of(target);
        start_ = now;
        over_ = over;
    }
    return in_range;
}

Rotation Orientation::at(Time now) const {
    if (now >= start_ + over_) {
        return to_;
    }
    if (now <= start_) {
        return from_;
    }
    double const passed = static_cast<double>((now - start_).count());
    return between(from_, to_, passed / static_cast<double>(over_.count()));
}

bool Orientation::set_noise(double degrees) {
    bool const in_range = degrees >= 0 && degrees <= kMostNoise;
    if (in_range) {
        noise_ = degrees;
    }
    return in_range;
}

bool Orientation::set_drift(double degrees_a_minute) {
    bool const in_range = degrees_a_minute >= 0 && degrees_a_minute <= kMostDrift;
    if (in_range) {
        drift_ = degrees_a_minute;
    }
    return in_range;
}

hal::quaternion_s16_t Orientation::measure(Time now, Duration integrated) const {
    double const deviation = noise_ * kDegree;
    std::uint64_t random = seed_;
    random = next_random(random) ^ static_cast<std::uint64_t>(now.count());
    double const x = deviation * next_normal(random);
    double const y = deviation * next_normal(random);
    double const z = deviation * next_normal(random);
    double const minutes = std::chrono::duration<double, std::ratio<60>>(integrated).count();
    Rotation const heading = turn_around(0, 0, drift_ * kDegree * minutes);
    Rotation const measured = product(heading, product(at(now), turn_around(x, y, z)));
    return {fixed_point(measured.x), fixed_point(measured.y), fixed_point(measured.z), fixed_point(measured.w),
            static_cast<std::uint16_t>(std::lround(deviation * kQuaternionOne))};
}

}  // namespace sim
