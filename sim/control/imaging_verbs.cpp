// The verbs for what surrounds the camera: wires, supply, fitted sensor and triggers from outside.
#include <algorithm>

#include "sim/control/value_words.h"
#include "sim/control/verbs.h"
#include "sim/core/numbers.h"

namespace sim {

namespace {

char const* const kDriveUsage = "drive PIN high | low | open";
char const* const kPowerUsage = "power 24v | poe\npower off | on | cycle";
char const* const kFitUsage = "fit imx296 | imx567 | none";
char const* const kTriggerUsage = "trigger COUNT [at RATE]\ntrigger stop";

// Of a `trigger`, and its rate: no faster than the clock, which counts microseconds.
constexpr unsigned int kMostTriggers = 1'000'000;

std::optional<unsigned int> parse_count(std::string const& text) {
    auto const count = parse_integer_as<unsigned int>(text);
    return count && *count >= 1 && *count <= kMostTriggers ? count : std::nullopt;
}

Reply drive(Device::Access& device, Words const& words) {
    if (words.size() != 2 || (words[1] != "high" && words[1] != "low" && words[1] != "open")) {
        return usage_error(kDriveUsage);
    }
    auto const pin = parse_integer_as<unsigned char>(words[0]);
    if (!pin || *pin >= DigitalIo::kPins) {
        return Reply::error("no pin " + words[0] + ": 0 to 5");
    }
    device->rtu.drive_pin(*pin, words[1] == "open" ? std::nullopt : std::optional<bool>(words[1] == "high"));
    return Reply::done();
}

// `word`: off, on or cycle.
Reply switch_power(Device::Access& device, std::string const& word) {
    bool const comes = word == "on";
    if (device->powered() == comes) {
        return Reply::error(comes ? "the device has power already" : "the device has no power");
    }
    device->set_power(comes);
    if (word == "cycle") {
        device->set_power(true);
    }
    return Reply::done();
}

Reply power(Device::Access& device, Words const& words) {
    if (words.size() != 1) {
        return usage_error(kPowerUsage);
    }
    std::string const& word = words.front();
    if (word == "off" || word == "on" || word == "cycle") {
        return switch_power(device, word);
    }
    auto const supply = parse_supply(word);
    if (!supply) {
        return usage_error(kPowerUsage);
    }
    device->rtu.set_supply(*supply);
    return Reply::done();
}

Error make_present(Nodes& nodes, std::string const& node, bool present) {
    if (nodes.present(node) == present) {
        return {};
    }
    return present ? nodes.restore(node) : nodes.remove(node);
}

Reply fit(Device::Access& device, Words const& words) {
    auto const sensors = image_sensors();
    std::string const name = words.size() == 1 ? words.front() : "";
    bool const is_sensor =
        std::any_of(sensors.begin(), sensors.end(), [&](SensorFacts const* sensor) { return name == sensor->name; });
    if (name != "none" && !is_sensor) {
        return usage_error(kFitUsage);
    }
    for (SensorFacts const* const sensor : sensors) {
        Error const error = make_present(device->nodes, sensor->node, name == sensor->name);
        if (!error.empty()) {
            return Reply::error(error);
        }
    }
    return Reply::done();
}

Reply trigger(Device::Access& device, Words const& words) {
    if (words == Words{"stop"}) {
        device->rtu.end_triggers_from_outside();
        return Reply::done();
    }
    bool const at_rate = words.size() == 3 && words[1] == "at";
    if (words.size() != 1 && !at_rate) {
        return usage_error(kTriggerUsage);
    }
    auto const count = parse_count(words[0]);
    auto const rate = at_rate ? parse_count(words[2]) : std::nullopt;
    if (!count || (at_rate && !rate)) {
        return Reply::error("a count and a rate are 1 to " + std::to_string(kMostTriggers));
    }
    device->rtu.trigger_from_outside(*count, rate);
    return Reply::done();
}

}  // namespace

void add_imaging_verbs(Commands& commands) {
    commands.add({"drive",
                  kDriveUsage,
                  "puts a level on the wire of a digital input, or none",
                  drive,
                  {},
                  false,
                  "PIN is 0 to 5. open: nobody drives the wire, as at first."});
    commands.add({"power",
                  kPowerUsage,
                  "what supplies the device, 24 V alone the digital I/O as well; its power as a whole",
                  power,
                  {},
                  false,
                  "off: every operation fails, and what has no memory of its own is forgotten."});
    commands.add({"fit",
                  kFitUsage,
                  "fits an image sensor: its node is there, the other's is not",
                  fit,
                  {},
                  false,
                  "A camera that is open on the sensor taken away fails."});
    commands.add(
        {"trigger",
         kTriggerUsage,
         "triggers from outside: all at once, or RATE in a second, the first now; no more of those that are to come",
         trigger,
         {},
         false,
         "Of triggers that come all at once, all but the first are missed."});
}

}  // namespace sim
