// The properties of the sensor hub and of the orientation that it measures.
#include "sim/core/numbers.h"
#include "sim/device/describe.h"

namespace sim {

namespace {

// Of a degree: finer than the hub's samples, which tell a hundredth.
constexpr double kAngleParts = 10'000;

std::string text_of(std::vector<SensorHub::ActiveSensor> const& sensors) {
    std::string text;
    for (SensorHub::ActiveSensor const& sensor : sensors) {
        text += (text.empty() ? "" : ", ") + std::to_string(sensor.id) + " at " + number_text(sensor.rate) + " Hz " +
                std::to_string(sensor.latency_ms) + " ms";
    }
    return text.empty() ? "none" : text;
}

}  // namespace

void describe(Properties& properties, SensorHub& hub, std::function<Time()> const& now) {
    properties.add("hub.running", "whether the sensor hub runs a firmware", [&hub] { return hub.running(); });
    properties.add("hub.firmware", "version of the firmware that runs; 0: none",
                   [&hub] { return hub.firmware_version(); });
    properties.add(
        "hub.firmware.damaged", "whether images come to the hub with a wrong bit",
        [&hub] { return hub.damages_images(); }, [&hub](bool damages) { hub.set_damages_images(damages); });
    properties.add("hub.callbacks", "whether an object has its data callbacks installed",
                   [&hub] { return hub.callbacks_installed(); });
    properties.add("hub.sensors", "virtual sensors that are on, with rate and latency",
                   [&hub] { return text_of(hub.active_sensors()); });
    properties.add("hub.samples", "samples delivered to the library since the start", [&hub] { return hub.samples(); });
    properties.add(
        "hub.upload_time", About("that the upload of a firmware takes", "ms").within(0, SensorHub::kLongestUpload),
        [&hub] { return hub.upload_time_ms(); }, [&hub](unsigned int ms) { return hub.set_upload_time(ms); });
    auto const add_angle = [&](char const* name, char const* help, double Angles::*angle) {
        properties.add(name, About(help, "degrees"), [&hub, now, angle] {
            return to_nearest_part(angles_of(hub.orientation().at(now())).*angle, kAngleParts);
        });
    };
    add_angle("orientation.yaw", "how the device is turned around the vertical", &Angles::yaw);
    add_angle("orientation.pitch", "how it is tilted forwards", &Angles::pitch);
    add_angle("orientation.roll", "how it is tilted to its side", &Angles::roll);
    properties.add(
        "orientation.noise",
        About("standard deviation of the measured orientation", "degrees").within(0, Orientation::kMostNoise),
        [&hub] { return hub.orientation().noise(); }, [&hub](double degrees) { return hub.set_noise(degrees); });
    properties.add(
        "orientation.drift",
        About("by which the measured heading runs away", "degrees/min").within(0, Orientation::kMostDrift),
        [&hub] { return hub.orientation().drift(); }, [&hub](double drift) { return hub.set_drift(drift); });
    properties.add(
        "orientation.seed", "seed of that noise", [&hub] { return static_cast<long long>(hub.orientation().seed()); },
        [&hub](long long seed) { hub.set_seed(static_cast<std::uint64_t>(seed)); });
}

}  // namespace sim
