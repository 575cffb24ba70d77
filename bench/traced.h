// How many system calls a process makes while something happens.
#pragma once

#include <dirent.h>
#include <sys/ptrace.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace bench {

// Follows a child of this process from now on, with the threads that it has. For the thread that made it alone, and for
// the last thing that is done with the child, which is killed with this process.
class Traced {
public:
    explicit Traced(pid_t pid) {
        std::string const tasks = "/proc/" + std::to_string(pid) + "/task";
        DIR* const directory = ::opendir(tasks.c_str());
        while (dirent const* const task = directory ? ::readdir(directory) : nullptr) {
            if (task->d_name[0] != '.') {
                seize(std::atoi(task->d_name));
            }
        }
        ::closedir(directory);
    }

    // The calls that were begun until `done` says so; it is asked all the time.
    template <typename Done>
    long calls_until(Done done) const {
        long begun = 0;
        while (!done()) {
            int status = 0;
            pid_t const thread = ::waitpid(-1, &status, __WALL | WNOHANG);
            if (thread <= 0 || !WIFSTOPPED(status)) {
                continue;
            }
            __ptrace_syscall_info info{};
            if (WSTOPSIG(status) == (SIGTRAP | 0x80) &&
                ::ptrace(PTRACE_GET_SYSCALL_INFO, thread, sizeof info, &info) > 0) {
                begun += info.op == PTRACE_SYSCALL_INFO_ENTRY ? 1 : 0;
            }
            ::ptrace(PTRACE_SYSCALL, thread, nullptr, nullptr);
        }
        return begun;
    }

private:
    static void seize(pid_t thread) {
        if (::ptrace(PTRACE_SEIZE, thread, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL) != 0 ||
            ::ptrace(PTRACE_INTERRUPT, thread, nullptr, nullptr) != 0) {
            std::perror("tracing");
            std::exit(1);
        }
    }
};

}  // namespace bench
