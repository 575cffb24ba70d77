// Starts the device when the library is loaded.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "sim/device/device.h"

namespace {

void start_journal(sim::Device& device) {
    char const* const path = std::getenv("R47_SIM_JOURNAL");
    if (path == nullptr || *path == '\0') {
        return;
    }
    sim::Error const error = device.journal.open(path);
    if (!error.empty()) {
        std::fprintf(stderr, "libhal: %s\n", error.c_str());
        std::_Exit(2);
    }
}

__attribute__((constructor)) void start() {
    start_journal(sim::Device::instance());
}

}  // namespace
