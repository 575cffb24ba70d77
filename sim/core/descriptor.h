// Ownership of a file descriptor.
#pragma once

#include <utility>

namespace sim {

class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int fd) : fd_(fd) {}
    Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;
    ~Descriptor();

    explicit operator bool() const { return fd_ >= 0; }
    int get() const { return fd_; }

private:
    int fd_ = -1;
};

// Moves `fd` to 10 or above, closed on exec: the program closes descriptor 0 at times, and what it opens next must
// find it free. Empty with errno when there is none, or when `fd` is -1.
Descriptor out_of_the_way(int fd);

}  // namespace sim
