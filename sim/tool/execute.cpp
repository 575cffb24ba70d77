// Starting other programs.
#include "sim/tool/execute.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

namespace sim {

void execute(Arguments const& arguments) {
    std::vector<char*> pointers;
    for (std::string const& argument : arguments) {
        pointers.push_back(const_cast<char*>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    ::execvp(pointers.front(), pointers.data());
}

int try_quietly(Arguments const& arguments, std::function<void()> const& prepare) {
    pid_t const child = ::fork();
    if (child == 0) {
        int const null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
        ::dup2(null, STDIN_FILENO);
        ::dup2(null, STDOUT_FILENO);
        ::dup2(null, STDERR_FILENO);
        if (prepare) {
            prepare();
        }
        execute(arguments);
        ::_exit(127);
    }
    return child > 0 ? wait_for(child) : 1;
}

int wait_for(int child) {
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace sim
