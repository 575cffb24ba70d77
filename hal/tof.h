// The multizone time-of-flight ranging sensor.
#pragma once

#include <cstdint>

#include "hal/vl53l5cx.h"

namespace hal {

// Legal values and refusals are the sensor's; a refused value leaves the old one in place.
class tof_t {
public:
    // Codes are typed by number at the console, so any byte may arrive.
    enum class Resolution : unsigned char { zones_4x4 = 16, zones_8x8 = 64 };
    enum class RangingMode : unsigned char { continuous = 1, autonomous = 3 };
    enum class PowerMode : unsigned char { sleep = 0, wakeup = 1 };

    // `access` as for base_t.
    tof_t(char const* device, int access);
    tof_t(tof_t const&) = delete;
    tof_t& operator=(tof_t const&) = delete;
    ~tof_t();

    int get_resolution(Resolution& resolution);
    int set_resolution(Resolution resolution);
    // Ranging frequency in Hz.
    int get_frequency(unsigned char& frequency_hz);
    int set_frequency(unsigned char frequency_hz);
    int get_ranging_mode(RangingMode& mode);
    int set_ranging_mode(RangingMode mode);
    // Milliseconds.
    int get_integration_time(unsigned int& time_ms);
    int set_integration_time(unsigned int time_ms);
    int get_power_mode(PowerMode& mode);
    int set_power_mode(PowerMode mode);

    // These update the public calibration fields.
    int set_calibration_reflectance_percent(unsigned short percent);
    int set_calibration_nb_samples(unsigned char samples);
    int set_calibration_distance(unsigned short distance_mm);
    // Blocks for seconds: about 1 s for 1 sample, 8.5 s for 16.
    int xtalk_calibration();

    // One ranging result. Blocks for one frame.
    int shot(VL53L5CX_ResultsData& results);
    int illumination_module_test();

    std::uint32_t number_of_measurements;
    std::uint16_t calibration_reflectance_percent;
    std::uint8_t calibration_nb_samples;
    std::uint16_t calibration_distance;  // mm

private:
    struct impl;
    impl* impl_;
};

}  // namespace hal
