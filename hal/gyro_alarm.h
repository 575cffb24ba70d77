// The tilt alarm: watches the orientation sensor and tells when the device leaves its taught position.
#pragma once

#include <functional>

namespace hal {

class gyro_t;

class gyro_alarm_t {
public:
    // Watches virtual sensor `sensor_id` of `gyro`, which must outlive the alarm.
    gyro_alarm_t(gyro_t& gyro, unsigned short sensor_id);
    gyro_alarm_t(gyro_alarm_t const&) = delete;
    gyro_alarm_t& operator=(gyro_alarm_t const&) = delete;
    // Returns only when no action is running, unless it is called from one.
    ~gyro_alarm_t();

    // Angle in degrees beyond which the device counts as out of position. May be called while samples arrive.
    int set_angle_limit(float degrees);
    // Takes the present orientation as the taught position. May be called while samples arrive.
    int teach_current_position();

    // Called from a thread of the library, once for each transition; an empty one is skipped. To be set before
    // the gyro's first irq_callback_hold(false) or while its callbacks are held.
    std::function<void()> on_position_reached;
    std::function<void()> on_position_left;

private:
    struct impl;
    impl* impl_;
};

}  // namespace hal
