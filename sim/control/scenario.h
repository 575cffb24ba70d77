// Scenario files: commands that a device carries out by itself, at its start or at their time.
#pragma once

#include <functional>
#include <istream>
#include <optional>
#include <string>
#include <vector>

#include "sim/device/device.h"

namespace sim {

struct ScenarioLine {
    int number;               // in the file, from 1
    std::optional<Time> due;  // since the start; nothing: at the start
    std::string command;
};

using Scenario = std::vector<ScenarioLine>;

// Reads lines of the form "[TIME] COMMAND"; empty lines and those that begin with # are left out. A time is one since
// the start, or with a + one since that of the line before. One beyond kLongestDuration is none, and so a bad command.
Scenario parse_scenario(std::istream& lines);
// Reads the file and carries it out on a device of its own without the files `missing`, so that a bad line is found
// before it is too late. An error names the file and, for a bad line, its number.
Error load_scenario(std::string const& path, Scenario& scenario, std::vector<std::string> const& missing = {});
// Carries out what is due at the start and sets the rest to its time. The first error ends it; that of a line with a
// time goes to `fail`, without which it ends the process with status 125, as half a scenario must not go on as if it
// were whole.
Error start_scenario(Scenario const& scenario, Device& device, std::function<void(Error const&)> const& fail = {});

}  // namespace sim
