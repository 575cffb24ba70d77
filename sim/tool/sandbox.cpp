// Runs a command where the device's files exist and it counts as root.
#include "sim/tool/sandbox.h"

#include "sim/tool/bubblewrap.h"
#include "sim/tool/proot.h"

namespace sim {

namespace {

char const* const kNoSandbox =
    "this host allows neither namespaces (bwrap) nor tracing (proot): start the container with --cap-add SYS_PTRACE "
    "or --security-opt seccomp=unconfined, or use another host";

Error why_not(Namespaces namespaces, Tracing tracing) {
    if (namespaces == Namespaces::no_tool) {
        return "bwrap is missing: install the package bubblewrap";
    }
    if (tracing == Tracing::no_tool) {
        return "this host lets this user make no namespaces, and proot is missing: install the package proot";
    }
    return kNoSandbox;
}

}  // namespace

Error become_sandbox(SandboxOptions const& options) {
    std::vector<std::string> command = options.launcher;
    command.insert(command.end(), options.command.begin(), options.command.end());
    Arguments as_root;
    Namespaces const namespaces = try_namespaces(as_root);
    if (namespaces == Namespaces::available) {
        return become_bubblewrap(view_of(options), as_root, options.private_network, command);
    }
    if (options.private_network) {
        return "--private-network needs bwrap and a host that allows network namespaces; this one does not";
    }
    Rights rights = Rights::none;
    Tracing const tracing = try_tracing(rights);
    if (tracing == Tracing::available) {
        return become_proot(view_of(options), rights, command);
    }
    return why_not(namespaces, tracing);
}

}  // namespace sim
