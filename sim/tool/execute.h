// Starting other programs.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace sim {

using Arguments = std::vector<std::string>;

// Replaces this process, the program found as execvp does; returns on failure with errno set.
void execute(Arguments const& arguments);

// The exit status of a quiet run; 127 when the program cannot be executed. `prepare` is called in the new process.
int try_quietly(Arguments const& arguments, std::function<void()> const& prepare = {});

// Waits for a child; its exit status, 128 + number for a signal.
int wait_for(int child);

}  // namespace sim
