// Reads the samples of the sensor hub that carry an orientation.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "hal/quaternion.h"

// Yaw, pitch and roll in degrees.
using orientation_angles = std::array<float, 3>;

// The angles of a sample of the orientation sensors 37 and 38; nothing for any other. From any thread.
std::optional<orientation_angles> read_orientation(std::uint8_t sensor_id, hal::cb_struct_te kind, void const* data);
