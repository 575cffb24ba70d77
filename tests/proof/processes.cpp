// Runs programs beside each other, each in a network of its own.
#include "tests/proof/processes.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace proof {

namespace {

using Clock = std::chrono::steady_clock;

pid_t start(Command const& command, int output) {
    std::vector<char*> words{const_cast<char*>(R47_OWN_NETWORK)};
    for (std::string const& word : command) {
        words.push_back(const_cast<char*>(word.c_str()));
    }
    words.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDERR_FILENO);
    pid_t pid = -1;
    int const error = ::posix_spawn(&pid, words.front(), &actions, nullptr, words.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        throw std::runtime_error("cannot start " + std::string(words.front()) + ": " + std::strerror(error));
    }
    return pid;
}

// Reads until the other end is closed; false when that takes too long.
bool read_all(int descriptor, std::chrono::seconds longest, std::string& text) {
    auto const deadline = Clock::now() + longest;
    while (true) {
        int wait = -1;
        if (longest.count() > 0) {
            auto const left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
            wait = std::max(static_cast<int>(left.count()), 0);
        }
        pollfd waited{descriptor, POLLIN, 0};
        if (::poll(&waited, 1, wait) == 0) {
            return false;
        }
        char buffer[4096];
        ssize_t const count = ::read(descriptor, buffer, sizeof buffer);
        if (count <= 0) {
            return true;
        }
        text.append(buffer, static_cast<std::size_t>(count));
    }
}

Outcome run(Command const& command, std::chrono::seconds longest) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    pid_t const pid = start(command, ends[1]);
    ::close(ends[1]);
    Outcome outcome;
    if (!read_all(ends[0], longest, outcome.output)) {
        ::kill(pid, SIGKILL);  // what it started dies with it
        outcome.output += "\nkilled: still running\n";
    }
    ::close(ends[0]);
    int status = 0;
    ::waitpid(pid, &status, 0);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return outcome;
}

}  // namespace

std::vector<Outcome> run_all(std::vector<Command> const& commands, Limits const& limits,
                             std::function<void(std::size_t, Outcome const&)> const& on_end) {
    std::vector<Outcome> outcomes(commands.size());
    std::atomic<std::size_t> next{0};
    std::mutex ending;
    std::exception_ptr failure;
    auto const work = [&] {
        for (std::size_t i = next++; i < commands.size(); i = next++) {
            try {
                outcomes[i] = run(commands[i], limits.longest);
                std::lock_guard<std::mutex> const lock(ending);
                if (on_end) {
                    on_end(i, outcomes[i]);
                }
            } catch (...) {
                std::lock_guard<std::mutex> const lock(ending);
                failure = std::current_exception();
                next = commands.size();
            }
        }
    };
    // A command dies with the thread that started it, so each thread stays until its commands have ended.
    std::vector<std::thread> workers;
    for (unsigned int i = 0; i < std::max(limits.jobs, 1U); ++i) {
        workers.emplace_back(work);
    }
    for (std::thread& worker : workers) {
        worker.join();
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
    return outcomes;
}

Command command_of(std::string const& program) {
    Command words;
    std::istringstream emulator(R47_EMULATOR);
    for (std::string word; emulator >> word;) {
        words.push_back(word);
    }
    words.push_back(program);
    return words;
}

}  // namespace proof
