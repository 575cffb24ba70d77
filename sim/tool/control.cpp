// Gives commands to a running device.
#include "sim/tool/control.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string_view>

#include "sim/control/command.h"
#include "sim/control/control_socket.h"

namespace sim {

namespace {

constexpr std::string_view kErrorMark = "error: ";

int fail(std::string const& message) {
    std::fprintf(stderr, "r47-sim: %s\n", message.c_str());
    return 1;
}

// Where root's devices are, whom `sudo` gives no runtime directory of its own; nobody else may look into it.
char const* const kRootsSockets = "/tmp/r47-sim-0";

std::string hint_at_root() {
    bool const may_be_roots = ::geteuid() != 0 && ::access(kRootsSockets, F_OK) == 0;
    return may_be_roots ? "; for a device that root started, use sudo" : "";
}

// The socket to talk to: the given one, that of the device around us, or the only one there is.
Error find_socket(std::string const& given, std::string& path) {
    char const* const around = std::getenv("R47_SIM_CONTROL");
    if (given.empty() && around != nullptr) {
        path = around;
    } else {
        path = given;
    }
    if (!path.empty()) {
        return {};
    }
    std::string const directory = default_socket_directory();
    auto const live = live_sockets(directory);
    if (live.size() == 1) {
        path = live.front();
        return {};
    }
    if (live.empty()) {
        return "no device is running: " + directory + " has no socket that answers" + hint_at_root();
    }
    Error error = "several devices are running, choose one with --control:";
    for (std::string const& socket : live) {
        error += "\n  " + socket;
    }
    return error;
}

class Connection {
public:
    explicit Connection(int fd) : fd_(fd) {}
    Connection(Connection const&) = delete;
    Connection& operator=(Connection const&) = delete;
    ~Connection() { ::close(fd_); }

    bool send(std::string const& text) const {
        for (std::size_t sent = 0; sent < text.size();) {
            ssize_t const count = ::send(fd_, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
            if (count < 0 && errno != EINTR) {
                return false;
            }
            sent += count > 0 ? static_cast<std::size_t>(count) : 0;
        }
        return true;
    }

    // False at the end.
    bool read_line(std::string& line) {
        std::size_t end = buffer_.find('\n');
        while (end == std::string::npos) {
            std::array<char, 4096> bytes{};
            ssize_t const count = ::recv(fd_, bytes.data(), bytes.size(), 0);
            if (count == 0 || (count < 0 && errno != EINTR)) {
                return false;
            }
            buffer_.append(bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
            end = buffer_.find('\n');
        }
        line = buffer_.substr(0, end);
        buffer_.erase(0, end + 1);
        return true;
    }

private:
    int fd_;
    std::string buffer_;
};

// Prints the reply to one command.
int print_reply(Connection& connection) {
    for (std::string line; connection.read_line(line);) {
        if (line == "ok") {
            return 0;
        }
        if (line.compare(0, kErrorMark.size(), kErrorMark) == 0) {
            return fail(line.substr(kErrorMark.size()));
        }
        std::printf("%s\n", line.c_str());
    }
    return fail("the device ended");
}

int give(Connection& connection, std::string const& command) {
    // Nothing is asked of the device by an empty line, and a line end inside a word would be two commands.
    if (command.find('\n') != std::string::npos) {
        return fail("a command is one line");
    }
    return connection.send(command + "\n") ? print_reply(connection) : fail("the device ended");
}

int give_standard_input(Connection& connection) {
    int status = 0;
    for (std::string line; std::getline(std::cin, line);) {
        status = give(connection, line) == 0 ? status : 1;
        std::fflush(stdout);
    }
    return status;
}

// The journal's lines follow for as long as the device runs.
void print_journal(Connection& connection) {
    for (std::string line; connection.read_line(line);) {
        std::printf("%s\n", line.c_str());
        std::fflush(stdout);
    }
}

}  // namespace

int control(std::vector<std::string> const& words) {
    bool const given = words.front() == "--control";
    if ((given && words.size() < 3) || (!given && words.front().substr(0, 2) == "--")) {
        fail("not understood: try r47-sim help");
        return 2;
    }
    Words const command(words.begin() + (given ? 2 : 0), words.end());
    std::string path;
    Error const error = find_socket(given ? words[1] : "", path);
    if (!error.empty()) {
        return fail(error);
    }
    int const fd = connect_to(path);
    if (fd < 0) {
        return fail("no device at " + path + ": " + std::strerror(errno));
    }
    Connection connection(fd);
    if (command == Words{"-"}) {
        return give_standard_input(connection);
    }
    int const status = give(connection, join_words(command));
    if (status == 0 && command.front() == "journal") {
        print_journal(connection);
    }
    return status;
}

}  // namespace sim
