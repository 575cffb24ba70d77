// The virtual device: its whole state, one lock and one clock.
#include "sim/device/device.h"

namespace sim {

Device::Device(std::unique_ptr<FileSystem> files) : nodes(std::move(files)) {
    describe();
}

Device& Device::instance() {
    static Device& device = *new Device(std::make_unique<HostFileSystem>());
    return device;
}

void Device::advance() {}

void Device::describe() {
    auto const time = [this] { return now(); };
    properties.add("clock.time", "time since the start, s",
                   [this] { return static_cast<double>(now().count()) / 1e6; });
    properties.add("clock.mode", "how the time passes", [this] { return timeline.clock_setting(); });
    properties.add("camera.fitted", "fitted image sensor: 0 none, 1 IMX296, 2 IMX567",
                   [this] { return nodes.fitted_sensor(); });
    system.describe(properties, time);
    modules.describe(properties);
}

}  // namespace sim
