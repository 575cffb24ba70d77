// The camera pipeline.
#include "hal/camera.h"

#include "sim/library/call.h"

namespace hal {

using sim::call;
using sim::in;
using sim::out;
namespace operations = sim::operations;

struct camera_t::impl : sim::Object {};

camera_t::camera_t(imx_te type, char const* sensor_device, char const* rtu_device, int access) : impl_(new impl) {
    sim::construct<operations::camera_t::constructor>(*impl_, in(type, sensor_device, rtu_device, access));
}

camera_t::~camera_t() {
    sim::destroy<operations::camera_t::destructor>(*impl_);
    delete impl_;
}

imx_te camera_t::determine_imxtype() {
    return call<operations::camera_t::determine_imxtype>(nullptr);
}

imx_te camera_t::get_imxtype() const {
    return call<operations::camera_t::get_imxtype>(impl_);
}

int camera_t::single_shot() {
    return call<operations::camera_t::single_shot>(impl_);
}

int camera_t::set_trigger_mode(trigger_te mode) {
    return call<operations::camera_t::set_trigger_mode>(impl_, in(mode));
}

int camera_t::get_trigger_mode(trigger_te& mode) {
    return call<operations::camera_t::get_trigger_mode>(impl_, out(mode));
}

int camera_t::set_aquisition_framerate(unsigned int fps) {
    return call<operations::camera_t::set_aquisition_framerate>(impl_, in(fps));
}

int camera_t::get_aquisition_framerate(unsigned int& fps) const {
    return call<operations::camera_t::get_aquisition_framerate>(impl_, out(fps));
}

int camera_t::get_aquisition_framerate_limits(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return call<operations::camera_t::get_aquisition_framerate_limits>(impl_, out(min, max, step));
}

int camera_t::start_acquisition() const {
    return call<operations::camera_t::start_acquisition>(impl_);
}

int camera_t::stop_acquisition() const {
    return call<operations::camera_t::stop_acquisition>(impl_);
}

int camera_t::get_gain(unsigned int& gain) const {
    return call<operations::camera_t::get_gain>(impl_, out(gain));
}

int camera_t::set_gain(unsigned int gain) {
    return call<operations::camera_t::set_gain>(impl_, in(gain));
}

int camera_t::get_exposure(unsigned int& exposure_us) const {
    return call<operations::camera_t::get_exposure>(impl_, out(exposure_us));
}

int camera_t::set_exposure(unsigned int exposure_us) {
    return call<operations::camera_t::set_exposure>(impl_, in(exposure_us));
}

int camera_t::get_exposure_limits(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return call<operations::camera_t::get_exposure_limits>(impl_, out(min, max, step));
}

int camera_t::get_framecount(unsigned long& count) const {
    return call<operations::camera_t::get_framecount>(impl_, out(count));
}

int camera_t::set_roi_xyoffset(unsigned int x, unsigned int y) {
    return call<operations::camera_t::set_roi_xyoffset>(impl_, in(x, y));
}

int camera_t::get_roi_xyoffset(unsigned int& x, unsigned int& y) const {
    return call<operations::camera_t::get_roi_xyoffset>(impl_, out(x, y));
}

int camera_t::set_hscanmode(roi_te mode) {
    return call<operations::camera_t::set_hscanmode>(impl_, in(mode));
}

int camera_t::get_hscanmode(roi_te& mode) const {
    return call<operations::camera_t::get_hscanmode>(impl_, out(mode));
}

int camera_t::get_missed_trigger_counter(unsigned long& frame_id, long& missed) {
    return call<operations::camera_t::get_missed_trigger_counter>(impl_, out(frame_id, missed));
}

int camera_t::reset_missed_trigger_counter() {
    return call<operations::camera_t::reset_missed_trigger_counter>(impl_);
}

}  // namespace hal
