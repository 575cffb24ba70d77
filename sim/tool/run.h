// Runs a command inside the virtual device.
#pragma once

#include <string>
#include <vector>

namespace sim {

// `words`: [OPTION...] -- COMMAND [ARG...]. Becomes the command's sandbox and does not return, unless that fails:
// then it answers the exit status, 1 when the host refuses, 2 when `words` are not understood.
int run_in_sandbox(std::vector<std::string> const& words);

}  // namespace sim
