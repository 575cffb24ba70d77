// Runs a command inside the virtual device.
#pragma once

#include <string>
#include <vector>

namespace sim {

// "r47-sim run": a command in a running device, or in one of its own that ends with it. `words`: [OPTION...] -- COMMAND
// [ARG...]. Answers the exit status of the command, 128 + number for a signal, or of r47-sim itself (exit_status.h).
int run_command(std::vector<std::string> const& words);

}  // namespace sim
