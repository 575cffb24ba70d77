// The angles of a rotation, and the fixed point in which the sensor hub tells it.
#include "sim/core/yaw_pitch_roll.h"

#include <cmath>

namespace sim {

namespace {

constexpr double kFullTurn = 2 * 3.14159265358979323846;

// Sine of the pitch, at 89.2 degrees: beyond it the default noise of a sample (0.02 degrees) would turn yaw and roll by
// more than 1.4 degrees.
constexpr double kUpright = 0.9999;

}  // namespace

// Upright, only the difference of yaw and roll remains (head down, their sum). Sums of the components tell it, and the
// pitch, where the sine has become flat.
YawPitchRoll yaw_pitch_roll(double w, double x, double y, double z) {
    double const sine = 2 * (w * y - z * x);
    if (std::fabs(sine) > kUpright) {
        double const half_turn = sine > 0 ? std::atan2(z - x, w + y) : std::atan2(z + x, w - y);
        double const pitch = 2 * std::atan2(std::hypot(w + y, z - x), std::hypot(w - y, z + x)) - kFullTurn / 4;
        return {std::remainder(2 * half_turn, kFullTurn), pitch, 0};
    }
    return {std::atan2(2 * (w * z + x * y), 1 - 2 * (y * y + z * z)), std::asin(sine),
            std::atan2(2 * (w * x + y * z), 1 - 2 * (x * x + y * y))};
}

}  // namespace sim
