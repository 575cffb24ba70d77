// Ownership of a file descriptor.
#include "sim/core/descriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace sim {

namespace {

constexpr int kLowest = 10;

}  // namespace

Descriptor::~Descriptor() {
    if (fd_ >= 0) {
        int const error = errno;
        ::close(fd_);
        errno = error;
    }
}

Descriptor out_of_the_way(int fd) {
    if (fd < 0 || fd >= kLowest) {
        return Descriptor(fd);
    }
    Descriptor const low(fd);
    return Descriptor(::fcntl(fd, F_DUPFD_CLOEXEC, kLowest));
}

}  // namespace sim
