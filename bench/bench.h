// What the benchmarks have in common: medians, processor time, and a bare process at the other end of a socket.
#pragma once

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

namespace bench {

inline double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Seconds that `act` takes.
template <typename Act>
double time_of(Act act) {
    auto const start = std::chrono::steady_clock::now();
    act();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Seconds of processor that a process of this user has used so far, all its threads together.
inline double processor_time(pid_t pid) {
    clockid_t clock{};
    timespec used{};
    if (::clock_getcpuclockid(pid, &clock) != 0 || ::clock_gettime(clock, &used) != 0) {
        std::fprintf(stderr, "no process %d\n", static_cast<int>(pid));
        std::exit(1);
    }
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

// A process that answers each request of so many bytes with so many, over the kind of socket that the device uses.
class BareAnswerer {
public:
    BareAnswerer(std::size_t request, std::size_t answer) : request_(request, 'q'), answer_(answer, 'a') {
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0 || (pid_ = ::fork()) < 0) {
            std::perror("bare process");
            std::exit(1);
        }
        if (pid_ == 0) {
            ::close(ends[0]);
            while (::recv(ends[1], request_.data(), request_.size(), MSG_WAITALL) > 0) {
                ::send(ends[1], answer_.data(), answer_.size(), MSG_NOSIGNAL);
            }
            ::_exit(0);
        }
        ::close(ends[1]);
        socket_ = ends[0];
    }
    BareAnswerer(BareAnswerer const&) = delete;
    BareAnswerer& operator=(BareAnswerer const&) = delete;
    ~BareAnswerer() {
        ::close(socket_);
        ::waitpid(pid_, nullptr, 0);
    }

    void ask() {
        ::send(socket_, request_.data(), request_.size(), MSG_NOSIGNAL);
        ::recv(socket_, answer_.data(), answer_.size(), MSG_WAITALL);
    }
    pid_t pid() const { return pid_; }

private:
    std::string request_;
    std::string answer_;
    pid_t pid_ = -1;
    int socket_ = -1;
};

// Of a message of the calls, as it goes over its socket.
inline std::size_t size_on_socket(std::string const& message) {
    return sizeof(std::uint32_t) + message.size();
}

}  // namespace bench
