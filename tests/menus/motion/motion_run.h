// What the transcripts of the motion menus share.
#pragma once

#include <string>
#include <vector>

#include "tests/support/console_session.h"

namespace motion {

inline std::string const kFirmwareAp = "/opt/kelvora/libhal/fw/kelvora-260AP_1.6.fw";
inline std::string const kFirmwareAb = "/opt/kelvora/libhal/fw/kelvora-260AB_turbo-1.x.fw";

inline std::string const kRtuConstruction = "rtu_t::rtu_t(\"/dev/r47-rtu-driver\", 2)";

inline std::string gyro_construction(std::string const& firmware = kFirmwareAp) {
    return "gyro_t::gyro_t(\"/dev/i2c-2\", 2, \"" + firmware + "\", \"/sys/class/gpio/gpio481/value\", 200)";
}

inline std::string button_construction(int line) {
    return "button_t::button_t(\"/dev/gpiochip1\", " + std::to_string(line) + ", true, 2000)";
}

// Time passes by `step` alone, and the sensor hub measures without noise.
inline support::SessionOptions stepped(std::vector<std::string> const& scenario = {}) {
    support::SessionOptions options;
    options.clock = "stepped";
    options.scenario = scenario;
    options.scenario.emplace_back("set orientation.noise 0");
    return options;
}

inline support::Calls operator+(support::Calls first, support::Calls const& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// The calls from the `first`-th on.
inline support::Calls calls_from(std::size_t first, support::Calls const& calls) {
    auto const begin = static_cast<std::ptrdiff_t>(std::min(first, calls.size()));
    return {calls.begin() + begin, calls.end()};
}

// The device state that the device shows.
inline int device_state(support::ConsoleSession& session) {
    std::string const answer = session.control("show --json system.state");
    return std::stoi(answer.substr(answer.find_first_of("0123456789")));
}

inline bool is_pressed(support::ConsoleSession& session) {
    return session.control("show --json button.pressed").find("true") != std::string::npos;
}

}  // namespace motion
