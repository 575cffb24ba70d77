// The multizone ranging sensor.
#include "hal/tof.h"

#include "sim/library/call.h"

namespace hal {

using sim::call;
using sim::in;
using sim::out;
namespace operations = sim::operations;

struct tof_t::impl : sim::Object {};

namespace {

// The sensor's own defaults.
constexpr std::uint16_t kReflectancePercent = 3;
constexpr std::uint8_t kSamples = 4;
constexpr std::uint16_t kDistance = 600;  // mm

// A parameter of the calibration that the sensor itself accepts becomes the object's.
template <typename Field, typename Value>
int keep(Field& field, Value value, sim::Outcome<int> const& outcome) {
    if (outcome.done && outcome.result == 0) {
        field = value;
    }
    return outcome.result;
}

}  // namespace

tof_t::tof_t(char const* device, int access)
    : number_of_measurements(1),
      calibration_reflectance_percent(kReflectancePercent),
      calibration_nb_samples(kSamples),
      calibration_distance(kDistance),
      impl_(new impl) {
    sim::construct<operations::tof_t::constructor>(*impl_, in(device, access));
}

tof_t::~tof_t() {
    sim::destroy<operations::tof_t::destructor>(*impl_);
    delete impl_;
}

int tof_t::get_resolution(Resolution& resolution) {
    return call<operations::tof_t::get_resolution>(impl_, out(resolution));
}

int tof_t::set_resolution(Resolution resolution) {
    return call<operations::tof_t::set_resolution>(impl_, in(resolution));
}

int tof_t::get_frequency(unsigned char& frequency_hz) {
    return call<operations::tof_t::get_frequency>(impl_, out(frequency_hz));
}

int tof_t::set_frequency(unsigned char frequency_hz) {
    return call<operations::tof_t::set_frequency>(impl_, in(frequency_hz));
}

int tof_t::get_ranging_mode(RangingMode& mode) {
    return call<operations::tof_t::get_ranging_mode>(impl_, out(mode));
}

int tof_t::set_ranging_mode(RangingMode mode) {
    return call<operations::tof_t::set_ranging_mode>(impl_, in(mode));
}

int tof_t::get_integration_time(unsigned int& time_ms) {
    return call<operations::tof_t::get_integration_time>(impl_, out(time_ms));
}

int tof_t::set_integration_time(unsigned int time_ms) {
    return call<operations::tof_t::set_integration_time>(impl_, in(time_ms));
}

int tof_t::get_power_mode(PowerMode& mode) {
    return call<operations::tof_t::get_power_mode>(impl_, out(mode));
}

int tof_t::set_power_mode(PowerMode mode) {
    return call<operations::tof_t::set_power_mode>(impl_, in(mode));
}

int tof_t::set_calibration_reflectance_percent(unsigned short percent) {
    return keep(calibration_reflectance_percent, percent,
                sim::ask<operations::tof_t::set_calibration_reflectance_percent>(impl_, in(percent)));
}

int tof_t::set_calibration_nb_samples(unsigned char samples) {
    return keep(calibration_nb_samples, samples,
                sim::ask<operations::tof_t::set_calibration_nb_samples>(impl_, in(samples)));
}

int tof_t::set_calibration_distance(unsigned short distance_mm) {
    return keep(calibration_distance, distance_mm,
                sim::ask<operations::tof_t::set_calibration_distance>(impl_, in(distance_mm)));
}

int tof_t::xtalk_calibration() {
    return call<operations::tof_t::xtalk_calibration>(
        impl_, in(sim::Hidden<std::uint16_t>{calibration_reflectance_percent},
                  sim::Hidden<std::uint8_t>{calibration_nb_samples}, sim::Hidden<std::uint16_t>{calibration_distance}));
}

int tof_t::shot(VL53L5CX_ResultsData& results) {
    return call<operations::tof_t::shot>(impl_, in(sim::Hidden<std::uint32_t>{number_of_measurements}), out(results));
}

int tof_t::illumination_module_test() {
    return call<operations::tof_t::illumination_module_test>(impl_);
}

}  // namespace hal
