// The autofocus module: a lens driven by a motor and a mirror, its calibration and its DOE.
#pragma once

#include <cstddef>
#include <string>

#include "hal/base.h"

namespace hal {

// Mode of the diffractive optical element. Codes are typed by number, so any int may arrive.
enum class doe_mode_te : int { disabled = 0, off_by_trigger = 1 };

// Flags: any byte but 0 is true.
struct af_error {
    unsigned char reserved;
    unsigned char no_valid_frequency;
    unsigned char initialization_error;
    unsigned char motor_stuck;
    unsigned char target_unreachable;
    unsigned char mirror_failure;
    unsigned char no_mirror;
    unsigned char communication_error;
    unsigned char empty_calibration_table;
};
static_assert(sizeof(af_error) == 9);
static_assert(offsetof(af_error, no_valid_frequency) == 1);
static_assert(offsetof(af_error, initialization_error) == 2);
static_assert(offsetof(af_error, motor_stuck) == 3);
static_assert(offsetof(af_error, target_unreachable) == 4);
static_assert(offsetof(af_error, mirror_failure) == 5);
static_assert(offsetof(af_error, no_mirror) == 6);
static_assert(offsetof(af_error, communication_error) == 7);
static_assert(offsetof(af_error, empty_calibration_table) == 8);

class autofocus_t : public base_t {
public:
    autofocus_t(char const* device, int access) : base_t(device, access), present_(set_present()) {}
    ~autofocus_t() override = default;

    int get_status(unsigned char& status) const override;
    int get_revision(revision_t& revision) const override;

    // Asks the module whether it is there. Construction keeps the answer as the presence flag.
    bool set_present();
    // The presence flag. Cannot fail.
    bool is_present() const;

    // Motor steps.
    int get_position(unsigned short& position) const;
    int set_position(unsigned int position) const;
    int get_position_limits(unsigned short& min, unsigned short& max) const;

    // Distance of the focus in the module's millimetre unit; its limits depend on the device type,
    // a word such as "R47XXXX1".
    int get_position_mm(unsigned short& position) const;
    int set_position_mm(unsigned int position) const;
    int get_position_limits_mm(std::string const& device_type, unsigned short& min, unsigned short& max) const;

    int reset();
    // Starts the calibration and returns at once.
    int calibrate();
    // Frequency that the calibration found, in hertz.
    int get_calibration_frequency(unsigned short& frequency_hz) const;
    int read_error(af_error& error) const;

    int set_doe_mode(doe_mode_te mode);
    // True keeps the DOE active whatever its mode.
    int set_doe_force_active(bool active);
    int set_maintenance_mode(bool enabled) const;

private:
    bool present_;
};

}  // namespace hal
