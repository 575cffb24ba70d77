// r47-panel, which "r47-sim panel" becomes: shows a device's front panel to a browser, until a signal ends it.

#include <fcntl.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/syscall.h>
#include <unistd.h>

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

namespace sim {

namespace {

struct PanelOptions {
    std::string device;
    std::uint16_t port = 0;
    std::optional<pid_t> beside;  // in the background, until this process ends
};

Error take_options(std::vector<std::string> const& words, PanelOptions& options) {
    Error error;
    for (std::size_t at = 0; at < words.size() && error.empty(); at += 2) {
        if (at + 1 == words.size() || (words[at] != "--device" && words[at] != "--port" && words[at] != "--beside")) {
            return "not understood: r47-sim panel [--device NAME] [--port N]";
        }
        std::string const& value = words[at + 1];
        if (words[at] == "--device") {
            options.device = value;
        } else if (words[at] == "--port") {
            options.port = parse_integer_as<std::uint16_t>(value).value_or(0);
            error = options.port == 0 ? "bad port " + value + ": 1 to 65535" : Error();
        } else {
            options.beside = parse_integer_as<pid_t>(value);
            error = options.beside.value_or(0) > 0 ? Error() : "bad process " + value;
        }
    }
    return error;
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
    PanelOptions options;
    Error error = take_options(words, options);
    if (!error.empty()) {
        return fail(kNotUnderstood, error);
    }
    if (options.device.empty()) {
        error = find_device("", options.device);
        if (!error.empty()) {
            return fail(kRefused, error);
        }
    }
    Descriptor neighbour;
    if (options.beside) {
        neighbour = Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, *options.beside, 0)));
        if (!neighbour) {
            return fail(kFailed, "no process " + std::to_string(*options.beside) + ": " + std::strerror(errno));
        }
    }
    sigset_t ending;
    sigemptyset(&ending);
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&ending, signal);
    }
    sigprocmask(SIG_BLOCK, &ending, nullptr);
    Descriptor const signals(::signalfd(-1, &ending, SFD_CLOEXEC));
    PanelServer server(options.device);
    error = server.listen(options.port);
    if (!error.empty()) {
        return fail(kFailed, error);
    }
    std::printf("panel %s\n", server.address().c_str());
    std::fflush(stdout);
    if (options.beside) {
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
