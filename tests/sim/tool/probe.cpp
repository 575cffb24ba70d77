// A program as others write it against the library: prints what the device tells it.
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "hal/camera.h"
#include "hal/gyro.h"
#include "hal/gyro_delegate.h"
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

// Listens to the hub until a byte comes, or until its end. In the first callback it does what `then` says: "stop" stops
// the process, "kill" kills it.
void listen(std::string const& then) {
    hal::gyro_t gyro("/dev/i2c-2", 2, "/opt/kelvora/libhal/fw/kelvora-260AP_1.6.fw", "/sys/class/gpio/gpio481/value",
                     200);
    gyro.boot();
    gyro.install_callbacks();
    std::atomic<int> samples{0};
    {
        hal::gyro_delegate_t const delegate(gyro, 37, [&](unsigned char, hal::cb_struct_te, void*) {
            ++samples;
            if (!then.empty()) {
                ::raise(then == "stop" ? SIGSTOP : SIGKILL);
            }
        });
        gyro.activate_vsensor(37, 10, 0);
        std::puts("ready");
        std::fflush(stdout);
        char byte = 0;
        [[maybe_unused]] auto const count = ::read(STDIN_FILENO, &byte, 1);
    }
    std::printf("%d samples\n", samples.load());
}

char const* const kImage = "/opt/kelvora/libhal/fw/kelvora-260AP_1.6.fw";

// A static that is there before the program's objects, and goes after their callbacks have ended.
class LastOne {
public:
    ~LastOne() {
        if (gyro_ != nullptr) {
            int const before = samples;
            gyro_->upload_firmware(kImage);  // takes 200 ms, in which samples come
            std::printf("%d samples, then %d\n", before, samples - before);
        }
    }
    void let_go_with(hal::gyro_t& gyro) { gyro_ = &gyro; }

    std::atomic<int> samples{0};

private:
    hal::gyro_t* gyro_ = nullptr;
};

// Ends the program while its objects live.
void leave() {
    static LastOne last;
    auto& gyro = *new hal::gyro_t("/dev/i2c-2", 2, kImage, "/sys/class/gpio/gpio481/value", 200);
    new hal::gyro_delegate_t(gyro, 37, [](unsigned char, hal::cb_struct_te, void*) { ++last.samples; });
    gyro.boot();
    gyro.activate_vsensor(37, 400, 0);
    gyro.upload_firmware(kImage);
    gyro.activate_vsensor(37, 400, 0);
    last.let_go_with(gyro);
    std::exit(0);
}

}  // namespace

// "leave": ends by exit() in the rain of samples, and tells how many came before and how many after. "listen [stop |
// kill]": listens to the hub. "set EXPOSURE": sets the exposure. "exposure": tells it. "modules": asks each module by
// its node, and the camera for a trigger mode that there is not. "wait": waits for a byte on standard input before it
// asks. "fd": closes descriptor 0 and tells what takes its place.
int main(int argc, char* argv[]) {
    std::string const mode = argc > 1 ? argv[1] : "";
    if (mode == "modules") {
        print_modules();
        print_odd_trigger_mode();
        return 0;
    }
    if (mode == "listen") {
        listen(argc > 2 ? argv[2] : "");
        return 0;
    }
    if (mode == "leave") {
        leave();
    }
    hal::rtu_t rtu("/dev/r47-rtu-driver", 2);
    if (mode == "set") {
        return rtu.set_exposure(static_cast<unsigned int>(std::stoul(argv[2])));
    }
    if (mode == "exposure") {
        unsigned int exposure = 0;
        int const status = rtu.get_exposure(exposure);
        std::printf("exposure %d: %u\n", status, exposure);
        return 0;
    }
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
