// A client's connection to the control socket of a running device.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "sim/control/command.h"
#include "sim/core/descriptor.h"

namespace sim {

// For one thread.
class ControlLink {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    // How a command ended: as it was to, with an error of the device's, or without an answer.
    enum class End { done, refused, late, gone };
    struct Answer {
        End end;
        Error error;  // of all but `done`

        bool ok() const { return end == End::done; }
    };
    using LineTaker = std::function<void(std::string const& line)>;

    // Closed, with errno, where no device answers in `directory`.
    explicit ControlLink(std::string const& directory);

    explicit operator bool() const { return static_cast<bool>(socket_); }

    // Gives commands, each of which then has its answer to be taken. Blocks.
    void give(std::vector<std::string> const& commands);
    // Takes the answer to the next of them: its body line by line, as they come. One that has not come whole by then,
    // nothing: in whatever time, closes the link. Blocks.
    Answer take_answer(std::optional<Deadline> until, LineTaker const& take);
    // Both, of one command; the body is the reply's.
    Reply ask(std::string const& command, std::optional<Deadline> until);
    // The body of the next answer.
    Reply take_reply(std::optional<Deadline> until);

    // After a command that sends lines from then on. False at the end, which closes the link. Blocks.
    bool read_line(std::string& line);
    // The same: what has come meanwhile, no more than a megabyte. Does not block.
    std::vector<std::string> lines();

private:
    // False when the time is up, or the device has gone, which closes the link.
    bool receive(std::optional<Deadline> until);
    bool next_line(std::string& line);

    Descriptor socket_;
    std::string input_;
    std::size_t taken_ = 0;  // of the input
};

}  // namespace sim
