// The camera pipeline.
#include "hal/camera.h"

#include "sim/library/gate.h"

namespace hal {

using sim::construct;
using sim::destroy;
using sim::Device;
using sim::gate;
using sim::in;
using sim::out;
using sim::recall;

namespace {

// The node of a sensor; null for a code that is no sensor.
char const* node_of(imx_te type) {
    switch (type) {
        case imx_te::imx296:
            return "/dev/imx296";
        case imx_te::imx567:
            return "/dev/imx567";
        case imx_te::none:
            break;
    }
    return nullptr;
}

// The unit as it is now.
sim::RealTimeUnit& unit(Device& device) {
    device.advance_imaging();
    return device.rtu;
}

// The sensor with the frames that it has taken until now. A camera without one could not be opened, so it never
// comes here.
sim::ImageSensor& sensor(Device& device, imx_te type) {
    device.advance_imaging();
    return *device.sensor(type);
}

}  // namespace

struct camera_t::impl : sim::Object {
    impl(imx_te sensor, char const* sensor_device, char const* rtu_device)
        : Object({sensor_device != nullptr ? sensor_device : node_of(sensor), rtu_device}), type(sensor) {
        if (node_of(sensor) == nullptr) {
            open_error = ENODEV;  // no sensor, whatever device was given
        }
    }

    imx_te const type;
};

camera_t::camera_t(imx_te type, char const* sensor_device, char const* rtu_device, int access)
    : impl_(new impl(type, sensor_device, rtu_device)) {
    construct(*impl_, "camera_t::camera_t", in(type, sensor_device, rtu_device, access));
}

camera_t::~camera_t() {
    destroy(*impl_, "camera_t::~camera_t");
    delete impl_;
}

imx_te camera_t::determine_imxtype() {
    return gate(nullptr, "camera_t::determine_imxtype", [](Device& d) { return d.nodes.fitted_sensor(); });
}

imx_te camera_t::get_imxtype() const {
    return recall(impl_, "camera_t::get_imxtype", [&](Device&) { return impl_->type; });
}

int camera_t::single_shot() {
    return gate(impl_, "camera_t::single_shot", [&](Device& d) { return unit(d).single_shot(true); });
}

int camera_t::set_trigger_mode(trigger_te mode) {
    return gate(impl_, "camera_t::set_trigger_mode", in(mode), [&](Device& d) {
        if (mode != trigger_te::manual && mode != trigger_te::continuous) {
            return -1;
        }
        return unit(d).set_continuous(mode == trigger_te::continuous);
    });
}

int camera_t::get_trigger_mode(trigger_te& mode) {
    return gate(impl_, "camera_t::get_trigger_mode", out(mode), [&](Device& d, auto& m) {
        m = unit(d).continuous() ? trigger_te::continuous : trigger_te::manual;
        return 0;
    });
}

int camera_t::set_aquisition_framerate(unsigned int fps) {
    return gate(impl_, "camera_t::set_aquisition_framerate", in(fps),
                [&](Device& d) { return unit(d).set_rate(fps, sensor(d, impl_->type).facts()); });
}

int camera_t::get_aquisition_framerate(unsigned int& fps) const {
    return gate(impl_, "camera_t::get_aquisition_framerate", out(fps), [&](Device& d, auto& rate) {
        rate = unit(d).rate();
        return 0;
    });
}

int camera_t::get_aquisition_framerate_limits(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return gate(impl_, "camera_t::get_aquisition_framerate_limits", out(min, max, step),
                [&](Device& d, auto& least, auto& most, auto& distance) {
                    least = 1;
                    most = sensor(d, impl_->type).facts().max_fps;
                    distance = 1;
                    return 0;
                });
}

int camera_t::start_acquisition() const {
    return gate(impl_, "camera_t::start_acquisition", [&](Device& d) { return unit(d).set_acquiring(true); });
}

int camera_t::stop_acquisition() const {
    return gate(impl_, "camera_t::stop_acquisition", [&](Device& d) { return unit(d).set_acquiring(false); });
}

int camera_t::get_gain(unsigned int& gain) const {
    return gate(impl_, "camera_t::get_gain", out(gain),
                [&](Device& d, auto& g) { return sensor(d, impl_->type).get_gain(g); });
}

int camera_t::set_gain(unsigned int gain) {
    return gate(impl_, "camera_t::set_gain", in(gain),
                [&](Device& d) { return sensor(d, impl_->type).set_gain(gain); });
}

int camera_t::get_exposure(unsigned int& exposure_us) const {
    return gate(impl_, "camera_t::get_exposure", out(exposure_us),
                [&](Device& d, auto& us) { return unit(d).get_exposure(us); });
}

int camera_t::set_exposure(unsigned int exposure_us) {
    return gate(impl_, "camera_t::set_exposure", in(exposure_us),
                [&](Device& d) { return unit(d).set_exposure(exposure_us, sensor(d, impl_->type).facts()); });
}

int camera_t::get_exposure_limits(unsigned int& min, unsigned int& max, unsigned int& step) const {
    return gate(impl_, "camera_t::get_exposure_limits", out(min, max, step),
                [&](Device& d, auto& least, auto& most, auto& distance) {
                    least = sensor(d, impl_->type).facts().min_exposure_us;
                    most = sensor(d, impl_->type).facts().max_exposure_us;
                    distance = 1;
                    return 0;
                });
}

int camera_t::get_framecount(unsigned long& count) const {
    return gate(impl_, "camera_t::get_framecount", out(count),
                [&](Device& d, auto& c) { return sensor(d, impl_->type).get_frames(c); });
}

int camera_t::set_roi_xyoffset(unsigned int x, unsigned int y) {
    return gate(impl_, "camera_t::set_roi_xyoffset", in(x, y),
                [&](Device& d) { return sensor(d, impl_->type).set_roi_offset(x, y); });
}

int camera_t::get_roi_xyoffset(unsigned int& x, unsigned int& y) const {
    return gate(impl_, "camera_t::get_roi_xyoffset", out(x, y),
                [&](Device& d, auto& left, auto& upper) { return sensor(d, impl_->type).get_roi_offset(left, upper); });
}

int camera_t::set_hscanmode(roi_te mode) {
    return gate(impl_, "camera_t::set_hscanmode", in(mode),
                [&](Device& d) { return sensor(d, impl_->type).set_scan_mode(mode); });
}

int camera_t::get_hscanmode(roi_te& mode) const {
    return gate(impl_, "camera_t::get_hscanmode", out(mode),
                [&](Device& d, auto& m) { return sensor(d, impl_->type).get_scan_mode(m); });
}

int camera_t::get_missed_trigger_counter(unsigned long& frame_id, long& missed) {
    return gate(impl_, "camera_t::get_missed_trigger_counter", out(frame_id, missed),
                [&](Device& d, auto& frame, auto& count) { return unit(d).get_missed_triggers(frame, count); });
}

int camera_t::reset_missed_trigger_counter() {
    return gate(impl_, "camera_t::reset_missed_trigger_counter",
                [&](Device& d) { return unit(d).reset_missed_triggers(); });
}

}  // namespace hal
