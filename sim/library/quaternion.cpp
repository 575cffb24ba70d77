// Orientation samples as floats and as angles. Pure arithmetic, called for each sample: not through the gate.
#include "hal/quaternion.h"

#include <algorithm>
#include <cmath>

#include "hal/gyro.h"

namespace hal {

namespace {

constexpr float kFixedPointOne = 16384.0F;
constexpr double kDegreesPerRadian = 180.0 / 3.14159265358979323846;

}  // namespace

quaternion_float_t& quaternion_float_t::operator=(quaternion_s16_t const& sample) {
    x = static_cast<float>(sample.x) / kFixedPointOne;
    y = static_cast<float>(sample.y) / kFixedPointOne;
    z = static_cast<float>(sample.z) / kFixedPointOne;
    w = static_cast<float>(sample.w) / kFixedPointOne;
    accuracy = static_cast<float>(sample.accuracy);
    return *this;
}

int gyro_t::quaternion_2_yaw_pitch_roll(quaternion_float_t const& quaternion, float* ypr, bool degrees) {
    double const x = static_cast<double>(quaternion.x);
    double const y = static_cast<double>(quaternion.y);
    double const z = static_cast<double>(quaternion.z);
    double const w = static_cast<double>(quaternion.w);
    double const yaw = std::atan2(2 * (w * z + x * y), 1 - 2 * (y * y + z * z));
    double const pitch = std::asin(std::clamp(2 * (w * y - z * x), -1.0, 1.0));
    double const roll = std::atan2(2 * (w * x + y * z), 1 - 2 * (x * x + y * y));
    double const unit = degrees ? kDegreesPerRadian : 1.0;
    ypr[0] = static_cast<float>(yaw * unit);
    ypr[1] = static_cast<float>(pitch * unit);
    ypr[2] = static_cast<float>(roll * unit);
    return 0;
}

}  // namespace hal
