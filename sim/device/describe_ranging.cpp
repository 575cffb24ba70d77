// The properties of the ranging sensor and of what lies in front of it.
#include "sim/device/describe.h"

#include <string>
#include <vector>

namespace sim {

namespace {

std::string text_of(std::vector<int> const& view) {
    std::string text;
    for (int const distance : view) {
        text += (text.empty() ? "" : " ") + std::to_string(distance);
    }
    return text.empty() ? "none" : text;
}

}  // namespace

void describe(Properties& properties, Ranging& ranging) {
    constexpr char const* kAsleep = "the sensor sleeps";
    auto const add_range = [&](char const* name, About const& about, auto get, auto set, Ranging::Range const& range) {
        properties.add(name, about.within(range.min, range.max), get, set);
    };
    properties.add(
        "ranging.resolution",
        About("zones")
            .among({choice(Ranging::Resolution::zones_4x4, "zones_4x4"),
                    choice(Ranging::Resolution::zones_8x8, "zones_8x8")})
            .unless(kAsleep),
        [&ranging] { return ranging.resolution(); },
        [&ranging](Ranging::Resolution resolution) { return ranging.set_resolution(resolution); });
    properties.add(
        "ranging.frequency",
        About("measurements in a second, with 64 zones at most 15", "Hz")
            .within([&ranging] {
                return ValueRange{Ranging::kLeastFrequency, static_cast<double>(ranging.highest_frequency())};
            })
            .unless(kAsleep),
        [&ranging] { return ranging.frequency(); }, [&ranging](unsigned char hz) { return ranging.set_frequency(hz); });
    properties.add(
        "ranging.mode",
        About("whether it measures all the while")
            .among({choice(Ranging::RangingMode::continuous, "continuous"),
                    choice(Ranging::RangingMode::autonomous, "autonomous")})
            .unless(kAsleep),
        [&ranging] { return ranging.ranging_mode(); },
        [&ranging](Ranging::RangingMode mode) { return ranging.set_ranging_mode(mode); });
    properties.add(
        "ranging.integration_time",
        About("of the autonomous mode", "ms")
            .within(Ranging::kLeastIntegration, Ranging::kMostIntegration)
            .unless(kAsleep),
        [&ranging] { return ranging.integration_time(); },
        [&ranging](unsigned int ms) { return ranging.set_integration_time(ms); });
    properties.add(
        "ranging.power",
        About("whether it sleeps")
            .among({choice(Ranging::PowerMode::sleep, "sleep"), choice(Ranging::PowerMode::wakeup, "wakeup")}),
        [&ranging] { return ranging.power_mode(); },
        [&ranging](Ranging::PowerMode mode) { return ranging.set_power_mode(mode); });
    properties.add(
        "ranging.crosstalk.compensated", "whether a calibration took the cover's cross-talk away",
        [&ranging] { return ranging.crosstalk_compensated(); },
        [&ranging](bool compensated) { ranging.set_crosstalk_compensated(compensated); });
    add_range(
        "ranging.crosstalk.pull", About("by which the cover pulls a target at 4 m nearer", "percent"),
        [&ranging] { return ranging.crosstalk_pull(); },
        [&ranging](double percent) { return ranging.set_crosstalk_pull(percent); }, Ranging::kPullRange);
    properties.add(
        "ranging.emitter_healthy", "whether the sensor's light works", [&ranging] { return ranging.emitter_healthy(); },
        [&ranging](bool healthy) { ranging.set_emitter_healthy(healthy); });
    add_range(
        "ranging.noise", "noise of the distances, times the usual; 0: exact", [&ranging] { return ranging.noise(); },
        [&ranging](double factor) { return ranging.set_noise(factor); }, Ranging::kNoiseRange);
    properties.add(
        "ranging.seed", "seed of the noise; set: the noise starts anew", [&ranging] { return ranging.seed(); },
        [&ranging](std::uint32_t seed) { ranging.set_seed(seed); });
    add_range(
        "ranging.ambient", About("light of the surroundings", "kcps/SPAD"),
        [&ranging] { return ranging.ambient_light(); },
        [&ranging](double light) { return ranging.set_ambient_light(light); }, Ranging::kAmbientRange);
    add_range(
        "ranging.temperature", About("of the sensor", "C"), [&ranging] { return ranging.temperature(); },
        [&ranging](double temperature) { return ranging.set_temperature(temperature); }, Ranging::kTemperatureRange);
    properties.add(
        "ranging.scene", "what lies in front of the sensor", [&ranging] { return ranging.scene(); },
        [&ranging](Scene const& scene) { ranging.set_scene(scene); });
    properties.add("ranging.view", "mm that a shot would measure without noise, by zone; 0: no target",
                   [&ranging] { return text_of(ranging.view()); });
}

}  // namespace sim
