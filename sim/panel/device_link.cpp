// A connection to the control socket of a running device, with limits of time.
#include "sim/panel/device_link.h"

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

}  // namespace

DeviceLink::DeviceLink(std::string const& directory) : socket_(connect_to(control_socket(directory))) {}

void DeviceLink::give(std::vector<std::string> const& commands) {
    std::string lines;
    for (std::string const& command : commands) {
        lines += command + "\n";
    }
    if (socket_) {
        send_all(socket_.get(), lines.data(), lines.size());  // where it is refused already, the reply says why
    }
}

Reply DeviceLink::reply(Deadline until) {
    std::string body;
    while (socket_) {
        for (std::string line; next_line(line);) {
            if (line == "ok") {
                return Reply::done(body);
            }
            if (line.compare(0, kErrorMark.size(), kErrorMark) == 0) {
                return Reply::error(line.substr(kErrorMark.size()));
            }
            body += line + "\n";
        }
        if (!receive(until) && socket_) {
            socket_ = Descriptor();
            return Reply::error("the device did not answer in time");
        }
    }
    return Reply::error("the device has gone");
}

std::vector<std::string> DeviceLink::lines() {
    std::vector<std::string> lines;
    for (int i = 0; i < kMostAtOnce && socket_ && receive(Deadline()); ++i) {
    }
    for (std::string line; next_line(line);) {
        lines.push_back(line);
    }
    return lines;
}

bool DeviceLink::receive(Deadline until) {
    auto const left = std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now()).count();
    pollfd readable{socket_.get(), POLLIN, 0};
    int const ready = ::poll(&readable, 1, static_cast<int>(std::max<decltype(left)>(left, 0)));
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

bool DeviceLink::next_line(std::string& line) {
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
