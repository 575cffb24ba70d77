// The second library: the ranging sensor.
#include <array>
#include <cstring>

#include "hal/tof.h"
#include "tests/second_library/second_library.h"

namespace second_library {

// A few bytes, over and over: the answers would be used up by one record.
template <>
VL53L5CX_ResultsData taken() {
    auto const pattern = taken<std::array<unsigned char, 7>>();
    std::array<unsigned char, sizeof(VL53L5CX_ResultsData)> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = pattern[i % pattern.size()];
    }
    VL53L5CX_ResultsData results;
    std::memcpy(&results, bytes.data(), sizeof results);
    return results;
}

}  // namespace second_library

namespace hal {

using second_library::answer;
using second_library::born;
using second_library::dies;
using second_library::taken;

tof_t::tof_t(char const*, int)
    : number_of_measurements(taken<std::uint32_t>()),
      calibration_reflectance_percent(taken<std::uint16_t>()),
      calibration_nb_samples(taken<std::uint8_t>()),
      calibration_distance(taken<std::uint16_t>()),
      impl_(nullptr) {
    born(this);
}

tof_t::~tof_t() {
    dies(this);
}

int tof_t::set_calibration_reflectance_percent(unsigned short) {
    return answer(this, calibration_reflectance_percent);
}

int tof_t::set_calibration_nb_samples(unsigned char) {
    return answer(this, calibration_nb_samples);
}

int tof_t::set_calibration_distance(unsigned short) {
    return answer(this, calibration_distance);
}

int tof_t::get_resolution(Resolution& resolution) {
    return answer(this, resolution);
}

int tof_t::set_resolution(Resolution) {
    return answer(this);
}

int tof_t::get_frequency(unsigned char& frequency_hz) {
    return answer(this, frequency_hz);
}

int tof_t::set_frequency(unsigned char) {
    return answer(this);
}

int tof_t::get_ranging_mode(RangingMode& mode) {
    return answer(this, mode);
}

int tof_t::set_ranging_mode(RangingMode) {
    return answer(this);
}

int tof_t::get_integration_time(unsigned int& time_ms) {
    return answer(this, time_ms);
}

int tof_t::set_integration_time(unsigned int) {
    return answer(this);
}

int tof_t::get_power_mode(PowerMode& mode) {
    return answer(this, mode);
}

int tof_t::set_power_mode(PowerMode) {
    return answer(this);
}

int tof_t::xtalk_calibration() {
    return answer(this);
}

int tof_t::shot(VL53L5CX_ResultsData& results) {
    return answer(this, results);
}

int tof_t::illumination_module_test() {
    return answer(this);
}

}  // namespace hal
