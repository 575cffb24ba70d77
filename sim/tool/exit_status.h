// The exit statuses of r47-sim itself, apart from those of the commands that it runs, as env and timeout have them.
#pragma once

#include <cstdio>
#include <string>

namespace sim {

constexpr int kRefused = 1;          // a control command
constexpr int kTimedOut = 124;       // a control command that was not answered in time
constexpr int kFailed = 125;         // r47-sim itself
constexpr int kNotUnderstood = 125;  // what it was told
constexpr int kNotExecutable = 126;  // the command of run
constexpr int kNotFound = 127;

// Prints the message, and answers the status.
inline int fail(int status, std::string const& message) {
    std::fprintf(stderr, "r47-sim: %s\n", message.c_str());
    return status;
}

}  // namespace sim
