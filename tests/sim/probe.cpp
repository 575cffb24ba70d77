// A program as others write it against the library: prints what the device tells it.
#include <unistd.h>

#include <cstdio>
#include <string>

#include "hal/camera.h"
#include "hal/imx.h"
#include "hal/rtu.h"
#include "hal/system.h"

namespace {

void print_module(char const* path, hal::base_t const& module) {
    unsigned char status = 0xFF;
    hal::revision_t revision{};
    int const asked_status = module.get_status(status);
    int const asked_revision = module.get_revision(revision);
    std::printf("%s status %d: %u revision %d: %u.%u\n", path, asked_status, static_cast<unsigned>(status),
                asked_revision, static_cast<unsigned>(revision.major), static_cast<unsigned>(revision.minor));
}

class Sensor : public hal::imx_t {
public:
    explicit Sensor(char const* path) : imx_t(path, 2) {}
};

void print_odd_trigger_mode() {
    hal::camera_t camera(hal::imx_te::imx296, nullptr, "/dev/r47-rtu-driver", 2);
    std::printf("trigger mode 2: %d\n", camera.set_trigger_mode(static_cast<hal::trigger_te>(2)));
}

void print_modules() {
    for (char const* const path : {"/dev/r47-rtu-driver", "/dev/r47-illumination-driver", "/dev/r47-autofocus-driver",
                                   "/dev/i2c-2", "/dev/imx296", "/dev/imx567", "/dev/r47-tof-driver"}) {
        print_module(path, hal::base_t(path, 2));
    }
    for (char const* const path : {"/dev/imx296", "/dev/imx567"}) {
        print_module(path, Sensor(path));
    }
    for (char const* const path : {"/dev/imx296", "/dev/imx567"}) {
        unsigned int number = 0;
        int const status = Sensor(path).get_serial_number(number);
        std::printf("%s serial number %d: %u\n", path, status, number);
    }
}

}  // namespace

// "modules": asks each module by its node, and the camera for a trigger mode that there is not. "wait": waits for a
// byte on standard input before it asks. "fd": closes descriptor 0 and tells what takes its place.
int main(int argc, char* argv[]) {
    std::string const mode = argc > 1 ? argv[1] : "";
    if (mode == "modules") {
        print_modules();
        print_odd_trigger_mode();
        return 0;
    }
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
