// Unix stream sockets by their path.
#pragma once

#include <string>

#include "sim/core/descriptor.h"
#include "sim/core/error.h"

namespace sim {

// The longest path that an address takes.
std::size_t longest_socket_path();

// Empty with errno when nobody listens at `path`.
Descriptor connect_to(std::string const& path);

// Listens at `path`, for this user alone; empty with `error` set otherwise. The socket stands at `path` only when it
// can be connected to, and takes the place of a file that is there.
Descriptor listen_on(std::string const& path, Error& error);

// The next connection; empty with errno otherwise: where there is no descriptor for it, it goes on waiting. Blocks.
Descriptor accept_from(Descriptor const& listener);

// Whether the host has no descriptor or memory left, which passes: errno of accept_from().
bool is_shortage(int error);

// The process at the other end when it connected, as this one sees it; 0 where it sees none.
int process_at(int connection);

// Whether the other end has been closed: nobody reads there any more.
bool is_hung_up(int connection);

// Sends all of it; false when the other end has gone. Blocks.
bool send_all(int descriptor, char const* bytes, std::size_t size);

}  // namespace sim
