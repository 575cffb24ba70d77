// The angles of a rotation, and the fixed point in which the sensor hub tells it.
#pragma once

namespace sim {

// A component of a quaternion, and the accuracy in radians, is a whole number of these parts.
constexpr double kQuaternionOne = 16384.0;

struct YawPitchRoll {
    double yaw;  // radians, as all three; -pi to pi, the pitch half of that
    double pitch;
    double roll;
};

// Of a unit quaternion. Within a degree of a pitch of 90 degrees, either way, yaw and roll are one turn, which noise
// would divide between them as it likes: there the yaw is all of it, and the roll 0.
YawPitchRoll yaw_pitch_roll(double w, double x, double y, double z);

}  // namespace sim
