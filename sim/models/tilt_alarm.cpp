// One tilt alarm: whether the device lies in the taught position.
#include "sim/models/tilt_alarm.h"

namespace sim {

std::optional<TiltAlarm::Transition> TiltAlarm::judge(Rotation const& sample) {
    bool const in_position = angle_between(taught_, sample) <= static_cast<double>(angle_limit_);
    if (in_position == in_position_) {
        return std::nullopt;
    }
    in_position_ = in_position;
    return in_position ? Transition::reached : Transition::left;
}

bool TiltAlarm::set_angle_limit(float degrees) {
    bool const valid = degrees >= 0.0F && degrees <= 180.0F;
    if (valid) {
        angle_limit_ = degrees;
    }
    return valid;
}

}  // namespace sim
