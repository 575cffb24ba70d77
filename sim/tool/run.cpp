// Runs a command inside the virtual device.
#include "sim/tool/run.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "sim/control/command.h"
#include "sim/control/control_socket.h"
#include "sim/control/scenario.h"
#include "sim/device/nodes.h"
#include "sim/tool/sandbox.h"

namespace sim {

namespace {

constexpr int kRefused = 1;
constexpr int kNotUnderstood = 2;

int fail(int status, std::string const& message) {
    std::fprintf(stderr, "r47-sim: %s\n", message.c_str());
    return status;
}

bool is_device_file(std::string const& path) {
    auto const& files = device_files();
    return std::any_of(files.begin(), files.end(), [&](NodeFile const& file) { return file.path == path; });
}

// Takes the option at `at` with its value; `at` moves on to the next.
Error take_option(std::vector<std::string> const& words, std::size_t& at, SandboxOptions& options) {
    std::string const& name = words[at++];
    if (name == "--private-network") {
        options.private_network = true;
        return {};
    }
    bool const known =
        name == "--without" || name == "--journal" || name == "--scenario" || name == "--control" || name == "--clock";
    if (!known) {
        return "unknown option " + name + ": try r47-sim help";
    }
    if (at == words.size()) {
        return name + " needs a value";
    }
    std::string const& value = words[at++];
    if (name == "--without") {
        options.without.push_back(value);
        return is_device_file(value) ? Error() : value + " is no file of the device";
    }
    if (name == "--journal") {
        options.journal = value;
    } else if (name == "--scenario") {
        options.scenario = value;
    } else if (name == "--control") {
        options.control = value;
    } else {
        options.clock = value;
        if (value == "scaled" && at < words.size()) {
            options.clock += " " + words[at++];
        }
    }
    return {};
}

Error take_options(std::vector<std::string> const& words, SandboxOptions& options) {
    std::size_t at = 0;
    while (at < words.size() && words[at] != "--") {
        Error error = take_option(words, at, options);
        if (!error.empty()) {
            return error;
        }
    }
    if (at + 1 >= words.size()) {
        return "no command given: r47-sim run [OPTION...] -- COMMAND [ARG...]";
    }
    options.command.assign(words.begin() + static_cast<std::ptrdiff_t>(at) + 1, words.end());
    return {};
}

// What would end the program inside, found before it starts.
Error check_settings(SandboxOptions const& options) {
    if (!options.clock.empty()) {
        Device device(std::make_unique<MemoryFileSystem>());
        Reply const reply = device_commands().run({device, {}}, "clock " + options.clock);
        if (!reply.ok) {
            return reply.text;
        }
    }
    Scenario scenario;
    return options.scenario.empty() ? Error() : load_scenario(options.scenario, scenario, options.without);
}

Error prepare_journal(std::string const& path) {
    if (path.empty()) {
        return {};
    }
    int const fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0) {
        return "cannot write the journal " + path + ": " + std::strerror(errno);
    }
    ::close(fd);
    return {};
}

Error prepare_control(std::string& path) {
    if (path.empty()) {
        path = default_socket_directory() + "/" + std::to_string(::getpid()) + ".sock";
    }
    return prepare_socket_directory(directory_of(path));
}

}  // namespace

int run_in_sandbox(std::vector<std::string> const& words) {
    SandboxOptions options;
    Error error = take_options(words, options);
    if (error.empty()) {
        error = check_settings(options);
    }
    if (!error.empty()) {
        return fail(kNotUnderstood, error);
    }
    error = prepare_journal(options.journal);
    if (error.empty()) {
        error = prepare_control(options.control);
    }
    if (error.empty()) {
        error = become_sandbox(options);
    }
    return fail(kRefused, error);
}

}  // namespace sim
