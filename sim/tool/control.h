// Gives commands to a running device.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sim/core/clock.h"

namespace sim {

struct ControlOptions {
    std::string device;                // empty: the one there is
    std::optional<Duration> timeout;   // for each command
    std::vector<std::string> command;  // or "-": the lines of standard input
};

// Answers the exit status: 0 done, or one of exit_status.h.
int control(ControlOptions const& options);
// Prints the devices that run, with their programs. Returns 0.
int list_devices();

}  // namespace sim
