// What the transcripts of the motion menus share.
#pragma once

#include <string>
#include <vector>

#include "tests/menus/menu_run.h"

namespace motion {

using namespace menus;

// Time passes by `step` alone, and the sensor hub measures without noise, its heading without drift.
inline support::SessionOptions stepped(std::vector<std::string> const& scenario = {}) {
    return options_for(kGyro, with_scenario(scenario));
}

// Whatever starts a menu with a hub, holds it or sets something fails.
inline support::SessionOptions with_failing_hub() {
    return with_scenario({"fault add *::boot status -1", "fault add *::in* status -1",
                          "fault add *::activate* status -1", "fault add *::set_* status -1",
                          "fault add *::irq_* status -1"});
}

// Key 't' of the menus with a hub, which holds the callbacks and releases them in turn.
inline Step const kHold{'t', "", "", {"gyro_t::irq_callback_hold(true) = 0"}};
inline Step const kRelease{'t', "", "", {"gyro_t::irq_callback_hold(false) = 0"}};

// The calls, where all fail by -1 that succeeded by 0.
inline Calls with_failures(Calls calls) {
    for (std::string& call : calls) {
        if (call.size() > 4 && call.compare(call.size() - 4, 4, " = 0") == 0) {
            call.replace(call.size() - 1, 1, "-1");
        }
    }
    return calls;
}

// A device that is no R47: it has none of its three drivers.
inline support::SessionOptions of_another_variant() {
    support::SessionOptions options;
    options.without = {"/dev/r47-rtu-driver", "/dev/r47-autofocus-driver", "/dev/r47-illumination-driver"};
    return options;
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
