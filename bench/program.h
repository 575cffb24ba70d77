// A program with a benchmark at its terminal.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

// It is killed with its object, where nobody has waited for its end.
class Program {
public:
    // The program, looked for as a shell does, and its arguments.
    explicit Program(std::vector<std::string> words) {
        int in[2];
        int out[2];
        posix_spawn_file_actions_t ends;
        ::posix_spawn_file_actions_init(&ends);
        if (::pipe2(in, O_CLOEXEC) != 0 || ::pipe2(out, O_CLOEXEC) != 0 ||
            ::posix_spawn_file_actions_adddup2(&ends, in[0], STDIN_FILENO) != 0 ||
            ::posix_spawn_file_actions_adddup2(&ends, out[1], STDOUT_FILENO) != 0) {
            std::perror("pipes");
            std::exit(1);
        }
        std::vector<char*> arguments;
        for (std::string& word : words) {
            arguments.push_back(word.data());
        }
        arguments.push_back(nullptr);
        if (int const error = ::posix_spawnp(&pid_, arguments[0], &ends, nullptr, arguments.data(), environ)) {
            std::fprintf(stderr, "%s: %s\n", arguments[0], std::strerror(error));
            std::exit(1);
        }
        ::posix_spawn_file_actions_destroy(&ends);
        ::close(in[0]);
        ::close(out[1]);
        input_ = in[1];
        output_ = out[0];
    }
    Program(Program const&) = delete;
    Program& operator=(Program const&) = delete;
    ~Program() {
        if (!has_ended_) {
            ::kill(pid_, SIGKILL);
            wait();
        }
        ::close(input_);
        ::close(output_);
    }

    pid_t pid() const { return pid_; }

    void type(std::string_view keys) const {
        [[maybe_unused]] auto const count = ::write(input_, keys.data(), keys.size());
    }

    // What it prints next; empty at its end. Blocks.
    std::string read() const {
        char bytes[4096];
        ssize_t const count = ::read(output_, bytes, sizeof bytes);
        return {bytes, count > 0 ? static_cast<std::size_t>(count) : 0};
    }

    // Whether it prints something or ends within so many milliseconds.
    bool says_more(int limit) const {
        pollfd more{output_, POLLIN, 0};
        return ::poll(&more, 1, limit) > 0;
    }

    // All that it prints until the first text stands in it, and the second behind that.
    std::string wait_for(std::string const& text, std::string const& behind = "") const {
        std::string printed;
        std::size_t at;
        while ((at = printed.find(text)) == std::string::npos || printed.find(behind, at) == std::string::npos) {
            std::string const bytes = says_more(kLimit) ? read() : "";
            if (bytes.empty()) {
                std::fprintf(stderr, "the program says nothing more behind: %s\n", printed.c_str());
                std::exit(1);
            }
            printed += bytes;
        }
        return printed;
    }

    // Blocks until it has ended.
    void wait() {
        ::waitpid(pid_, nullptr, 0);
        has_ended_ = true;
    }

private:
    static constexpr int kLimit = 60000;  // ms, that no working program reaches

    pid_t pid_ = -1;
    bool has_ended_ = false;
    int input_ = -1;
    int output_ = -1;
};

}  // namespace bench
