// The autofocus module: a lens on a motor, a mirror whose resonance the calibration finds, and a DOE.
#pragma once

#include <optional>
#include <string>

#include "hal/autofocus.h"
#include "sim/core/clock.h"

namespace sim {

// Time passes in advance() alone: call it before every other operation.
// Operations that return an int answer 0, or -1 and errno where they refuse; a refusal leaves everything but the
// error flags as it was.
class Autofocus {
public:
    static constexpr unsigned short kHighestStep = 3000;  // the mechanical stop; the other one is step 0
    // The motor keeps a safe way off the stops, which would wear it.
    static constexpr unsigned short kLowestAllowed = 100;
    static constexpr unsigned short kHighestAllowed = 2900;
    // From stop to stop in three seconds: so long that a user sees it on its way.
    static constexpr double kStepsPerSecond = 1000.0;
    // A slow sweep over the mirror's frequencies.
    static constexpr Duration kCalibrationTime = std::chrono::seconds(2);
    // The motor is told to move and does not: longer than it takes to start, shorter than its coils take to overheat.
    static constexpr Duration kStuckAfter = std::chrono::milliseconds(500);

    // What the module is and how well its parts are; set by hand.
    struct Module {
        bool link_up = true;
        bool motor_free = true;
        bool mirror_fitted = true;
        bool mirror_healthy = true;
        bool table_filled = true;
    };

    Module module;

    // The type whose table holds, by its word or its number in the menu, "1" to "3"; EINVAL for a word that is none.
    int set_device_type(std::string const& name);
    // Its word.
    std::string const& device_type() const { return device_type_; }

    void advance(Time now);

    // The motor stops where it is, and all that the module was told and found out is forgotten, but for the table.
    void lose_power();
    // Drives to the lower limit, as the motor does not know where it is.
    void gain_power();

    // By hand. Without the module nothing goes on; it comes back as after power-on.
    void set_present(bool present);
    bool present() const { return present_; }
    // Whether it can be reached at all: ENODEV, EIO. The operations below take that as given.
    int answer();

    int get_position(unsigned short& position) const;
    // Steps, also on the way between two.
    double position() const { return position_; }
    // Returns at once; the motor goes there. EBUSY during reset and calibration, ERANGE beyond the limits.
    int set_position(unsigned int position);
    // The same by hand: where it is refused no error flag tells of it.
    int put_position(unsigned int position);
    // Where the motor goes, in steps.
    unsigned int target() const { return static_cast<unsigned int>(target_); }
    // Maintenance mode takes the limits back to the mechanical stops.
    int get_position_limits(unsigned short& min, unsigned short& max) const;
    // Millimetres by the table of the fitted device type, which none are set beyond; ENODATA where it is empty.
    // Otherwise refused as the steps are.
    int get_position_mm(unsigned short& position) const;
    int set_position_mm(unsigned int position);
    // EINVAL for what set_device_type refuses.
    int get_position_limits_mm(std::string const& device_type, unsigned short& min, unsigned short& max) const;

    // Forgets the errors and the frequency, and drives to the lower limit.
    int reset();
    // Takes kCalibrationTime from now on, during which the mirror swings; finds the frequency or raises a flag.
    int calibrate();
    // Hz; ENODATA until a calibration has found it.
    int get_calibration_frequency(unsigned short& frequency_hz) const;
    std::optional<unsigned short> calibration_frequency() const { return frequency_hz_; }
    hal::af_error errors() const;

    int set_doe_mode(hal::doe_mode_te mode);
    hal::doe_mode_te doe_mode() const { return doe_mode_; }
    void set_doe_force_active(bool active) { doe_forced_ = active; }
    bool doe_forced() const { return doe_forced_; }
    // Enabled it is off while a trigger's exposure lasts; forced it is always on.
    bool doe_active(bool exposing) const;
    // Leaving it drives the motor back between the limits.
    void set_maintenance_mode(bool enabled);
    bool maintenance_mode() const { return maintenance_; }

    // Whether the motor is told to move; one that is stuck is until that has been found.
    bool moving() const { return target_ != position_ || homing_; }
    bool calibrating() const { return calibrated_at_.has_value(); }

private:
    unsigned short lowest() const { return maintenance_ ? 0 : kLowestAllowed; }
    unsigned short highest() const { return maintenance_ ? kHighestStep : kHighestAllowed; }
    int check_position(unsigned int position) const;
    void move(Duration length);
    void find_stuck();
    void finish_calibration();

    bool present_ = true;
    bool powered_ = true;
    std::string device_type_ = "R47XXXX1";
    Time now_{0};
    double position_ = kLowestAllowed;
    double target_ = kLowestAllowed;
    Duration without_motion_{0};  // that it was told to do; other commands meanwhile do not start it anew
    bool homing_ = false;
    std::optional<Time> calibrated_at_;
    std::optional<unsigned short> frequency_hz_;
    hal::af_error raised_{};  // those that stay until the reset
    hal::doe_mode_te doe_mode_ = hal::doe_mode_te::disabled;
    bool doe_forced_ = false;
    bool maintenance_ = false;
};

}  // namespace sim
