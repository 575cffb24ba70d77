// Gives commands to a running device.
#include "sim/tool/control.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iostream>
#include <optional>
#include <string_view>

#include "sim/control/command.h"
#include "sim/control/device_directory.h"
#include "sim/control/property_table.h"
#include "sim/core/text.h"
#include "sim/core/unix_socket.h"
#include "sim/tool/exit_status.h"
#include "sim/tool/terminal.h"

namespace sim {

namespace {

constexpr std::string_view kErrorMark = "error: ";
constexpr std::chrono::seconds kListPatience{2};  // with each of the devices

int fail(std::string const& message) {
    return sim::fail(kRefused, message);
}

using SteadyTime = std::chrono::steady_clock::time_point;

class ControlConnection {
public:
    explicit ControlConnection(Descriptor socket) : socket_(std::move(socket)) {}

    bool send(std::string const& text) const { return send_all(socket_.get(), text.data(), text.size()); }

    // From now on what read_line() waits for must have come `longest` later.
    void limit(Duration longest) { end_ = std::chrono::steady_clock::now() + longest; }
    // From now on it waits for ever.
    void lift_limit() { end_.reset(); }
    bool timed_out() const { return end_ && left() == 0; }

    // False at the end, and when the time is up.
    bool read_line(std::string& line) {
        std::size_t end = buffer_.find('\n');
        while (end == std::string::npos) {
            pollfd readable{socket_.get(), POLLIN, 0};
            int const ready = ::poll(&readable, 1, end_ ? left() : -1);
            if (ready == 0) {
                return false;
            }
            std::array<char, 4096> bytes{};
            ssize_t const count = ready < 0 ? -1 : ::recv(socket_.get(), bytes.data(), bytes.size(), 0);
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
    // Milliseconds, begun ones too.
    int left() const {
        auto const left = std::chrono::ceil<std::chrono::milliseconds>(*end_ - std::chrono::steady_clock::now());
        return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0));
    }

    Descriptor const socket_;
    std::string buffer_;
    std::optional<SteadyTime> end_;
};

using LinePrinter = std::function<void(std::string const& line)>;

void print_line(std::string const& line) {
    std::printf("%s\n", printable(line).c_str());
    std::fflush(stdout);
}

// A command, and where it comes from as errors name it: "line 3: ", or nothing.
struct Given {
    std::string command;
    std::string where{};
};

// No reply any more.
int no_reply(ControlConnection const& connection, Given const& given) {
    return connection.timed_out() ? sim::fail(kTimedOut, given.where + "the device did not answer in time")
                                  : fail(given.where + "the device ended");
}

// Prints the reply to one command.
int print_reply(ControlConnection& connection, Given const& given, LinePrinter const& print) {
    for (std::string line; connection.read_line(line);) {
        if (line == "ok") {
            return 0;
        }
        if (line.compare(0, kErrorMark.size(), kErrorMark) == 0) {
            return fail(given.where + printable(line.substr(kErrorMark.size())));
        }
        print(line);
    }
    return no_reply(connection, given);
}

int give(ControlConnection& connection, Given const& given, LinePrinter const& print = print_line) {
    // Nothing is asked of the device by an empty line, and a line end inside a word would be two commands.
    if (given.command.find('\n') != std::string::npos) {
        return fail(given.where + "a command is one line");
    }
    connection.send(given.command + "\n");  // where it is refused already, the reply says why
    return print_reply(connection, given, print);
}

// The device's state as a table that suits this terminal.
int show_on_terminal(ControlConnection& connection, Words words) {
    words.insert(words.begin() + 1, "--json");
    std::string json;
    int const status = give(connection, {join_words(words)}, [&](std::string const& line) { json += line + "\n"; });
    if (status == 0) {
        std::fputs(property_table(json, {terminal_width(), terminal_has_colours()}).c_str(), stdout);
    }
    return status;
}

// Each command has the time; one that is not answered in it is the last.
int give_standard_input(ControlConnection& connection, std::optional<Duration> timeout) {
    int status = 0;
    int number = 0;
    for (std::string line; status != kTimedOut && std::getline(std::cin, line);) {
        if (timeout) {
            connection.limit(*timeout);
        }
        int const given = give(connection, {line, "line " + std::to_string(++number) + ": "});
        status = given == 0 ? status : given;
        std::fflush(stdout);
    }
    return status;
}

// The lines of the journal, or of changes, follow for as long as the device runs.
void print_stream(ControlConnection& connection) {
    connection.lift_limit();
    for (std::string line; connection.read_line(line);) {
        std::printf("%s\n", printable(line).c_str());
        std::fflush(stdout);
    }
}

// "bench (r47-console.1)"; the name alone where it has no programs, or does not answer.
std::string with_programs(FoundDevice const& device) {
    std::string programs;
    if (Descriptor socket = connect_to(control_socket(device.directory))) {
        ControlConnection connection(std::move(socket));
        connection.limit(kListPatience);
        connection.send("programs\n");
        for (std::string line; connection.read_line(line) && line != "ok";) {
            programs += (programs.empty() ? "" : ", ") + printable(line.substr(0, line.find(' ')));
        }
    }
    return printable(device.name) + (programs.empty() ? "" : " (" + programs + ")");
}

bool is_table(Words const& words) {
    return words.front() == "show" && (words.size() == 1 || words[1].compare(0, 2, "--") != 0);
}

}  // namespace

int control(ControlOptions const& options) {
    std::string directory;
    Error const error = find_device(options.device, directory, with_programs);
    if (!error.empty()) {
        return fail(error);
    }
    Descriptor socket = connect_to(control_socket(directory));
    if (!socket) {
        return fail("no device in " + directory + ": " + std::strerror(errno));
    }
    ControlConnection connection(std::move(socket));
    if (options.command == Words{"-"}) {
        return give_standard_input(connection, options.timeout);
    }
    if (options.timeout) {
        connection.limit(*options.timeout);
    }
    if (is_table(options.command) && ::isatty(STDOUT_FILENO) != 0) {
        return show_on_terminal(connection, options.command);
    }
    int const status = give(connection, {join_words(options.command)});
    if (status == 0 && (options.command.front() == "journal" || options.command.front() == "watch")) {
        print_stream(connection);
    }
    return status;
}

int list_devices() {
    for (FoundDevice const& device : find_devices()) {
        std::printf("%s  %lld s  %s\n", printable(device.name).c_str(), static_cast<long long>(device.age.count()),
                    printable(device.directory).c_str());
        std::fflush(stdout);
        Descriptor socket = connect_to(control_socket(device.directory));
        if (socket) {
            ControlConnection connection(std::move(socket));
            connection.limit(kListPatience);
            give(connection, {"programs"});
        }
    }
    return 0;
}

}  // namespace sim
