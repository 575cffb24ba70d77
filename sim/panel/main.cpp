// r47-panel, which "r47-sim panel" becomes: shows a device's front panel to a browser, until a signal ends it.

#include <fcntl.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "sim/control/device_directory.h"
#include "sim/core/descriptor.h"
#include "sim/core/numbers.h"
#include "sim/panel/panel_server.h"
#include "sim/tool/exit_status.h"
#include "sim/tool/options.h"

namespace sim {

namespace {

struct Settings {
    std::string device;
    std::uint16_t port = 0;
    std::optional<pid_t> beside;  // in the background, until this process ends
};

int say(std::string const& text) {
    std::fputs(text.c_str(), stdout);
    return 0;
}

// The status with which it ends, where it is asked for help or told what it does not understand.
std::optional<int> read_options(std::vector<std::string> words, PanelOptions& options) {
    CLI::App app{"Shows a device to a browser, and prints the address: what r47-sim panel becomes.", "r47-panel"};
    app.set_version_flag("--version", "r47-panel " R47_VERSION, "prints the version");
    add_panel_options(app, options);
    app.allow_extras();
    describe(app, "usage: r47-panel [OPTION...]\n");
    std::reverse(words.begin(), words.end());  // as the library wants them
    try {
        app.parse(words);
    } catch (CLI::CallForHelp const&) {
        return say(app.help());
    } catch (CLI::CallForVersion const& version) {
        return say(std::string(version.what()) + "\n");
    } catch (CLI::ParseError const& error) {
        return fail(kNotUnderstood, error.what());
    }
    if (app.remaining_size() > 0) {
        return fail(kNotUnderstood, unknown_option(app, app.remaining().front()));
    }
    return std::nullopt;
}

Error take(PanelOptions const& options, Settings& settings) {
    settings.device = options.device;
    if (!options.port.empty()) {
        settings.port = parse_integer_as<std::uint16_t>(options.port).value_or(0);
        if (settings.port == 0) {
            return "bad port " + options.port + ": 1 to 65535";
        }
    }
    if (!options.beside.empty()) {
        settings.beside = parse_integer_as<pid_t>(options.beside);
        if (settings.beside.value_or(0) <= 0) {
            return "bad process " + options.beside;
        }
    }
    return {};
}

// Away from the terminal and its signals. Before any thread is started; only the child comes back.
Error go_to_background() {
    std::fflush(stdout);
    pid_t const child = ::fork();
    if (child < 0) {
        return std::string("cannot go to the background: ") + std::strerror(errno);
    }
    if (child > 0) {
        std::_Exit(0);
    }
    ::setsid();
    Descriptor const null(::open("/dev/null", O_RDWR | O_CLOEXEC));
    for (int const stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        ::dup2(null.get(), stream);
    }
    return {};
}

int run(std::vector<std::string> const& words) {
    PanelOptions given;
    if (auto const status = read_options(words, given)) {
        return *status;
    }
    Settings settings;
    Error error = take(given, settings);
    if (!error.empty()) {
        return fail(kNotUnderstood, error);
    }
    if (settings.device.empty()) {
        error = find_device("", settings.device);
        if (!error.empty()) {
            return fail(kRefused, error);
        }
    }
    Descriptor neighbour;
    if (settings.beside) {
        neighbour = Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, *settings.beside, 0)));
        if (!neighbour) {
            return fail(kFailed, "no process " + std::to_string(*settings.beside) + ": " + std::strerror(errno));
        }
    }
    sigset_t ending;
    sigemptyset(&ending);
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&ending, signal);
    }
    sigprocmask(SIG_BLOCK, &ending, nullptr);
    Descriptor const signals(::signalfd(-1, &ending, SFD_CLOEXEC));
    PanelServer server(settings.device);
    error = server.listen(settings.port);
    if (!error.empty()) {
        return fail(kFailed, error);
    }
    std::printf("panel %s\n", server.address().c_str());
    std::fflush(stdout);
    if (settings.beside) {
        error = go_to_background();
        if (!error.empty()) {
            return fail(kFailed, error);
        }
    }
    server.start();
    pollfd waited[] = {{signals.get(), POLLIN, 0}, {neighbour.get(), POLLIN, 0}};
    while (::poll(waited, 2, -1) < 0 && errno == EINTR) {
    }
    std::_Exit(0);  // nothing is left behind, and what pages still ask for is not waited for
}

}  // namespace

}  // namespace sim

int main(int argc, char* argv[]) {
    return sim::run({argv + 1, argv + argc});
}
