// Runs a command in the midst of many devices, each with a console that serves a client.
#include "sim/tool/fleet.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "sim/control/device_directory.h"
#include "sim/tool/execute.h"
#include "sim/tool/exit_status.h"
#include "sim/tool/private_network.h"
#include "sim/tool/program_file.h"
#include "sim/tool/publisher.h"
#include "sim/tool/sessions.h"

namespace sim {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr char const* kFleetFile = "R47_FLEET";
constexpr int kAddressesOfANetwork = 250;
constexpr milliseconds kPause{10};
constexpr seconds kLongestStart{60};  // of one device, with its console
constexpr seconds kLongestEnd{10};    // of one device whose programs are gone

struct Member {
    std::string name;
    std::string address;
    pid_t process = -1;  // r47-sim run; its session holds all that it starts
};

std::string address_of(int number) {
    return "127.32." + std::to_string(number / kAddressesOfANetwork) + "." +
           std::to_string(number % kAddressesOfANetwork + 1);
}

// In a child: it ends with its parent, however that does.
void end_with(pid_t parent) {
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != parent) {
        ::_exit(kFailed);
    }
}

volatile pid_t command = -1;
volatile std::sig_atomic_t interrupted = 0;

// Before there is a command it ends the start. What the terminal sends reaches the command by itself.
void take_signal(int signal) {
    if (command <= 0) {
        interrupted = 1;
    } else if (signal == SIGTERM || signal == SIGHUP) {
        ::kill(command, signal);
    }
}

// Devices whose consoles serve, until they are ended; those that end by themselves are nobody's concern.
class Fleet {
public:
    explicit Fleet(FleetOptions const& options) : options_(options) {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) == 0) {
            input_ = Descriptor(ends[0]);
            kept_open_ = Descriptor(ends[1]);
        }
    }
    Fleet(Fleet const&) = delete;
    Fleet& operator=(Fleet const&) = delete;

    ~Fleet() {
        for (Member const& member : members_) {
            ask_to_end(member);
        }
        for (Member const& member : members_) {
            end(member);
        }
        if (!file_.empty()) {
            ::unlink(file_.c_str());
        }
    }

    // All of them serve then.
    Error start() {
        std::string const name = options_.name.empty() ? "fleet" + std::to_string(::getpid()) : options_.name;
        for (int i = 0; i < options_.count; ++i) {
            Member member{name + "-" + std::to_string(i + 1), address_of(i)};
            if (!start(member)) {
                return member.name + ": " + std::strerror(errno);
            }
            members_.push_back(member);
        }
        for (Member const& member : members_) {
            Error error = wait_until_it_serves(member);
            if (!error.empty()) {
                return error;
            }
        }
        return write_file();
    }

    void print_usage() const {
        for (Member const& member : members_) {
            Usage const usage = usage_of_session(member.process);
            if (usage.memory > 0) {
                std::fprintf(stderr, "%s  %s  %.1f MB  %.2f s\n", member.name.c_str(), member.address.c_str(),
                             usage.memory / 1e6, usage.processor);
            } else {
                std::fprintf(stderr, "%s  %s  ended\n", member.name.c_str(), member.address.c_str());
            }
        }
    }

private:
    bool start(Member& member) const {
        Arguments words{program_path(program_invocation_name),
                        "run",
                        "--name",
                        member.name,
                        "--publish",
                        member.address + ":" + std::to_string(kConsolePort)};
        words.insert(words.end(), options_.member.begin(), options_.member.end());
        words.insert(words.end(), {"--", options_.console, "socket"});
        pid_t const fleet = ::getpid();
        member.process = ::fork();
        if (member.process == 0) {
            ::setsid();  // what the terminal sends is for the command
            end_with(fleet);
            int const null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
            ::dup2(input_.get(), STDIN_FILENO);
            ::dup2(null, STDOUT_FILENO);
            execute(words);
            ::_exit(fail(kFailed, words.front() + ": " + std::strerror(errno)));
        }
        return member.process > 0;
    }

    static Error wait_until_it_serves(Member const& member) {
        auto const end = std::chrono::steady_clock::now() + kLongestStart;
        while (!session_listens(member.process, kConsolePort)) {
            if (ends_within(member.process, kPause)) {
                return member.name + " ended before its console served a client";
            }
            if (interrupted != 0) {
                return "ended by a signal, before all consoles served a client";
            }
            if (std::chrono::steady_clock::now() > end) {
                return member.name + " did not come to serve a client";
            }
        }
        return {};
    }

    Error write_file() {
        std::string path = "/tmp/r47-fleet-XXXXXX";
        Descriptor const file(::mkostemp(path.data(), O_CLOEXEC));
        if (!file) {
            return path + ": " + std::strerror(errno);
        }
        file_ = path;
        for (Member const& member : members_) {
            std::string const line = member.name + " " + member.address + " " + std::to_string(kConsolePort) + "\n";
            if (::write(file.get(), line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
                return path + ": " + std::strerror(errno);
            }
        }
        ::setenv(kFleetFile, path.c_str(), 1);
        return {};
    }

    // Stopped ones, too. A console has nothing to lose; the device ends by itself when it is gone.
    static void ask_to_end(Member const& member) {
        for (pid_t const process : processes_of_session(member.process)) {
            if (process != member.process) {
                ::kill(process, SIGKILL);
            }
        }
        ::kill(member.process, SIGTERM);
        ::kill(member.process, SIGCONT);
    }

    // Also what it left in the background, and the directory of one that had to be killed.
    static void end(Member const& member) {
        auto const end = std::chrono::steady_clock::now() + kLongestEnd;
        while (!ends_within(member.process, kPause * 10) && std::chrono::steady_clock::now() < end) {
            ask_to_end(member);
        }
        ::kill(member.process, SIGKILL);
        for (pid_t const process : processes_of_session(member.process)) {
            ::kill(process, SIGKILL);
            ends_within(process, kLongestEnd);
        }
        wait_for(member.process);  // until here the number is nobody else's
        DeviceDirectory left;
        static_cast<void>(left.make(member.name));
    }

    FleetOptions const& options_;
    std::vector<Member> members_;
    std::string file_;
    // The consoles' terminal, at which nobody types: so a console stays when its client has gone, and its device with
    // it.
    Descriptor input_;
    Descriptor kept_open_;
};

int run_among(FleetOptions const& options) {
    pid_t const fleet = ::getpid();
    command = ::fork();
    if (command == 0) {
        end_with(fleet);
        for (int const signal : {SIGTERM, SIGHUP, SIGINT, SIGQUIT}) {
            std::signal(signal, SIG_DFL);
        }
        execute(options.command);
        ::_exit(fail(kNotExecutable, options.command.front() + ": " + std::strerror(errno)));
    }
    if (command > 0 && interrupted != 0) {
        ::kill(command, SIGTERM);  // the signal came between the start and the command
    }
    return command > 0 ? wait_for(command) : fail(kFailed, std::strerror(errno));
}

}  // namespace

int run_fleet(FleetOptions const& options) {
    int const missing = check_command(options.command.front());
    if (missing != 0) {
        return missing;
    }
    FleetOptions own = options;
    if (own.console.empty()) {
        std::string const self = program_path(program_invocation_name);
        own.console = self.substr(0, self.rfind('/') + 1) + "r47-console";
    }
    int const no_console = check_command(own.console);
    if (no_console != 0) {
        return no_console;
    }
    Error error = enter_private_network();
    if (!error.empty()) {
        return fail(kFailed, error);
    }
    for (int const signal : {SIGTERM, SIGHUP, SIGINT, SIGQUIT}) {
        std::signal(signal, take_signal);
    }
    Fleet fleet(own);
    error = fleet.start();
    if (!error.empty()) {
        return fail(kFailed, error);
    }
    int const status = run_among(own);
    if (own.usage) {
        fleet.print_usage();
    }
    return status;
}

}  // namespace sim
