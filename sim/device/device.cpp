// The virtual device: its whole state, one lock and one clock.
#include "sim/device/device.h"

#include "sim/device/describe.h"

namespace sim {

Device::Device(std::unique_ptr<FileSystem> files) : nodes(std::move(files)) {
    describe();
}

Device& Device::instance() {
    static Device& device = *new Device(std::make_unique<HostFileSystem>());
    return device;
}

void Device::advance() {
    advance_imaging();
    autofocus.advance(now());
}

void Device::advance_imaging() {
    Time const present = now();
    rtu.advance(present, sensor(nodes.fitted_sensor()));
    ExposureSignal signal{rtu.continuous() ? rtu.rate() : 0.0, 0};
    rtu.get_exposure(signal.time_us);
    illumination.advance(present, signal);
}

ImageSensor* Device::sensor(hal::imx_te type) {
    switch (type) {
        case hal::imx_te::imx296:
            return &imx296;
        case hal::imx_te::imx567:
            return &imx567;
        default:
            return nullptr;
    }
}

void Device::describe() {
    auto const time = [this] { return now(); };
    properties.add("clock.time", "time since the start, s",
                   [this] { return static_cast<double>(now().count()) / 1e6; });
    properties.add("clock.mode", "how the time passes", [this] { return timeline.clock_setting(); });
    properties.add("camera.fitted", "fitted image sensor: 0 none, 1 IMX296, 2 IMX567",
                   [this] { return nodes.fitted_sensor(); });
    sim::describe(properties, system, time);
    sim::describe(properties, modules);
    sim::describe(properties, rtu);
    sim::describe(properties, imx296);
    sim::describe(properties, imx567);
    sim::describe(properties, illumination);
    sim::describe(properties, autofocus);
    properties.add("autofocus.doe.active", "whether it shines now",
                   [this] { return autofocus.doe_active(rtu.exposing()); });
    sim::describe(properties, ranging);
    sim::describe(properties, hub, time);
    presses.describe(properties);
}

}  // namespace sim
