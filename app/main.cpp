// Entry point of the console.
#include <fcntl.h>
#include <unistd.h>

#include "app/console_main.h"
#include "app/standard_output.h"

namespace {

// A descriptor that the starter left closed would be taken by the next file or socket that is opened, the device's
// nodes first: so this runs before every other initialisation of the console, the real-time unit's included.
[[gnu::constructor(101)]] void open_standard_descriptors() {
    int descriptor;
    do {
        descriptor = ::open("/dev/null", O_RDWR);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    ::close(descriptor);
}

}  // namespace

int main(int argc, char** argv) {
    set_up_standard_output();
    return console_main(argc, argv);
}
