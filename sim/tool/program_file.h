// Whether a program's file can be started: what the kernel starts in its place is there.
#pragma once

#include <string>

#include "sim/core/error.h"

namespace sim {

// Why it cannot: the interpreter of a script or the loader of an executable is missing, or what that needs in turn;
// with `name` in front. Files of other machines are not looked into.
Error why_not_startable(std::string const& name, std::string const& path);

}  // namespace sim
