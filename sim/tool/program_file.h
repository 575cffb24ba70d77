// Whether a command can be started: there is such a program, and what the kernel starts in its place is there.
#pragma once

#include <string>

namespace sim {

// Looks for the command as a shell does: 0, or a status of exit_status.h, and then says why on standard error. The
// interpreter of a script and the loader of an executable are looked for too, and what these need in turn; files of
// other machines are not looked into.
int check_command(std::string const& command);

}  // namespace sim
