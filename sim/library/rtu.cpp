// The real-time unit.
#include "hal/rtu.h"

#include "sim/library/base_impl.h"
#include "sim/library/gate.h"

namespace hal {

using sim::construct;
using sim::destroy;
using sim::Device;
using sim::gate;
using sim::in;
using sim::Module;
using sim::out;

namespace {

// The unit as it is now.
sim::RealTimeUnit& unit(Device& device) {
    device.advance_imaging();
    return device.rtu;
}

}  // namespace

rtu_t::rtu_t(char const* device, int access) : base_t(device, access) {
    construct(*impl_, "rtu_t::rtu_t", in(device, access));
}

rtu_t::~rtu_t() {
    destroy(*impl_, "rtu_t::~rtu_t");
}

int rtu_t::get_status(unsigned char& status) const {
    return gate(impl_, "rtu_t::get_status", out(status),
                [](Device& d, auto& s) { return d.modules.get_status(Module::rtu, s); });
}

int rtu_t::get_revision(revision_t& revision) const {
    return gate(impl_, "rtu_t::get_revision", out(revision),
                [](Device& d, auto& r) { return d.modules.get_revision(Module::rtu, r); });
}

int rtu_t::set_imager_type(imx_te type) {
    return gate(impl_, "rtu_t::set_imager_type", in(type), [&](Device& d) { return unit(d).set_imager_type(type); });
}

int rtu_t::get_imager_type(imx_te& type) {
    return gate(impl_, "rtu_t::get_imager_type", out(type),
                [](Device& d, auto& t) { return unit(d).get_imager_type(t); });
}

int rtu_t::set_trigger_prohibited_time(unsigned int time_us) {
    return gate(impl_, "rtu_t::set_trigger_prohibited_time", in(time_us),
                [&](Device& d) { return unit(d).set_prohibited_time(time_us); });
}

int rtu_t::get_trigger_prohibited_time(unsigned int& time_us) {
    return gate(impl_, "rtu_t::get_trigger_prohibited_time", out(time_us),
                [](Device& d, auto& us) { return unit(d).get_prohibited_time(us); });
}

int rtu_t::set_exposure_offset(unsigned int offset_us) {
    return gate(impl_, "rtu_t::set_exposure_offset", in(offset_us),
                [&](Device& d) { return unit(d).set_exposure_offset(offset_us); });
}

int rtu_t::get_exposure_offset(unsigned int& offset_us) {
    return gate(impl_, "rtu_t::get_exposure_offset", out(offset_us),
                [](Device& d, auto& us) { return unit(d).get_exposure_offset(us); });
}

int rtu_t::set_exposure(unsigned int exposure_us) {
    return gate(impl_, "rtu_t::set_exposure", in(exposure_us),
                [&](Device& d) { return unit(d).set_exposure(exposure_us); });
}

int rtu_t::get_exposure(unsigned int& exposure_us) const {
    return gate(impl_, "rtu_t::get_exposure", out(exposure_us),
                [](Device& d, auto& us) { return unit(d).get_exposure(us); });
}

int rtu_t::single_shot(bool start) {
    return gate(impl_, "rtu_t::single_shot", in(start), [&](Device& d) { return unit(d).single_shot(start); });
}

int rtu_t::set_trigger_mode(bool continuous) {
    return gate(impl_, "rtu_t::set_trigger_mode", in(continuous),
                [&](Device& d) { return unit(d).set_continuous(continuous); });
}

int rtu_t::set_aquisition_fps(unsigned int fps) {
    return gate(impl_, "rtu_t::set_aquisition_fps", in(fps), [&](Device& d) { return unit(d).set_rate(fps); });
}

int rtu_t::dio_available(bool& available) const {
    return gate(impl_, "rtu_t::dio_available", out(available),
                [](Device& d, auto& a) { return unit(d).dio_available(a); });
}

int rtu_t::set_io_pin_config(unsigned char pin, dio_pin_config_t config) {
    return gate(impl_, "rtu_t::set_io_pin_config", in(pin, config),
                [&](Device& d) { return unit(d).set_pin_config(pin, config); });
}

int rtu_t::get_io_pin_config(unsigned char pin, dio_pin_config_t& config) {
    return gate(impl_, "rtu_t::get_io_pin_config", in(pin), out(config),
                [&](Device& d, auto& c) { return unit(d).get_pin_config(pin, c); });
}

int rtu_t::set_pin_value(unsigned char pin, bool value) {
    return gate(impl_, "rtu_t::set_pin_value", in(pin, value),
                [&](Device& d) { return unit(d).set_pin_value(pin, value); });
}

int rtu_t::get_pin_value(unsigned char pin, bool& value) const {
    return gate(impl_, "rtu_t::get_pin_value", in(pin), out(value),
                [&](Device& d, auto& v) { return unit(d).get_pin_value(pin, v); });
}

int rtu_t::get_all_pin_values(std::bitset<6>& values) const {
    return gate(impl_, "rtu_t::get_all_pin_values", out(values),
                [](Device& d, auto& v) { return unit(d).get_pin_values(v); });
}

int rtu_t::set_lightbar_col(color_t color) {
    return gate(impl_, "rtu_t::set_lightbar_col", in(color), [&](Device& d) { return unit(d).set_light_bar(color); });
}

int rtu_t::set_device_status(device_state_te state) {
    return gate(impl_, "rtu_t::set_device_status", in(state), [&](Device& d) { return d.system.set_state(state); });
}

}  // namespace hal
