// Presence test of the files that the component menus depend on.
#include "app/device_check.h"

#include <array>
#include <fstream>
#include <iostream>

#include "app/console_io.h"

namespace {

struct checked_file {
    char const* path;
    unsigned int missing_bit;
};

// In the order in which they are opened. Bit 8 is reserved. The real-time unit's node is opened a second time
// without a say; the firmware is always this one, whichever the gyro menus use; either image sensor's node missing
// sets the one bit of both.
constexpr std::array<checked_file, 10> kCheckedFiles{{
    {"/dev/i2c-2", 1},
    {"/dev/r47-rtu-driver", 2},
    {"/dev/r47-autofocus-driver", 4},
    {"/dev/r47-rtu-driver", 0},
    {"/dev/r47-illumination-driver", 16},
    {"/dev/gpiochip1", 32},
    {"/opt/kelvora/libhal/fw/kelvora-260AP_1.6.fw", 128},
    {"/sys/class/gpio/gpio481/value", 256},
    {"/dev/imx567", 64},
    {"/dev/imx296", 64},
}};

}  // namespace

void check_devices() {
    std::array<std::ifstream, kCheckedFiles.size()> files;  // all open until the code is reported
    unsigned int code = 0;
    for (std::size_t i = 0; i < files.size(); ++i) {
        files[i].open(kCheckedFiles[i].path);
        if (!files[i].is_open()) {
            code |= kCheckedFiles[i].missing_bit;
        }
    }
    std::cout << "File Error Code: " << code << std::endl;
    kosstream("%d", static_cast<int>(code));
    kosstream_send();
}
