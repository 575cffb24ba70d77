// A client's connection to the control socket of a running device.
#include "sim/control/control_link.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>

#include "sim/control/device_directory.h"
#include "sim/core/unix_socket.h"

namespace sim {

namespace {

constexpr std::string_view kErrorMark = "error: ";
constexpr int kMostAtOnce = 64;  // receptions of lines: a flood holds nobody up

// Milliseconds, begun ones too; -1: for ever.
int left_until(std::optional<ControlLink::Deadline> until) {
    if (!until) {
        return -1;
    }
    auto const left = std::chrono::ceil<std::chrono::milliseconds>(*until - std::chrono::steady_clock::now());
    return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0));
}

}  // namespace

ControlLink::ControlLink(std::string const& directory) : socket_(connect_to(control_socket(directory))) {}

void ControlLink::give(std::vector<std::string> const& commands) {
    std::string lines;
    for (std::string const& command : commands) {
        lines += command + "\n";
    }
    if (socket_) {
        send_all(socket_.get(), lines.data(), lines.size());  // where it is refused already, the answer says why
    }
}

ControlLink::Answer ControlLink::take_answer(std::optional<Deadline> until, LineTaker const& take) {
    while (socket_) {
        for (std::string line; next_line(line);) {
            if (line == "ok") {
                return {End::done, {}};
            }
            if (line.compare(0, kErrorMark.size(), kErrorMark) == 0) {
                return {End::refused, line.substr(kErrorMark.size())};
            }
            take(line);
        }
        if (!receive(until) && socket_) {
            socket_ = Descriptor();  // what comes later is the answer to nothing
            return {End::late, "the device did not answer in time"};
        }
    }
    return {End::gone, "the device ended"};
}

Reply ControlLink::ask(std::string const& command, std::optional<Deadline> until) {
    give({command});
    return take_reply(until);
}

Reply ControlLink::take_reply(std::optional<Deadline> until) {
    std::string body;
    Answer const answer = take_answer(until, [&body](std::string const& line) { body += line + "\n"; });
    return answer.ok() ? Reply::done(body) : Reply::error(answer.error);
}

bool ControlLink::read_line(std::string& line) {
    while (!next_line(line)) {
        if (!socket_ || !receive(std::nullopt)) {
            return false;
        }
    }
    return true;
}

std::vector<std::string> ControlLink::lines() {
    for (int i = 0; i < kMostAtOnce && socket_ && receive(Deadline()); ++i) {
    }
    std::vector<std::string> lines;
    for (std::string line; next_line(line);) {
        lines.push_back(line);
    }
    return lines;
}

bool ControlLink::receive(std::optional<Deadline> until) {
    pollfd readable{socket_.get(), POLLIN, 0};
    int const ready = ::poll(&readable, 1, left_until(until));
    if (ready == 0) {
        return false;
    }
    std::array<char, 16384> bytes{};
    ssize_t const count = ready < 0 ? -1 : ::recv(socket_.get(), bytes.data(), bytes.size(), 0);
    if (count == 0 || (count < 0 && errno != EINTR)) {
        socket_ = Descriptor();
        return false;
    }
    input_.append(bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    return true;
}

bool ControlLink::next_line(std::string& line) {
    std::size_t const end = input_.find('\n', taken_);
    if (end == std::string::npos) {
        input_.erase(0, taken_);
        taken_ = 0;
        return false;
    }
    line = input_.substr(taken_, end - taken_);
    taken_ = end + 1;
    return true;
}

}  // namespace sim
