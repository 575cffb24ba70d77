// The multizone ranging sensor.
#include <algorithm>

#include "sim/models/refusal.h"
#include "sim/service/handlers.h"

namespace sim {

namespace {

using AnyTarget = CallTarget<ServedObject>;

// So often the library asks the sensor whether it is done.
constexpr Duration kAskedEvery = std::chrono::milliseconds(100);

// Lets the time of a measurement pass; it ends, refused, when the sensor, or its power, is found to have gone.
int pass(AnyTarget& t, Duration length) {
    Time const end = t.now() + length;
    Time next = t.now();
    int gone = 0;
    do {
        next = std::min(next + kAskedEvery, end);
        gone = t.take_time(std::max(next - t.now(), Duration(0)));
    } while (gone == 0 && next < end && t.now() >= next);  // a device that is stopped lets no time pass
    return gone == 0 ? 0 : refuse(gone);
}

}  // namespace

int handlers::tof_t::constructor(AnyTarget& t, Text const& device, int) {
    return t.construct<ServedObject>(std::vector<Text>{device});
}

int handlers::tof_t::destructor(AnyTarget&) {
    return 0;
}

int handlers::tof_t::get_resolution(AnyTarget& t, hal::tof_t::Resolution& a) {
    a = t->ranging.resolution();
    return 0;
}

int handlers::tof_t::set_resolution(AnyTarget& t, hal::tof_t::Resolution resolution) {
    return t->ranging.set_resolution(resolution);
}

int handlers::tof_t::get_frequency(AnyTarget& t, unsigned char& a) {
    a = t->ranging.frequency();
    return 0;
}

int handlers::tof_t::set_frequency(AnyTarget& t, unsigned char frequency_hz) {
    return t->ranging.set_frequency(frequency_hz);
}

int handlers::tof_t::get_ranging_mode(AnyTarget& t, hal::tof_t::RangingMode& a) {
    a = t->ranging.ranging_mode();
    return 0;
}

int handlers::tof_t::set_ranging_mode(AnyTarget& t, hal::tof_t::RangingMode mode) {
    return t->ranging.set_ranging_mode(mode);
}

int handlers::tof_t::get_integration_time(AnyTarget& t, unsigned int& a) {
    a = t->ranging.integration_time();
    return 0;
}

int handlers::tof_t::set_integration_time(AnyTarget& t, unsigned int time_ms) {
    return t->ranging.set_integration_time(time_ms);
}

int handlers::tof_t::get_power_mode(AnyTarget& t, hal::tof_t::PowerMode& a) {
    a = t->ranging.power_mode();
    return 0;
}

int handlers::tof_t::set_power_mode(AnyTarget& t, hal::tof_t::PowerMode mode) {
    return t->ranging.set_power_mode(mode);
}

// The parameters of the calibration are the object's own, in the program; the sensor only says whether it takes them.
int handlers::tof_t::set_calibration_reflectance_percent(AnyTarget&, unsigned short percent) {
    return Ranging::check_reflectance(percent);
}

int handlers::tof_t::set_calibration_nb_samples(AnyTarget&, unsigned char samples) {
    return Ranging::check_samples(samples);
}

int handlers::tof_t::set_calibration_distance(AnyTarget&, unsigned short distance_mm) {
    return Ranging::check_distance(distance_mm);
}

int handlers::tof_t::xtalk_calibration(AnyTarget& t, Hidden<std::uint16_t> const& reflectance_percent,
                                       Hidden<std::uint8_t> const& samples, Hidden<std::uint16_t> const& distance_mm) {
    Ranging::Calibration const calibration{reflectance_percent.value, samples.value, distance_mm.value};
    int const status = pass(t, t->ranging.calibration_time(calibration));
    return status == 0 ? t->ranging.calibrate_crosstalk(calibration) : status;
}

int handlers::tof_t::shot(AnyTarget& t, Hidden<std::uint32_t> const& measurements, VL53L5CX_ResultsData& results) {
    int const status = pass(t, t->ranging.shot_time(measurements.value));
    return status == 0 ? t->ranging.shot(measurements.value, results) : status;
}

int handlers::tof_t::illumination_module_test(AnyTarget& t) {
    int const status = pass(t, t->ranging.module_test_time());
    return status == 0 ? t->ranging.test_illumination_module(t->illumination.present()) : status;
}

}  // namespace sim
