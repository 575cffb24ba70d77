// Runs a command where the device's files exist and it counts as root.
#pragma once

#include "sim/core/error.h"
#include "sim/tool/sandbox_view.h"

namespace sim {

// Turns this process into the command inside its sandbox, by namespaces where the host allows them, else by proot.
// Returns only with an error.
Error become_sandbox(SandboxOptions const& options);

}  // namespace sim
