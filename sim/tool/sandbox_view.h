// What a program inside the virtual device sees of files, and as whom: one description for every kind of sandbox.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "sim/device/nodes.h"

namespace sim {

struct SandboxOptions {
    std::vector<std::string> command;
    std::vector<std::string> launcher;  // a command that starts it, given as its last arguments; empty: none
    std::string device;                 // its directory
    bool private_network = false;
};

// The sandbox begins with an empty root directory. Of steps for the same path the last one counts.
struct ViewStep {
    enum class Kind {
        read_only,   // `content` is a path of the host, seen at `path`
        writable,    // the same, to be changed
        link,        // a symbolic link to `content`
        devices,     // /dev with what every program expects there: null, tty, pts ...
        directory,   // empty, the sandbox's own
        scratch,     // the same, for everybody (mode 1777)
        device_file  // a file with `content`, the sandbox's own (mode 0600)
    };
    Kind kind;
    std::string path;
    std::string content{};
};

struct SandboxView {
    std::vector<ViewStep> steps;
    std::string working_directory;
    std::vector<std::pair<std::string, std::string>> environment;  // name and value; empty: not set
};

SandboxView view_of(SandboxOptions const& options);

// A program's file, found as execvp does; `command` itself where there is none.
std::string program_path(std::string const& command);

}  // namespace sim
