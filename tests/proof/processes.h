// Runs programs beside each other, each in a network of its own.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace proof {

using Command = std::vector<std::string>;

struct Outcome {
    int status = -1;     // of the exit; 128 + number for a signal
    std::string output;  // both streams
};

// Runs the commands, at most `jobs` at once, and answers in their order. `on_end` is called as each ends, never
// twice at once. A command that has not ended after three minutes is killed. Throws where one cannot be started.
std::vector<Outcome> run_all(std::vector<Command> const& commands, unsigned int jobs,
                             std::function<void(std::size_t index, Outcome const&)> const& on_end = {});

// The value behind the option `name`, which is taken out of `arguments` with it; `fallback` where it is not given.
// Throws std::invalid_argument where it is no number.
unsigned long take_option(std::vector<std::string>& arguments, std::string const& name, unsigned long fallback);

}  // namespace proof
