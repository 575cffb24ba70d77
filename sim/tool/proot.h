// The sandbox by tracing, made with proot: for hosts without namespaces.
#pragma once

#include "sim/core/error.h"
#include "sim/tool/confinement.h"
#include "sim/tool/sandbox_view.h"

namespace sim {

enum class Tracing {
    available,
    refused,  // by the host
    no_tool   // proot is not installed
};

// Whether proot can trace programs here; `rights` are then those with which this program is to be seen from it.
Tracing try_tracing(Rights& rights);

// Turns this process into the parent of the command inside the sandbox; returns only with an error. Ends when the
// command and all that it started have ended, with the command's status. The sandbox's own files are in a private
// directory below /tmp, which goes in the end, however this process ends.
Error become_proot(SandboxView const& view, Rights rights, std::vector<std::string> const& command);

// The word by which r47-sim is started as the first program inside.
extern char const* const kInsideProot;
// It runs the command, waits for all that it starts, and answers the command's status (128 + number for a
// signal), which proot itself does not tell.
int run_inside_proot(std::vector<std::string> const& command);

}  // namespace sim
