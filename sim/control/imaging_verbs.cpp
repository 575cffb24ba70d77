// The verbs for what surrounds the camera: wires, supply, fitted sensor and triggers from outside.
#include <algorithm>

#include "sim/control/value_words.h"
#include "sim/control/verbs.h"
#include "sim/core/numbers.h"

namespace sim {

namespace {

char const* const kDriveUsage = "drive PIN high | low";
char const* const kPowerUsage = "power 24v | poe";
char const* const kFitUsage = "fit imx296 | imx567 | none";
char const* const kTriggerUsage = "trigger COUNT [at RATE]";

constexpr unsigned int kMostTriggers = 1'000'000;

std::optional<unsigned int> parse_count(std::string const& text) {
    auto const count = parse_integer_as<unsigned int>(text);
    return count && *count >= 1 && *count <= kMostTriggers ? count : std::nullopt;
}

Reply drive(Caller const& caller, Words const& words) {
    if (words.size() != 2 || (words[1] != "high" && words[1] != "low")) {
        return usage_error(kDriveUsage);
    }
    auto const pin = parse_integer_as<unsigned char>(words[0]);
    if (!pin || *pin >= DigitalIo::kPins) {
        return Reply::error("no pin " + words[0] + ": 0 to 5");
    }
    caller.device.rtu.drive_pin(*pin, words[1] == "high");
    return Reply::done();
}

Reply power(Caller const& caller, Words const& words) {
    if (words.size() != 1) {
        return usage_error(kPowerUsage);
    }
    auto const supply = parse_supply(words.front());
    if (!supply) {
        return Reply::error(supply_error());
    }
    caller.device.rtu.set_supply(*supply);
    return Reply::done();
}

Error make_present(Nodes& nodes, std::string const& node, bool present) {
    if (nodes.present(node) == present) {
        return {};
    }
    return present ? nodes.restore(node) : nodes.remove(node);
}

Reply fit(Caller const& caller, Words const& words) {
    auto const sensors = image_sensors();
    std::string const name = words.size() == 1 ? words.front() : "";
    bool const is_sensor =
        std::any_of(sensors.begin(), sensors.end(), [&](SensorFacts const* sensor) { return name == sensor->name; });
    if (name != "none" && !is_sensor) {
        return usage_error(kFitUsage);
    }
    for (SensorFacts const* const sensor : sensors) {
        Error const error = make_present(caller.device.nodes, sensor->node, name == sensor->name);
        if (!error.empty()) {
            return Reply::error(error);
        }
    }
    return Reply::done();
}

Reply trigger(Caller const& caller, Words const& words) {
    bool const at_rate = words.size() == 3 && words[1] == "at";
    if (words.size() != 1 && !at_rate) {
        return usage_error(kTriggerUsage);
    }
    auto const count = parse_count(words[0]);
    auto const rate = at_rate ? parse_count(words[2]) : std::nullopt;
    if (!count || (at_rate && !rate)) {
        return Reply::error("a count and a rate are 1 to " + std::to_string(kMostTriggers));
    }
    caller.device.rtu.trigger_from_outside(*count, rate);
    return Reply::done();
}

}  // namespace

void add_imaging_verbs(Commands& commands) {
    commands.add({"drive", kDriveUsage, "puts a level on the wire of a digital input", drive});
    commands.add({"power", kPowerUsage, "what supplies the device; only 24 V powers the digital I/O", power});
    commands.add({"fit", kFitUsage, "fits an image sensor: its node is there, the other's is not", fit});
    commands.add(
        {"trigger", kTriggerUsage, "triggers from outside: all at once, or RATE in a second, the first now", trigger});
}

}  // namespace sim
