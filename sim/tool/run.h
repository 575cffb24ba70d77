// Runs a command inside the virtual device.
#pragma once

#include <string>

#include "sim/tool/publisher.h"
#include "sim/tool/running_device.h"
#include "sim/tool/sandbox_view.h"

namespace sim {

struct RunOptions {
    SandboxOptions sandbox;
    std::string device;  // a running one; empty: one of its own
    DeviceOptions own;
    bool require_faults = false;  // of the device's own rules that each fires
    PublishedAt published;        // where the command's console is reached; port 0: nowhere
};

// "r47-sim run": a command in a running device, or in one of its own that ends with it. Answers the exit status of the
// command, 128 + number for a signal, or of r47-sim itself (exit_status.h).
int run_command(RunOptions options);

}  // namespace sim
