// A connection to the control socket of a running device, with limits of time.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "sim/control/command.h"
#include "sim/core/descriptor.h"

namespace sim {

class DeviceLink {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    // Closed where no device answers in `directory`.
    explicit DeviceLink(std::string const& directory);

    explicit operator bool() const { return static_cast<bool>(socket_); }

    // Gives commands, each of which then has its reply to be taken. Blocks.
    void give(std::vector<std::string> const& commands);
    // The reply to the next of them. Where the device has gone or does not answer until then, it is an error and the
    // link is closed. Blocks.
    Reply reply(Deadline until);
    // Both, of one command.
    Reply ask(std::string const& command, Deadline until) {
        give({command});
        return reply(until);
    }
    // After "journal follow": the lines that have come, no more than a megabyte. Closes the link where the device has
    // gone.
    std::vector<std::string> lines();

private:
    // False when the time is up, or the device has gone, which closes the link.
    bool receive(Deadline until);
    bool next_line(std::string& line);

    Descriptor socket_;
    std::string input_;
    std::size_t taken_ = 0;  // of the input
};

}  // namespace sim
