// A tool against the hardware library: prints the exposure of the real-time unit.
#include <cstdio>

#include "hal/rtu.h"

int main() {
    hal::rtu_t const unit("/dev/r47-rtu-driver", 2);
    unsigned int exposure = 0;
    if (unit.get_exposure(exposure) < 0) {
        std::puts("no exposure");
        return 1;
    }
    std::printf("exposure %u\n", exposure);
}
