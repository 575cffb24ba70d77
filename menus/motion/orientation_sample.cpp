// Reads the samples of the sensor hub that carry an orientation.
#include "menus/motion/orientation_sample.h"

#include "hal/gyro.h"

std::optional<orientation_angles> read_orientation(std::uint8_t sensor_id, hal::cb_struct_te kind, void const* data) {
    if (data == nullptr || kind != hal::cb_struct_te::quaternion_s16 || (sensor_id != 37 && sensor_id != 38)) {
        return std::nullopt;
    }
    hal::quaternion_float_t quaternion{};
    quaternion = *static_cast<hal::quaternion_s16_t const*>(data);
    float angles[3] = {};
    hal::gyro_t::quaternion_2_yaw_pitch_roll(quaternion, angles, true);
    return orientation_angles{angles[0], angles[1], angles[2]};
}
