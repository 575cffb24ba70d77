// Entry point of the console.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "app/console_main.h"

namespace {

constexpr std::size_t kOutputBufferSize = 1 << 16;  // larger than any screen

// A descriptor that the starter left closed would be taken by the next file or socket that is opened.
void open_standard_descriptors() {
    int descriptor;
    do {
        descriptor = ::open("/dev/null", O_RDWR);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    ::close(descriptor);
}

}  // namespace

int main(int argc, char** argv) {
    open_standard_descriptors();
    // A screen leaves as one write, and every read of input flushes it; lines of the library's threads do not wait
    // for that at a terminal.
    std::setvbuf(stdout, nullptr, ::isatty(STDOUT_FILENO) ? _IOLBF : _IOFBF, kOutputBufferSize);
    return console_main(argc, argv);
}
