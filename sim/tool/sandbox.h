// The private mount namespace in which the device's files exist, made with bubblewrap.
#pragma once

#include <string>
#include <vector>

#include "sim/device/properties.h"

namespace sim {

struct SandboxOptions {
    std::vector<std::string> command;
    std::vector<std::string> without;  // files of the device to leave out
    std::string journal;               // empty: none; otherwise exists
    std::string scenario;              // empty: none
    std::string control;               // a path in a private directory
    std::string clock;                 // empty: real
    bool private_network = false;
};

// Replaces this process by the command inside the sandbox; returns only with an error.
Error become_sandbox(SandboxOptions const& options);

}  // namespace sim
