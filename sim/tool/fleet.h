// Runs a command in the midst of many devices, each with a console that serves a client.
#pragma once

#include <string>
#include <vector>

namespace sim {

struct FleetOptions {
    int count = 0;                    // of devices, at most kLargestFleet
    std::string console;              // its program; empty: r47-console beside this one
    std::string name;                 // the devices are called NAME-1 and so on; empty: fleet and the process's number
    std::vector<std::string> member;  // options of r47-sim run for each
    bool usage = false;               // tells memory and processor of each at the end
    std::vector<std::string> command;
};

constexpr int kLargestFleet = 1000;

// "r47-sim fleet": in a network of their own, in which each console has an address of its own. Ends all of them with
// the command, however they are. Answers the command's exit status, or one of exit_status.h.
int run_fleet(FleetOptions const& options);

}  // namespace sim
