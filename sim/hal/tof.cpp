// The multizone ranging sensor.
#include "hal/tof.h"

#include "sim/hal/gate.h"

namespace hal {

using sim::construct;
using sim::destroy;
using sim::Device;
using sim::gate;
using sim::in;
using sim::no_model;
using sim::out;

struct tof_t::impl : sim::Object {
    using Object::Object;
};

tof_t::tof_t(char const* device, int access)
    : number_of_measurements(0),
      calibration_reflectance_percent(3),
      calibration_nb_samples(4),
      calibration_distance(600),
      impl_(new impl({device})) {
    construct(*impl_, "tof_t::tof_t", in(device, access));
}

tof_t::~tof_t() {
    destroy(*impl_, "tof_t::~tof_t");
    delete impl_;
}

int tof_t::get_resolution(Resolution& resolution) {
    return gate(impl_, "tof_t::get_resolution", out(resolution), [](Device&, auto&) { return no_model(); });
}

int tof_t::set_resolution(Resolution resolution) {
    return gate(impl_, "tof_t::set_resolution", in(resolution), [](Device&) { return no_model(); });
}

int tof_t::get_frequency(unsigned char& frequency_hz) {
    return gate(impl_, "tof_t::get_frequency", out(frequency_hz), [](Device&, auto&) { return no_model(); });
}

int tof_t::set_frequency(unsigned char frequency_hz) {
    return gate(impl_, "tof_t::set_frequency", in(frequency_hz), [](Device&) { return no_model(); });
}

int tof_t::get_ranging_mode(RangingMode& mode) {
    return gate(impl_, "tof_t::get_ranging_mode", out(mode), [](Device&, auto&) { return no_model(); });
}

int tof_t::set_ranging_mode(RangingMode mode) {
    return gate(impl_, "tof_t::set_ranging_mode", in(mode), [](Device&) { return no_model(); });
}

int tof_t::get_integration_time(unsigned int& time_ms) {
    return gate(impl_, "tof_t::get_integration_time", out(time_ms), [](Device&, auto&) { return no_model(); });
}

int tof_t::set_integration_time(unsigned int time_ms) {
    return gate(impl_, "tof_t::set_integration_time", in(time_ms), [](Device&) { return no_model(); });
}

int tof_t::get_power_mode(PowerMode& mode) {
    return gate(impl_, "tof_t::get_power_mode", out(mode), [](Device&, auto&) { return no_model(); });
}

int tof_t::set_power_mode(PowerMode mode) {
    return gate(impl_, "tof_t::set_power_mode", in(mode), [](Device&) { return no_model(); });
}

int tof_t::set_calibration_reflectance_percent(unsigned short percent) {
    return gate(impl_, "tof_t::set_calibration_reflectance_percent", in(percent), [](Device&) { return no_model(); });
}

int tof_t::set_calibration_nb_samples(unsigned char samples) {
    return gate(impl_, "tof_t::set_calibration_nb_samples", in(samples), [](Device&) { return no_model(); });
}

int tof_t::set_calibration_distance(unsigned short distance_mm) {
    return gate(impl_, "tof_t::set_calibration_distance", in(distance_mm), [](Device&) { return no_model(); });
}

int tof_t::xtalk_calibration() {
    return gate(impl_, "tof_t::xtalk_calibration", [](Device&) { return no_model(); });
}

int tof_t::shot(VL53L5CX_ResultsData& results) {
    return gate(impl_, "tof_t::shot", out(results), [](Device&, auto&) { return no_model(); });
}

int tof_t::illumination_module_test() {
    return gate(impl_, "tof_t::illumination_module_test", [](Device&) { return no_model(); });
}

}  // namespace hal
