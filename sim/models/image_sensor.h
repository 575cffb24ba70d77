// One image sensor: gain, region of interest, scan mode and the frames that it took.
#pragma once

#include <array>

#include "hal/types.h"
#include "sim/models/module_info.h"

namespace sim {

// Rates and exposure times are whole numbers.
constexpr unsigned int kLeastFps = 1;
constexpr unsigned int kExposureStep = 1;  // of a rate and of an exposure time

struct ExposureLimits {
    unsigned int min_us;  // of one exposure
    unsigned int max_us;
    unsigned int max_fps;  // of the full array; the least is kLeastFps
};

// A type of sensor: how it is called, and what it can do.
struct SensorFacts {
    hal::imx_te type;
    Module module;
    char const* name;
    char const* node;    // the file by which programs find it
    unsigned int width;  // pixels
    unsigned int height;
    unsigned int roi_grid;  // the region of interest begins at multiples of it, in pixels
    unsigned int max_gain;  // tenths of a decibel; the least is 0
    ExposureLimits exposures;
};

// The one table of both: whatever names a sensor, finds its node or limits it, asks here.
SensorFacts const& imx296_facts();
SensorFacts const& imx567_facts();
// Both, the one that counts where both are fitted first.
std::array<SensorFacts const*, 2> image_sensors();
// Null where the type is none of them.
SensorFacts const* find_image_sensor(hal::imx_te type);

// Setters refuse (-1, EINVAL) what the sensor cannot do and keep the old value.
class ImageSensor {
public:
    explicit ImageSensor(SensorFacts const& facts) : facts_(facts) {}

    SensorFacts const& facts() const { return facts_; }

    static constexpr unsigned int kMaxVariant = 1;

    int get_variant(unsigned int& variant) const;  // 0 monochrome, 1 colour
    unsigned int variant() const { return variant_; }
    int set_variant(unsigned int variant);
    int get_gain(unsigned int& gain) const;  // tenths of a decibel
    unsigned int gain() const { return gain_; }
    int set_gain(unsigned int gain);
    int get_scan_mode(hal::roi_te& mode) const;
    hal::roi_te scan_mode() const { return scan_mode_; }
    int set_scan_mode(hal::roi_te mode);
    // Upper left corner, on the sensor's grid and inside its array.
    int get_roi_offset(unsigned int& x, unsigned int& y) const;
    unsigned int roi_x() const { return roi_x_; }
    unsigned int roi_y() const { return roi_y_; }
    int set_roi_offset(unsigned int x, unsigned int y);

    // Forgets all but whether it sees colours.
    void lose_power();
    void take_frames(unsigned long count) { frames_ += count; }
    int get_frames(unsigned long& count) const;
    unsigned long frames() const { return frames_; }

private:
    SensorFacts const& facts_;
    unsigned int variant_ = 0;
    unsigned int gain_ = 0;
    hal::roi_te scan_mode_ = hal::roi_te::normal;
    unsigned int roi_x_ = 0;
    unsigned int roi_y_ = 0;
    unsigned long frames_ = 0;
};

}  // namespace sim
