// Orientation samples as floats and as angles. Pure arithmetic, called for each sample: not through the gate.
#include "hal/quaternion.h"

#include "hal/gyro.h"
#include "sim/core/yaw_pitch_roll.h"

namespace hal {

namespace {

constexpr double kDegreesPerRadian = 180.0 / 3.14159265358979323846;

float from_fixed_point(int value) {
    return static_cast<float>(value / sim::kQuaternionOne);
}

}  // namespace

quaternion_float_t& quaternion_float_t::operator=(quaternion_s16_t const& sample) {
    x = from_fixed_point(sample.x);
    y = from_fixed_point(sample.y);
    z = from_fixed_point(sample.z);
    w = from_fixed_point(sample.w);
    accuracy = from_fixed_point(sample.accuracy);
    return *this;
}

int gyro_t::quaternion_2_yaw_pitch_roll(quaternion_float_t const& quaternion, float* ypr, bool degrees) {
    sim::YawPitchRoll const angles =
        sim::yaw_pitch_roll(static_cast<double>(quaternion.w), static_cast<double>(quaternion.x),
                            static_cast<double>(quaternion.y), static_cast<double>(quaternion.z));
    double const unit = degrees ? kDegreesPerRadian : 1.0;
    ypr[0] = static_cast<float>(angles.yaw * unit);
    ypr[1] = static_cast<float>(angles.pitch * unit);
    ypr[2] = static_cast<float>(angles.roll * unit);
    return 0;
}

}  // namespace hal
