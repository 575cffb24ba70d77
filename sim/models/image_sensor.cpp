// One image sensor: gain, region of interest, scan mode and the frames that it took.
#include "sim/models/image_sensor.h"

#include "sim/models/refusal.h"

namespace sim {

namespace {

constexpr SensorFacts kImx296{hal::imx_te::imx296, Module::imx296, "imx296", "/dev/imx296", 1456, 1088, 4, 480,
                              {30, 15'500'000, 60}};
constexpr SensorFacts kImx567{hal::imx_te::imx567, Module::imx567, "imx567", "/dev/imx567", 2472, 2064, 8, 480,
                              {1, 100'000'000, 96}};

// The region keeps at least one cell of the grid.
bool is_on_grid(unsigned int offset, unsigned int size, unsigned int grid) {
    return offset % grid == 0 && offset <= size - grid;
}

}  // namespace

SensorFacts const& imx296_facts() {
    return kImx296;
}

SensorFacts const& imx567_facts() {
    return kImx567;
}

std::array<SensorFacts const*, 2> image_sensors() {
    return {&kImx296, &kImx567};
}

SensorFacts const* find_image_sensor(hal::imx_te type) {
    for (SensorFacts const* const sensor : image_sensors()) {
        if (sensor->type == type) {
            return sensor;
        }
    }
    return nullptr;
}

int ImageSensor::get_variant(unsigned int& variant) const {
    variant = variant_;
    return 0;
}

int ImageSensor::set_variant(unsigned int variant) {
    if (variant > kMaxVariant) {
        return refuse(EINVAL);
    }
    variant_ = variant;
    return 0;
}

int ImageSensor::get_gain(unsigned int& gain) const {
    gain = gain_;
    return 0;
}

int ImageSensor::set_gain(unsigned int gain) {
    if (gain > facts_.max_gain) {
        return refuse(EINVAL);
    }
    gain_ = gain;
    return 0;
}

int ImageSensor::get_scan_mode(hal::roi_te& mode) const {
    mode = scan_mode_;
    return 0;
}

int ImageSensor::set_scan_mode(hal::roi_te mode) {
    switch (mode) {
        case hal::roi_te::normal:
        case hal::roi_te::subsampling:
        case hal::roi_te::binning:
            scan_mode_ = mode;
            return 0;
    }
    return refuse(EINVAL);
}

int ImageSensor::get_roi_offset(unsigned int& x, unsigned int& y) const {
    x = roi_x_;
    y = roi_y_;
    return 0;
}

int ImageSensor::set_roi_offset(unsigned int x, unsigned int y) {
    if (!is_on_grid(x, facts_.width, facts_.roi_grid) || !is_on_grid(y, facts_.height, facts_.roi_grid)) {
        return refuse(EINVAL);
    }
    roi_x_ = x;
    roi_y_ = y;
    return 0;
}

void ImageSensor::lose_power() {
    gain_ = 0;
    scan_mode_ = hal::roi_te::normal;
    roi_x_ = 0;
    roi_y_ = 0;
    frames_ = 0;
}

int ImageSensor::get_frames(unsigned long& count) const {
    count = frames_;
    return 0;
}

}  // namespace sim
