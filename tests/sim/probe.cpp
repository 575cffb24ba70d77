// A program as others write it against the library: prints what the device tells it.
#include <unistd.h>

#include <cstdio>
#include <string>

#include "hal/rtu.h"
#include "hal/system.h"

// "wait": waits for a byte on standard input before it asks. "fd": closes descriptor 0 and tells what takes its place.
int main(int argc, char* argv[]) {
    std::string const mode = argc > 1 ? argv[1] : "";
    hal::rtu_t rtu("/dev/r47-rtu-driver", 2);
    hal::system_t system("/dev/r47-rtu-driver", 2);
    if (mode == "wait") {
        std::puts("ready");
        std::fflush(stdout);
        char byte = 0;
        if (::read(STDIN_FILENO, &byte, 1) != 1) {
            return 1;
        }
    }
    if (mode == "fd") {
        ::close(STDIN_FILENO);
        std::printf("%d\n", ::dup(STDOUT_FILENO));
    }
    hal::revision_t revision{};
    hal::device_state_te state{};
    int const revision_status = rtu.get_revision(revision);
    int const state_status = system.get_device_status(state);
    std::printf("revision %d: %u.%u state %d: %d\n", revision_status, static_cast<unsigned>(revision.major),
                static_cast<unsigned>(revision.minor), state_status, static_cast<int>(state));
    return 0;
}
