// The autofocus module: a lens on a motor, a mirror whose resonance the calibration finds, and a DOE.
#pragma once

#include <optional>
#include <string>

#include "hal/autofocus.h"
#include "sim/core/clock.h"
#include "sim/device/properties.h"

namespace sim {

// Time passes in advance() alone: call it before every other operation.
// Operations that return an int answer 0, or -1 and errno where they refuse; a refusal leaves everything but the
// error flags as it was.
class Autofocus {
public:
    static constexpr unsigned short kHighestStep = 3000;  // the mechanical stop; the other one is step 0
    static constexpr unsigned short kLowestAllowed = 100;
    static constexpr unsigned short kHighestAllowed = 2900;
    static constexpr double kStepsPerSecond = 1000.0;
    static constexpr Duration kCalibrationTime = std::chrono::seconds(2);
    static constexpr Duration kStuckAfter = std::chrono::milliseconds(500);  // of no motion

    // What the module is and how well its parts are; set by hand.
    struct Module {
        bool present = true;
        std::string device_type = "R47XXXX1";
        bool link_up = true;
        bool motor_free = true;
        bool mirror_fitted = true;
        bool mirror_healthy = true;
        bool table_filled = true;
    };

    Module module;

    void advance(Time now);

    // Whether it can be reached at all: ENODEV, EIO. The operations below take that as given.
    int answer();

    int get_position(unsigned short& position) const;
    // Returns at once; the motor goes there. EBUSY during reset and calibration, ERANGE beyond the limits.
    int set_position(unsigned int position);
    // Maintenance mode takes the limits back to the mechanical stops.
    int get_position_limits(unsigned short& min, unsigned short& max) const;
    // Millimetres by the table of the fitted device type, which none are set beyond; ENODATA where it is empty.
    int get_position_mm(unsigned short& position) const;
    int set_position_mm(unsigned int position);
    // EINVAL for a word that is no device type.
    int get_position_limits_mm(std::string const& device_type, unsigned short& min, unsigned short& max) const;

    // Forgets the errors and the frequency, and drives to the lower limit.
    int reset();
    // Takes kCalibrationTime from now on, during which the mirror swings; finds the frequency or raises a flag.
    int calibrate();
    // Hz; ENODATA until a calibration has found it.
    int get_calibration_frequency(unsigned short& frequency_hz) const;
    hal::af_error errors() const;

    int set_doe_mode(hal::doe_mode_te mode);
    void set_doe_force_active(bool active) { doe_forced_ = active; }
    // Enabled it is off while a trigger's exposure lasts; forced it is always on.
    bool doe_active(bool exposing) const;
    // Leaving it drives the motor back between the limits.
    void set_maintenance_mode(bool enabled);

    bool moving() const { return target_ != position_; }
    bool calibrating() const { return calibrated_at_.has_value(); }

    void describe(Properties& properties);

private:
    void move(Duration length);
    void finish_calibration();
    void go_to(double target);

    Time now_{0};
    double position_ = kLowestAllowed;
    double target_ = kLowestAllowed;
    Duration without_motion_{0};
    bool homing_ = false;
    std::optional<Time> calibrated_at_;
    std::optional<unsigned short> frequency_hz_;
    hal::af_error raised_{};  // those that stay until the reset
    hal::doe_mode_te doe_mode_ = hal::doe_mode_te::disabled;
    bool doe_forced_ = false;
    bool maintenance_ = false;
};

}  // namespace sim
