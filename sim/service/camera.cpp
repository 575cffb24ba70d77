// The camera pipeline.
#include "sim/service/handlers.h"

namespace sim {

namespace {

using CameraTarget = CallTarget<CameraObject>;

// The sensor of the camera. A camera without one could not be opened, so it never comes here.
ImageSensor& sensor(CameraTarget& t) {
    return *t->sensor(t.object->type);
}

}  // namespace

int handlers::camera_t::constructor(CameraTarget& t, hal::imx_te type, Text const& sensor, Text const& rtu, int) {
    return t.construct<CameraObject>(type, sensor, rtu);
}

int handlers::camera_t::destructor(CameraTarget&) {
    return 0;
}

hal::imx_te handlers::camera_t::determine_imxtype(CameraTarget& t) {
    return t->nodes.fitted_sensor();
}

hal::imx_te handlers::camera_t::get_imxtype(CameraTarget& t) {
    return t.object->type;
}

int handlers::camera_t::single_shot(CameraTarget& t) {
    return t->rtu.single_shot(true);
}

int handlers::camera_t::set_trigger_mode(CameraTarget& t, hal::trigger_te mode) {
    if (mode != hal::trigger_te::manual && mode != hal::trigger_te::continuous) {
        return -1;
    }
    return t->rtu.set_continuous(mode == hal::trigger_te::continuous);
}

int handlers::camera_t::get_trigger_mode(CameraTarget& t, hal::trigger_te& m) {
    m = t->rtu.continuous() ? hal::trigger_te::continuous : hal::trigger_te::manual;
    return 0;
}

int handlers::camera_t::set_aquisition_framerate(CameraTarget& t, unsigned int fps) {
    return t->rtu.set_rate(fps, sensor(t).facts().exposures);
}

int handlers::camera_t::get_aquisition_framerate(CameraTarget& t, unsigned int& rate) {
    rate = t->rtu.rate();
    return 0;
}

int handlers::camera_t::get_aquisition_framerate_limits(CameraTarget& t, unsigned int& least, unsigned int& most,
                                                        unsigned int& distance) {
    least = kLeastFps;
    most = sensor(t).facts().exposures.max_fps;
    distance = kExposureStep;
    return 0;
}

int handlers::camera_t::start_acquisition(CameraTarget& t) {
    return t->rtu.set_acquiring(t.object->number(), true);
}

int handlers::camera_t::stop_acquisition(CameraTarget& t) {
    return t->rtu.set_acquiring(t.object->number(), false);
}

int handlers::camera_t::get_gain(CameraTarget& t, unsigned int& g) {
    return sensor(t).get_gain(g);
}

int handlers::camera_t::set_gain(CameraTarget& t, unsigned int gain) {
    return sensor(t).set_gain(gain);
}

int handlers::camera_t::get_exposure(CameraTarget& t, unsigned int& us) {
    return t->rtu.get_exposure(us);
}

int handlers::camera_t::set_exposure(CameraTarget& t, unsigned int exposure_us) {
    return t->rtu.set_exposure(exposure_us, sensor(t).facts().exposures);
}

int handlers::camera_t::get_exposure_limits(CameraTarget& t, unsigned int& least, unsigned int& most,
                                            unsigned int& distance) {
    least = sensor(t).facts().exposures.min_us;
    most = sensor(t).facts().exposures.max_us;
    distance = kExposureStep;
    return 0;
}

int handlers::camera_t::get_framecount(CameraTarget& t, unsigned long& c) {
    return sensor(t).get_frames(c);
}

int handlers::camera_t::set_roi_xyoffset(CameraTarget& t, unsigned int x, unsigned int y) {
    return sensor(t).set_roi_offset(x, y);
}

int handlers::camera_t::get_roi_xyoffset(CameraTarget& t, unsigned int& left, unsigned int& upper) {
    return sensor(t).get_roi_offset(left, upper);
}

int handlers::camera_t::set_hscanmode(CameraTarget& t, hal::roi_te mode) {
    return sensor(t).set_scan_mode(mode);
}

int handlers::camera_t::get_hscanmode(CameraTarget& t, hal::roi_te& m) {
    return sensor(t).get_scan_mode(m);
}

int handlers::camera_t::get_missed_trigger_counter(CameraTarget& t, unsigned long& frame, long& count) {
    return t->rtu.get_missed_triggers(frame, count);
}

int handlers::camera_t::reset_missed_trigger_counter(CameraTarget& t) {
    return t->rtu.reset_missed_triggers();
}

}  // namespace sim
