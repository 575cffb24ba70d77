// The real-time unit.
#include "hal/rtu.h"

#include "sim/library/base_impl.h"
#include "sim/library/call.h"

namespace hal {

using sim::call;
using sim::in;
using sim::out;
namespace operations = sim::operations;

rtu_t::rtu_t(char const* device, int access) : base_t(new impl) {
    sim::construct<operations::rtu_t::constructor>(*impl_, in(device, access));
}

rtu_t::~rtu_t() {
    sim::destroy<operations::rtu_t::destructor>(*impl_);
    delete impl_;
    impl_ = nullptr;
}

int rtu_t::get_status(unsigned char& status) const {
    return call<operations::rtu_t::get_status>(impl_, out(status));
}

int rtu_t::get_revision(revision_t& revision) const {
    return call<operations::rtu_t::get_revision>(impl_, out(revision));
}

int rtu_t::set_imager_type(imx_te type) {
    return call<operations::rtu_t::set_imager_type>(impl_, in(type));
}

int rtu_t::get_imager_type(imx_te& type) {
    return call<operations::rtu_t::get_imager_type>(impl_, out(type));
}

int rtu_t::set_trigger_prohibited_time(unsigned int time_us) {
    return call<operations::rtu_t::set_trigger_prohibited_time>(impl_, in(time_us));
}

int rtu_t::get_trigger_prohibited_time(unsigned int& time_us) {
    return call<operations::rtu_t::get_trigger_prohibited_time>(impl_, out(time_us));
}

int rtu_t::set_exposure_offset(unsigned int offset_us) {
    return call<operations::rtu_t::set_exposure_offset>(impl_, in(offset_us));
}

int rtu_t::get_exposure_offset(unsigned int& offset_us) {
    return call<operations::rtu_t::get_exposure_offset>(impl_, out(offset_us));
}

int rtu_t::set_exposure(unsigned int exposure_us) {
    return call<operations::rtu_t::set_exposure>(impl_, in(exposure_us));
}

int rtu_t::get_exposure(unsigned int& exposure_us) const {
    return call<operations::rtu_t::get_exposure>(impl_, out(exposure_us));
}

int rtu_t::single_shot(bool start) {
    return call<operations::rtu_t::single_shot>(impl_, in(start));
}

int rtu_t::set_trigger_mode(bool continuous) {
    return call<operations::rtu_t::set_trigger_mode>(impl_, in(continuous));
}

int rtu_t::set_aquisition_fps(unsigned int fps) {
    return call<operations::rtu_t::set_aquisition_fps>(impl_, in(fps));
}

int rtu_t::dio_available(bool& available) const {
    return call<operations::rtu_t::dio_available>(impl_, out(available));
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface has it so
int rtu_t::set_io_pin_config(unsigned char pin, dio_pin_config_t config) {
    return call<operations::rtu_t::set_io_pin_config>(impl_, in(pin, config));
}

int rtu_t::get_io_pin_config(unsigned char pin, dio_pin_config_t& config) {
    return call<operations::rtu_t::get_io_pin_config>(impl_, in(pin), out(config));
}

int rtu_t::set_pin_value(unsigned char pin, bool value) {
    return call<operations::rtu_t::set_pin_value>(impl_, in(pin, value));
}

int rtu_t::get_pin_value(unsigned char pin, bool& value) const {
    return call<operations::rtu_t::get_pin_value>(impl_, in(pin), out(value));
}

int rtu_t::get_all_pin_values(std::bitset<6>& values) const {
    return call<operations::rtu_t::get_all_pin_values>(impl_, out(values));
}

int rtu_t::set_lightbar_col(color_t color) {
    return call<operations::rtu_t::set_lightbar_col>(impl_, in(color));
}

int rtu_t::set_device_status(device_state_te state) {
    return call<operations::rtu_t::set_device_status>(impl_, in(state));
}

}  // namespace hal
