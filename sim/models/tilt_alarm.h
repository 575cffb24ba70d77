// One tilt alarm: whether the device lies in the taught position.
#pragma once

#include <optional>

#include "sim/models/orientation.h"

namespace sim {

class TiltAlarm {
public:
    enum class Transition { reached, left };

    // The transition that a sample makes, if any. Without hysteresis; in position at first.
    std::optional<Transition> judge(Rotation const& sample);

    // Degrees, 0-180; false, and the old limit stays, for any other.
    bool set_angle_limit(float degrees);
    float angle_limit() const { return angle_limit_; }
    // The taught position; level at first.
    void teach(Rotation const& position) { taught_ = position; }
    bool in_position() const { return in_position_; }

private:
    Rotation taught_;
    float angle_limit_ = 5.0F;  // degrees, ours: far above the noise, yet no more than the eye sees
    bool in_position_ = true;
};

}  // namespace sim
