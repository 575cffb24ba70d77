// An image sensor alone, without the camera pipeline. The console derives a class for each sensor.
#pragma once

#include "hal/base.h"
#include "hal/types.h"

namespace hal {

class imx_t : public base_t {
public:
    ~imx_t() override = default;

    int get_status(unsigned char& status) const override;
    int get_revision(revision_t& revision) const override;
    virtual int get_serial_number(unsigned int& serial_number) const;

    // The sensor's variant: 0 monochrome, 1 colour.
    int get_sensortype(unsigned int& type) const;
    // Gain in tenths of a decibel.
    int get_gain(unsigned int& gain) const;
    int set_gain(unsigned int gain);
    // Horizontal scan mode, coded as roi_te.
    int get_hscanmode(unsigned int& mode) const;
    int set_hscanmode(unsigned int mode);
    int get_framecount(unsigned long& count) const;
    // Upper left corner of the region of interest, in pixels.
    int set_roi_xyoffset(unsigned int x, unsigned int y);
    int get_roi_xyoffset(unsigned int& x, unsigned int& y) const;

protected:
    imx_t(char const* device, int access) : base_t(device, access) {}

    imx_te sensor_type_ = imx_te::none;  // set by the constructor of the derived class
};

}  // namespace hal
