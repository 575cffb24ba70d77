// The processes of a session, as the kernel tells them: all that a session's first process has started.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <vector>

namespace sim {

// Without those that have ended and wait for their parent to look.
std::vector<pid_t> processes_of_session(pid_t session);

struct Usage {
    double memory = 0;     // bytes; what several processes share counts in parts
    double processor = 0;  // seconds, of the processes that are there
};

Usage usage_of_session(pid_t session);

// Whether one of its processes is in a network where somebody listens at this port of all addresses.
bool session_listens(pid_t session, unsigned short port);

// Whether the process ends within that time. A child is still to be waited for.
bool ends_within(pid_t process, std::chrono::milliseconds longest);

}  // namespace sim
