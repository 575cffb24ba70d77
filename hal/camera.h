// The camera pipeline: one image sensor together with the real-time unit that triggers it.
#pragma once

#include "hal/types.h"

namespace hal {

class camera_t {
public:
    // The sensor that is fitted, by the device nodes present; none where there is none.
    static imx_te determine_imxtype();

    // `sensor_device` may be null: the library then takes the node of `type`. `access` as for base_t.
    camera_t(imx_te type, char const* sensor_device, char const* rtu_device, int access);
    camera_t(camera_t const&) = delete;
    camera_t& operator=(camera_t const&) = delete;
    ~camera_t();

    // The sensor given at construction. Cannot fail.
    imx_te get_imxtype() const;

    int single_shot();
    int set_trigger_mode(trigger_te mode);
    int get_trigger_mode(trigger_te& mode);
    // Rate of the continuous trigger in frames per second.
    int set_aquisition_framerate(unsigned int fps);
    int get_aquisition_framerate(unsigned int& fps) const;
    int get_aquisition_framerate_limits(unsigned int& min, unsigned int& max, unsigned int& step) const;
    int start_acquisition() const;
    int stop_acquisition() const;

    // Gain in tenths of a decibel.
    int get_gain(unsigned int& gain) const;
    int set_gain(unsigned int gain);
    // Exposure time in microseconds.
    int get_exposure(unsigned int& exposure_us) const;
    int set_exposure(unsigned int exposure_us);
    int get_exposure_limits(unsigned int& min, unsigned int& max, unsigned int& step) const;

    // Frames that the sensor has taken since the device started.
    int get_framecount(unsigned long& count) const;
    // Upper left corner of the region of interest, in pixels.
    int set_roi_xyoffset(unsigned int x, unsigned int y);
    int get_roi_xyoffset(unsigned int& x, unsigned int& y) const;
    int set_hscanmode(roi_te mode);
    int get_hscanmode(roi_te& mode) const;

    // `frame_id`: the frame that was running when the last trigger was missed; `missed`: how many were.
    int get_missed_trigger_counter(unsigned long& frame_id, long& missed);
    int reset_missed_trigger_counter();

private:
    struct impl;
    impl* impl_;
};

}  // namespace hal
