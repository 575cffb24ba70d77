// The sensor hub's orientation samples.
#pragma once

#include <cstdint>

namespace hal {

// What the data of a sensor callback points to.
enum class cb_struct_te : int { none = 0, quaternion_s16 = 1 };

// As the hub delivers it: x, y, z, w scaled by 1/16384.
struct quaternion_s16_t {
    std::int16_t x;
    std::int16_t y;
    std::int16_t z;
    std::int16_t w;
    std::uint16_t accuracy;
};
static_assert(sizeof(quaternion_s16_t) == 10);

struct quaternion_float_t {
    float x;
    float y;
    float z;
    float w;
    float accuracy;

    // Takes the fixed-point sample over as floats.
    quaternion_float_t& operator=(quaternion_s16_t const& sample);
};
static_assert(sizeof(quaternion_float_t) == 20);

}  // namespace hal
