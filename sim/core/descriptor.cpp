// File descriptors of the library's own, out of the way of the program's.
#include "sim/core/descriptor.h"

#include <fcntl.h>
#include <unistd.h>

namespace sim {

namespace {

constexpr int kLowest = 10;

}  // namespace

int move_out_of_the_way(int fd) {
    if (fd < 0 || fd >= kLowest) {
        return fd;
    }
    int const moved = ::fcntl(fd, F_DUPFD_CLOEXEC, kLowest);
    ::close(fd);
    return moved;
}

}  // namespace sim
