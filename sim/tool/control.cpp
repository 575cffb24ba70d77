// Gives commands to a running device.
#include "sim/tool/control.h"

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <optional>

#include "sim/control/command.h"
#include "sim/control/control_link.h"
#include "sim/control/device_directory.h"
#include "sim/control/property_table.h"
#include "sim/core/text.h"
#include "sim/tool/exit_status.h"
#include "sim/tool/terminal.h"

namespace sim {

namespace {

constexpr std::chrono::seconds kListPatience{2};  // with each of the devices

int fail(std::string const& message) {
    return sim::fail(kRefused, message);
}

using LinePrinter = ControlLink::LineTaker;

void print_line(std::string const& line) {
    std::printf("%s\n", printable(line).c_str());
    std::fflush(stdout);
}

// The longest that a command may take; nothing: any time.
using Limit = std::optional<Duration>;

std::optional<ControlLink::Deadline> from_now(Limit limit) {
    return limit ? std::optional(std::chrono::steady_clock::now() + *limit) : std::nullopt;
}

// A command, and where it comes from as errors name it: "line 3: ", or nothing.
struct Given {
    std::string command;
    std::string where{};
};

// Prints the answer, and answers the status.
int give(ControlLink& link, Limit limit, Given const& given, LinePrinter const& print = print_line) {
    // Nothing is asked of the device by an empty line, and a line end inside a word would be two commands.
    if (given.command.find('\n') != std::string::npos) {
        return fail(given.where + "a command is one line");
    }
    auto const until = from_now(limit);
    link.give({given.command});
    auto const [end, error] = link.take_answer(until, print);
    switch (end) {
        case ControlLink::End::done:
            return 0;
        case ControlLink::End::late:
            return sim::fail(kTimedOut, given.where + error);
        case ControlLink::End::refused:
        case ControlLink::End::gone:
            break;
    }
    return fail(given.where + printable(error));
}

// The device's state as a table that suits this terminal.
int show_on_terminal(ControlLink& link, Limit limit, Words words) {
    words.insert(words.begin() + 1, "--json");
    std::string json;
    int const status = give(link, limit, {join_words(words)}, [&](std::string const& line) { json += line + "\n"; });
    if (status == 0) {
        std::fputs(property_table(json, {terminal_width(), terminal_has_colours()}).c_str(), stdout);
    }
    return status;
}

// Each command has the time; one that is not answered in it is the last.
int give_standard_input(ControlLink& link, Limit limit) {
    int status = 0;
    int number = 0;
    for (std::string line; status != kTimedOut && std::getline(std::cin, line);) {
        int const given = give(link, limit, {line, "line " + std::to_string(++number) + ": "});
        status = given == 0 ? status : given;
        std::fflush(stdout);
    }
    return status;
}

// The lines of the journal, or of changes, follow for as long as the device runs.
void print_stream(ControlLink& link) {
    for (std::string line; link.read_line(line);) {
        print_line(line);
    }
}

// "bench (r47-console.1)"; the name alone where it has no programs, or does not answer.
std::string with_programs(FoundDevice const& device) {
    std::string programs;
    ControlLink link(device.directory);
    link.give({"programs"});
    link.take_answer(from_now(kListPatience), [&programs](std::string const& line) {
        programs += (programs.empty() ? "" : ", ") + printable(line.substr(0, line.find(' ')));
    });
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
    ControlLink link(directory);
    if (!link) {
        return fail("no device in " + directory + ": " + std::strerror(errno));
    }
    if (options.command == Words{"-"}) {
        return give_standard_input(link, options.timeout);
    }
    if (is_table(options.command) && ::isatty(STDOUT_FILENO) != 0) {
        return show_on_terminal(link, options.timeout, options.command);
    }
    int const status = give(link, options.timeout, {join_words(options.command)});
    if (status == 0 && (options.command.front() == "journal" || options.command.front() == "watch")) {
        print_stream(link);
    }
    return status;
}

int list_devices() {
    for (FoundDevice const& device : find_devices()) {
        std::printf("%s  %lld s  %s\n", printable(device.name).c_str(), static_cast<long long>(device.age.count()),
                    printable(device.directory).c_str());
        std::fflush(stdout);
        ControlLink link(device.directory);
        if (link) {
            give(link, kListPatience, {"programs"});
        }
    }
    return 0;
}

}  // namespace sim
