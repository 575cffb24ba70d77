// Gives commands to a running device.
#pragma once

#include <string>
#include <vector>

namespace sim {

// `words`: [--device NAME] and the command, or "-" for the lines of standard input. Answers the exit status: 0 done,
// or one of exit_status.h.
int control(std::vector<std::string> const& words);
// Prints the devices that run, with their programs. Returns 0.
int list_devices();

}  // namespace sim
