// The multizone ranging sensor.
#include "hal/tof.h"

#include "sim/library/gate.h"

namespace hal {

using sim::construct;
using sim::destroy;
using sim::Device;
using sim::gate;
using sim::in;
using sim::out;
using sim::Ranging;

struct tof_t::impl : sim::Object {
    using Object::Object;
};

namespace {

// A parameter of the calibration that the sensor accepts becomes the object's.
template <typename Field, typename Value>
int keep(Field& field, Value value, int status) {
    if (status == 0) {
        field = value;
    }
    return status;
}

}  // namespace

tof_t::tof_t(char const* device, int access)
    : number_of_measurements(1),
      calibration_reflectance_percent(Ranging::Calibration().reflectance_percent),
      calibration_nb_samples(Ranging::Calibration().samples),
      calibration_distance(Ranging::Calibration().distance_mm),
      impl_(new impl({device})) {
    construct(*impl_, "tof_t::tof_t", in(device, access));
}

tof_t::~tof_t() {
    destroy(*impl_, "tof_t::~tof_t");
    delete impl_;
}

int tof_t::get_resolution(Resolution& resolution) {
    return gate(impl_, "tof_t::get_resolution", out(resolution), [](Device& d, auto& a) {
        a = d.ranging.resolution();
        return 0;
    });
}

int tof_t::set_resolution(Resolution resolution) {
    return gate(impl_, "tof_t::set_resolution", in(resolution),
                [&](Device& d) { return d.ranging.set_resolution(resolution); });
}

int tof_t::get_frequency(unsigned char& frequency_hz) {
    return gate(impl_, "tof_t::get_frequency", out(frequency_hz), [](Device& d, auto& a) {
        a = d.ranging.frequency();
        return 0;
    });
}

int tof_t::set_frequency(unsigned char frequency_hz) {
    return gate(impl_, "tof_t::set_frequency", in(frequency_hz),
                [&](Device& d) { return d.ranging.set_frequency(frequency_hz); });
}

int tof_t::get_ranging_mode(RangingMode& mode) {
    return gate(impl_, "tof_t::get_ranging_mode", out(mode), [](Device& d, auto& a) {
        a = d.ranging.ranging_mode();
        return 0;
    });
}

int tof_t::set_ranging_mode(RangingMode mode) {
    return gate(impl_, "tof_t::set_ranging_mode", in(mode),
                [&](Device& d) { return d.ranging.set_ranging_mode(mode); });
}

int tof_t::get_integration_time(unsigned int& time_ms) {
    return gate(impl_, "tof_t::get_integration_time", out(time_ms), [](Device& d, auto& a) {
        a = d.ranging.integration_time();
        return 0;
    });
}

int tof_t::set_integration_time(unsigned int time_ms) {
    return gate(impl_, "tof_t::set_integration_time", in(time_ms),
                [&](Device& d) { return d.ranging.set_integration_time(time_ms); });
}

int tof_t::get_power_mode(PowerMode& mode) {
    return gate(impl_, "tof_t::get_power_mode", out(mode), [](Device& d, auto& a) {
        a = d.ranging.power_mode();
        return 0;
    });
}

int tof_t::set_power_mode(PowerMode mode) {
    return gate(impl_, "tof_t::set_power_mode", in(mode), [&](Device& d) { return d.ranging.set_power_mode(mode); });
}

int tof_t::set_calibration_reflectance_percent(unsigned short percent) {
    return gate(impl_, "tof_t::set_calibration_reflectance_percent", in(percent), [&](Device&) {
        return keep(calibration_reflectance_percent, percent, Ranging::check_reflectance(percent));
    });
}

int tof_t::set_calibration_nb_samples(unsigned char samples) {
    return gate(impl_, "tof_t::set_calibration_nb_samples", in(samples),
                [&](Device&) { return keep(calibration_nb_samples, samples, Ranging::check_samples(samples)); });
}

int tof_t::set_calibration_distance(unsigned short distance_mm) {
    return gate(impl_, "tof_t::set_calibration_distance", in(distance_mm),
                [&](Device&) { return keep(calibration_distance, distance_mm, Ranging::check_distance(distance_mm)); });
}

int tof_t::xtalk_calibration() {
    return gate(impl_, "tof_t::xtalk_calibration", [&](Device& d) {
        Ranging::Calibration const calibration{calibration_reflectance_percent, calibration_nb_samples,
                                               calibration_distance};
        d.take_time(d.ranging.calibration_time(calibration));
        return d.ranging.calibrate_crosstalk(calibration);
    });
}

int tof_t::shot(VL53L5CX_ResultsData& results) {
    return gate(impl_, "tof_t::shot", out(results), [&](Device& d, auto& r) {
        d.take_time(d.ranging.shot_time(number_of_measurements));
        return d.ranging.shot(number_of_measurements, r);
    });
}

int tof_t::illumination_module_test() {
    return gate(impl_, "tof_t::illumination_module_test", [](Device& d) {
        d.take_time(d.ranging.module_test_time());
        return d.ranging.test_illumination_module(d.illumination.module.present);
    });
}

}  // namespace hal
