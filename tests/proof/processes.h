// Runs programs beside each other, each in a network of its own.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace proof {

using Command = std::vector<std::string>;

struct Outcome {
    int status = -1;     // of the exit; 128 + number for a signal
    std::string output;  // both streams
};

struct Limits {
    unsigned int jobs;                // commands at once, at least 1
    std::chrono::seconds longest{0};  // a command that has not ended by then is killed; 0: none is
};

// Runs the commands and answers in their order. `on_end` is called as each ends, never twice at once. Throws where
// one cannot be started.
std::vector<Outcome> run_all(std::vector<Command> const& commands, Limits const& limits,
                             std::function<void(std::size_t index, Outcome const&)> const& on_end = {});

// The words that start `program`, one of this build's.
Command command_of(std::string const& program);

}  // namespace proof
