// The properties of the ranging sensor and of what lies in front of it.
#include "sim/device/describe.h"

namespace sim {

void describe(Properties& properties, Ranging& ranging) {
    constexpr char const* kIllegal = "not a legal value, or the sensor sleeps";
    auto const add_range = [&](char const* name, char const* help, auto get, auto set, Ranging::Range const& range) {
        properties.add(name, help, get, set, range.min, range.max);
    };
    properties.add(
        "ranging.resolution", "zones: 16 or 64", [&ranging] { return ranging.resolution(); },
        [&ranging](Ranging::Resolution resolution) { return ranging.set_resolution(resolution); }, kIllegal);
    properties.add(
        "ranging.frequency", "Hz, 1-60 with 16 zones, 1-15 with 64", [&ranging] { return ranging.frequency(); },
        [&ranging](unsigned char hz) { return ranging.set_frequency(hz); }, kIllegal);
    properties.add(
        "ranging.mode", "1 continuous, 3 autonomous", [&ranging] { return ranging.ranging_mode(); },
        [&ranging](Ranging::RangingMode mode) { return ranging.set_ranging_mode(mode); }, kIllegal);
    properties.add(
        "ranging.integration_time", "ms, of the autonomous mode, 2-1000",
        [&ranging] { return ranging.integration_time(); },
        [&ranging](unsigned int ms) { return ranging.set_integration_time(ms); }, kIllegal);
    properties.add(
        "ranging.power", "0 sleep, 1 wakeup", [&ranging] { return ranging.power_mode(); },
        [&ranging](Ranging::PowerMode mode) { return ranging.set_power_mode(mode); }, "not a legal value");
    properties.add(
        "ranging.crosstalk.compensated", "whether a calibration took the cover's cross-talk away",
        [&ranging] { return ranging.crosstalk_compensated(); },
        [&ranging](bool compensated) { ranging.set_crosstalk_compensated(compensated); });
    add_range(
        "ranging.crosstalk.pull", "percent by which the cover pulls a target at 4 m nearer, 0-50",
        [&ranging] { return ranging.crosstalk_pull(); },
        [&ranging](double percent) { return ranging.set_crosstalk_pull(percent); }, Ranging::kPullRange);
    properties.add(
        "ranging.emitter_healthy", "whether the sensor's light works", [&ranging] { return ranging.emitter_healthy(); },
        [&ranging](bool healthy) { ranging.set_emitter_healthy(healthy); });
    add_range(
        "ranging.noise", "times the usual, 0-100; 0: exact distances", [&ranging] { return ranging.noise(); },
        [&ranging](double factor) { return ranging.set_noise(factor); }, Ranging::kNoiseRange);
    properties.add(
        "ranging.seed", "of the noise; set: the noise starts anew", [&ranging] { return ranging.seed(); },
        [&ranging](std::uint32_t seed) { ranging.set_seed(seed); });
    add_range(
        "ranging.ambient", "kcps/SPAD, light of the surroundings, 0-10000",
        [&ranging] { return ranging.ambient_light(); },
        [&ranging](double light) { return ranging.set_ambient_light(light); }, Ranging::kAmbientRange);
    add_range(
        "ranging.temperature", "C, of the sensor, -40 to 125", [&ranging] { return ranging.temperature(); },
        [&ranging](double temperature) { return ranging.set_temperature(temperature); }, Ranging::kTemperatureRange);
    properties.add(
        "ranging.scene", "as the command scene has it", [&ranging] { return ranging.scene(); },
        [&ranging](Scene const& scene) { ranging.set_scene(scene); });
}

}  // namespace sim
