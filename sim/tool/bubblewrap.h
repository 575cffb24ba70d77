// The sandbox as a private mount namespace, made with bubblewrap.
#pragma once

#include "sim/core/error.h"
#include "sim/tool/execute.h"
#include "sim/tool/sandbox_view.h"

namespace sim {

enum class Namespaces {
    available,
    refused,  // by the host, to this user
    no_tool   // bubblewrap is not installed
};

// Whether bubblewrap can make the sandbox; `as_root` are then its arguments by which the command counts as root.
Namespaces try_namespaces(Arguments& as_root);

// Replaces this process by the command inside the sandbox; returns only with an error.
Error become_bubblewrap(SandboxView const& view, Arguments const& as_root, bool private_network,
                        std::vector<std::string> const& command);

}  // namespace sim
