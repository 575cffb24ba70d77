// Gives commands to a running device.
#pragma once

#include <string>
#include <vector>

namespace sim {

// `words`: [--control SOCKET] and the command, or "-" for the lines of standard input. Answers the exit status: 0 done,
// 1 refused or no device, 2 not understood.
int control(std::vector<std::string> const& words);

}  // namespace sim
