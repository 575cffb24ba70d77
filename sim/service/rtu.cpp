// The real-time unit, and the second door to it.
#include "sim/service/handlers.h"

namespace sim {

namespace {

using AnyTarget = CallTarget<ServedObject>;

}  // namespace

int handlers::rtu_t::constructor(AnyTarget& t, Text const& device, int) {
    return t.construct<ServedObject>(std::vector<Text>{device});
}

int handlers::rtu_t::destructor(AnyTarget&) {
    return 0;
}

int handlers::rtu_t::get_status(AnyTarget& t, unsigned char& s) {
    return t->modules.get_status(Module::rtu, s);
}

int handlers::rtu_t::get_revision(AnyTarget& t, hal::revision_t& r) {
    return t->modules.get_revision(Module::rtu, r);
}

int handlers::rtu_t::set_imager_type(AnyTarget& t, hal::imx_te type) {
    return t->rtu.set_imager_type(type);
}

int handlers::rtu_t::get_imager_type(AnyTarget& t, hal::imx_te& type) {
    return t->rtu.get_imager_type(type);
}

int handlers::rtu_t::set_trigger_prohibited_time(AnyTarget& t, unsigned int time_us) {
    return t->rtu.set_prohibited_time(time_us);
}

int handlers::rtu_t::get_trigger_prohibited_time(AnyTarget& t, unsigned int& us) {
    return t->rtu.get_prohibited_time(us);
}

int handlers::rtu_t::set_exposure_offset(AnyTarget& t, unsigned int offset_us) {
    return t->rtu.set_exposure_offset(offset_us);
}

int handlers::rtu_t::get_exposure_offset(AnyTarget& t, unsigned int& us) {
    return t->rtu.get_exposure_offset(us);
}

int handlers::rtu_t::set_exposure(AnyTarget& t, unsigned int exposure_us) {
    return t->rtu.set_exposure(exposure_us);
}

int handlers::rtu_t::get_exposure(AnyTarget& t, unsigned int& us) {
    return t->rtu.get_exposure(us);
}

int handlers::rtu_t::single_shot(AnyTarget& t, bool start) {
    return t->rtu.single_shot(start);
}

int handlers::rtu_t::set_trigger_mode(AnyTarget& t, bool continuous) {
    return t->rtu.set_continuous(continuous);
}

int handlers::rtu_t::set_aquisition_fps(AnyTarget& t, unsigned int fps) {
    return t->rtu.set_rate(fps);
}

int handlers::rtu_t::dio_available(AnyTarget& t, bool& a) {
    return t->rtu.dio_available(a);
}

int handlers::rtu_t::set_io_pin_config(AnyTarget& t, unsigned char pin, hal::dio_pin_config_t const& config) {
    return t->rtu.set_pin_config(pin, config);
}

int handlers::rtu_t::get_io_pin_config(AnyTarget& t, unsigned char pin, hal::dio_pin_config_t& c) {
    return t->rtu.get_pin_config(pin, c);
}

int handlers::rtu_t::set_pin_value(AnyTarget& t, unsigned char pin, bool value) {
    return t->rtu.set_pin_value(pin, value);
}

int handlers::rtu_t::get_pin_value(AnyTarget& t, unsigned char pin, bool& v) {
    return t->rtu.get_pin_value(pin, v);
}

int handlers::rtu_t::get_all_pin_values(AnyTarget& t, std::bitset<6>& v) {
    return t->rtu.get_pin_values(v);
}

int handlers::rtu_t::set_lightbar_col(AnyTarget& t, hal::color_t const& color) {
    return t->rtu.set_light_bar(color);
}

int handlers::rtu_t::set_device_status(AnyTarget& t, hal::device_state_te state) {
    return t->system.set_state(state);
}

int handlers::rtu_delegate_t::constructor(AnyTarget& t, Text const& device, int) {
    return t.construct<ServedObject>(std::vector<Text>{device});
}

int handlers::rtu_delegate_t::destructor(AnyTarget&) {
    return 0;
}

int handlers::rtu_delegate_t::get_status(AnyTarget& t, unsigned char& s) {
    return t->modules.get_status(Module::rtu, s);
}

int handlers::rtu_delegate_t::get_revision(AnyTarget& t, hal::revision_t& r) {
    return t->modules.get_revision(Module::rtu, r);
}

int handlers::rtu_delegate_t::get_heartbeat_timeout(AnyTarget& t, unsigned int& ms) {
    return t->system.get_heartbeat_timeout(ms);
}

}  // namespace sim
