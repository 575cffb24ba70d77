// The second library: real-time unit, camera and image sensors.
#include <fcntl.h>

#include <bitset>

#include "hal/camera.h"
#include "hal/imx.h"
#include "hal/rtu.h"
#include "hal/rtu_delegate.h"
#include "tests/second_library/second_library.h"

namespace second_library {

template <>
hal::dio_pin_config_t taken() {
    hal::dio_pin_config_t config;
    config.type = taken<hal::dio_pin_config_t::pin_type>();
    config.func = taken<hal::dio_pin_config_t::pin_func>();
    config.config = taken<hal::dio_pin_config_t::pin_config>();
    for (bool* flag : {&config.invert, &config.on_delay_active, &config.off_delay_active, &config.pulse_active}) {
        *flag = taken<bool>();
    }
    for (int* time_ms : {&config.on_delay_time, &config.off_delay_time, &config.pulse_time}) {
        *time_ms = taken<int>();
    }
    return config;
}

template <>
std::bitset<6> taken() {
    return taken<unsigned char>();
}

}  // namespace second_library

namespace hal {

using second_library::answer;
using second_library::born;
using second_library::called;
using second_library::dies;
using second_library::taken;

// Its node stays open, as of a device's library, where there is one.
rtu_t::rtu_t(char const* device, int access) : base_t(device, access) {
    [[maybe_unused]] int const node = ::open(device, access);
}

rtu_t::~rtu_t() = default;

int rtu_t::get_status(unsigned char& status) const {
    return answer(this, status);
}

int rtu_t::get_revision(revision_t& revision) const {
    return answer(this, revision);
}

int rtu_t::set_imager_type(imx_te) {
    return answer(this);
}

int rtu_t::get_imager_type(imx_te& type) {
    return answer(this, type);
}

int rtu_t::set_trigger_prohibited_time(unsigned int) {
    return answer(this);
}

int rtu_t::get_trigger_prohibited_time(unsigned int& time_us) {
    return answer(this, time_us);
}

int rtu_t::set_exposure_offset(unsigned int) {
    return answer(this);
}

int rtu_t::get_exposure_offset(unsigned int& offset_us) {
    return answer(this, offset_us);
}

int rtu_t::set_exposure(unsigned int) {
    return answer(this);
}

int rtu_t::get_exposure(unsigned int& exposure_us) const {
    return answer(this, exposure_us);
}

int rtu_t::single_shot(bool) {
    return answer(this);
}

int rtu_t::set_trigger_mode(bool) {
    return answer(this);
}

int rtu_t::set_aquisition_fps(unsigned int) {
    return answer(this);
}

int rtu_t::dio_available(bool& available) const {
    return answer(this, available);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the library's interface
int rtu_t::set_io_pin_config(unsigned char, dio_pin_config_t) {
    return answer(this);
}

int rtu_t::get_io_pin_config(unsigned char, dio_pin_config_t& config) {
    return answer(this, config);
}

int rtu_t::set_pin_value(unsigned char, bool) {
    return answer(this);
}

int rtu_t::get_pin_value(unsigned char, bool& value) const {
    return answer(this, value);
}

int rtu_t::get_all_pin_values(std::bitset<6>& values) const {
    return answer(this, values);
}

int rtu_t::set_lightbar_col(color_t) {
    return answer(this);
}

int rtu_t::set_device_status(device_state_te) {
    return answer(this);
}

rtu_delegate_t::rtu_delegate_t(char const*, int) : impl_(nullptr) {
    born(this);
}

rtu_delegate_t::~rtu_delegate_t() {
    dies(this);
}

int rtu_delegate_t::get_status(unsigned char& status) const {
    return answer(this, status);
}

int rtu_delegate_t::get_revision(revision_t& revision) const {
    return answer(this, revision);
}

int rtu_delegate_t::get_heartbeat_timeout(unsigned int& timeout_ms) const {
    return answer(this, timeout_ms);
}

int imx_t::get_status(unsigned char& status) const {
    return answer(this, status);
}

int imx_t::get_revision(revision_t& revision) const {
    return answer(this, revision);
}

int imx_t::get_serial_number(unsigned int& serial_number) const {
    return answer(this, serial_number);
}

int imx_t::get_sensortype(unsigned int& type) const {
    return answer(this, type);
}

int imx_t::get_gain(unsigned int& gain) const {
    return answer(this, gain);
}

int imx_t::set_gain(unsigned int) {
    return answer(this);
}

int imx_t::get_hscanmode(unsigned int& mode) const {
    return answer(this, mode);
}

int imx_t::set_hscanmode(unsigned int) {
    return answer(this);
}

int imx_t::get_framecount(unsigned long& count) const {
    return answer(this, count);
}

int imx_t::set_roi_xyoffset(unsigned int, unsigned int) {
    return answer(this);
}

int imx_t::get_roi_xyoffset(unsigned int& x, unsigned int& y) const {
    return answer(this, x, y);
}

imx_te camera_t::determine_imxtype() {
    second_library::settle();
    return taken<imx_te>();
}

camera_t::camera_t(imx_te, char const*, char const*, int) : impl_(nullptr) {
    born(this);
}

camera_t::~camera_t() {
    dies(this);
}

imx_te camera_t::get_imxtype() const {
    called(this);
    return taken<imx_te>();
}

int camera_t::single_shot() {
    return answer(this);
}

int camera_t::set_trigger_mode(trigger_te) {
    return answer(this);
}

int camera_t::get_trigger_mode(trigger_te& mode) {
    return answer(this, mode);
}

int camera_t::set_aquisition_framerate(unsigned int) {
    return answer(this);
}

int camera_t::get_aquisition_framerate(unsigned int& fps) const {
    return answer(this, fps);
}

int camera_t::get_aquisition_framerate_limits(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return answer(this, min, max, step);
}

int camera_t::start_acquisition() const {
    return answer(this);
}

int camera_t::stop_acquisition() const {
    return answer(this);
}

int camera_t::get_gain(unsigned int& gain) const {
    return answer(this, gain);
}

int camera_t::set_gain(unsigned int) {
    return answer(this);
}

int camera_t::get_exposure(unsigned int& exposure_us) const {
    return answer(this, exposure_us);
}

int camera_t::set_exposure(unsigned int) {
    return answer(this);
}

int camera_t::get_exposure_limits(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return answer(this, min, max, step);
}

int camera_t::get_framecount(unsigned long& count) const {
    return answer(this, count);
}

int camera_t::set_roi_xyoffset(unsigned int, unsigned int) {
    return answer(this);
}

int camera_t::get_roi_xyoffset(unsigned int& x, unsigned int& y) const {
    return answer(this, x, y);
}

int camera_t::set_hscanmode(roi_te) {
    return answer(this);
}

int camera_t::get_hscanmode(roi_te& mode) const {
    return answer(this, mode);
}

int camera_t::get_missed_trigger_counter(unsigned long& frame_id, long& missed) {
    return answer(this, frame_id, missed);
}

int camera_t::reset_missed_trigger_counter() {
    return answer(this);
}

}  // namespace hal
