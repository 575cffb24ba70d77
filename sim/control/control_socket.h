// Where the control sockets of running devices are, and how to reach one.
#pragma once

#include <string>
#include <vector>

#include "sim/device/properties.h"

namespace sim {

// The directory for sockets that were given no name: $XDG_RUNTIME_DIR/r47-sim, or /tmp/r47-sim-UID where that cannot
// be written.
std::string default_socket_directory();
// Makes `directory` if it is missing. It must be a directory of this user's that nobody else can enter.
Error prepare_socket_directory(std::string const& directory);
// The directory part of a path; "." when it has none.
std::string directory_of(std::string const& path);

// A descriptor that listens on `path`, -1 with `error` set otherwise. Takes a dead socket's place, not a live one's.
int listen_on(std::string const& path, Error& error);
// A connected descriptor, or -1 with errno. ECONNREFUSED: nobody listens any more.
int connect_to(std::string const& path);

// The sockets in `directory` that answer. Removes those that do not.
std::vector<std::string> live_sockets(std::string const& directory);

}  // namespace sim
