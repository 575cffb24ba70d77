// Runs a command inside the virtual device.
#include "sim/tool/run.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "sim/tool/execute.h"
#include "sim/tool/exit_status.h"
#include "sim/tool/program_file.h"
#include "sim/tool/publisher.h"
#include "sim/tool/sandbox.h"

namespace sim {

namespace {

pid_t child = -1;

void pass_on(int signal) {
    ::kill(child, signal);
}

void handle(int signal, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    ::sigaction(signal, &action, nullptr);
}

// The command, which waits until the gate is opened. Before any thread is started.
class WaitingCommand {
public:
    explicit WaitingCommand(SandboxOptions const& options) {
        int gate[2];
        if (::pipe2(gate, O_CLOEXEC) != 0) {
            return;
        }
        child = ::fork();
        if (child == 0) {
            ::close(gate[1]);
            char open = 0;
            if (::read(gate[0], &open, 1) == 1) {
                Error const error = become_sandbox(options);
                ::_exit(fail(kFailed, error));
            }
            ::_exit(kFailed);
        }
        ::close(gate[0]);
        gate_ = Descriptor(gate[1]);
    }

    // Starts the command and waits for its end; the exit status.
    int run() {
        for (int const signal : {SIGTERM, SIGHUP}) {
            handle(signal, pass_on);
        }
        for (int const signal : {SIGINT, SIGQUIT}) {
            handle(signal, SIG_IGN);  // the terminal sends them to the command as well
        }
        // Its input and output are the command's alone.
        Descriptor const null(::open("/dev/null", O_RDWR | O_CLOEXEC));
        ::dup2(null.get(), STDIN_FILENO);
        ::dup2(null.get(), STDOUT_FILENO);
        [[maybe_unused]] auto const opened = ::write(gate_.get(), "", 1);
        return wait_for(child);
    }

    // The command is not run.
    void forget() {
        gate_ = Descriptor();
        wait_for(child);
    }

private:
    Descriptor gate_;
};

// What the run was for has not happened; the command's own failure goes first.
int fail_for(std::vector<std::string> const& unmet, char const* what, int status) {
    for (std::string const& one : unmet) {
        fail(kFailed, what + one);
    }
    return status == 0 && !unmet.empty() ? kFailed : status;
}

int run_in_own_device(RunOptions const& options) {
    RunningDevice device(options.own);
    Error error = device.prepare();
    if (!error.empty()) {
        return fail(kFailed, error);
    }
    SandboxOptions sandbox = options.sandbox;
    sandbox.device = device.directory();
    WaitingCommand command(sandbox);
    error = device.start();
    if (!error.empty()) {
        command.forget();
        return fail(kFailed, error);
    }
    int status = command.run();
    device.wait_until_unused();
    if (options.require_faults) {
        status = fail_for(device.unmet_faults(), "a fault rule never fired: ", status);
    }
    return fail_for(device.unmet_expectations(), "an expectation was not looked at: ", status);
}

int run_in_running_device(RunOptions const& options) {
    SandboxOptions sandbox = options.sandbox;
    Error error = find_device(options.device, sandbox.device);
    if (error.empty()) {
        error = become_sandbox(sandbox);
    }
    return fail(kFailed, error);
}

}  // namespace

int run_command(RunOptions options) {
    Error error = options.device.empty() ? check(options.own) : Error();
    if (!error.empty()) {
        return fail(kNotUnderstood, error);
    }
    std::error_code no_directory;
    static_cast<void>(std::filesystem::current_path(no_directory));
    if (no_directory) {
        return fail(kFailed, "the working directory: " + no_directory.message());
    }
    int const missing = check_command(options.sandbox.command.front());
    if (missing != 0) {
        return missing;
    }
    Descriptor published;
    if (options.published.port != 0) {
        published = listen_for_console(options.published, error);
        if (!error.empty()) {
            return fail(kFailed, error);
        }
        publish(published, options.sandbox);
    }
    return options.device.empty() ? run_in_own_device(options) : run_in_running_device(options);
}

}  // namespace sim
