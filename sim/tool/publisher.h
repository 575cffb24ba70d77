// Makes the console of a private network reachable from the host.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "sim/core/descriptor.h"
#include "sim/core/error.h"
#include "sim/tool/sandbox_view.h"

namespace sim {

// The word by which r47-sim is told, inside the sandbox, that it has a console to publish.
constexpr char const* kPublished = "--published";

// At which the console listens in its own network.
constexpr std::uint16_t kConsolePort = 32360;

// Where it is published.
struct PublishedAt {
    std::string address = "127.0.0.1";
    std::uint16_t port = 0;
};

// Listens there in this host's network, also for a process that then leaves it. Empty with `error` set otherwise.
Descriptor listen_for_console(PublishedAt const& place, Error& error);

// Gives the sandbox a private network, and its command the way out. `listener` must stay open until the command runs.
void publish(Descriptor const& listener, SandboxOptions& options);

// Inside the sandbox. `words`: the listener's descriptor, then the command. Carries what comes to the listener to the
// console's port, and back, for as long as the command runs; a connection that the console does not accept is closed.
// Answers the command's exit status.
int run_published(std::vector<std::string> const& words);

}  // namespace sim
