// Presence test of the files that the component menus depend on.
#include "app/device_check.h"

#include <array>
#include <fstream>
#include <iostream>

#include "app/console_io.h"
#include "app/device_paths.h"

namespace {

struct checked_file {
    char const* path;
    unsigned int missing_bit;
};

// In the order in which they are opened. Bit 8 is reserved. The real-time unit's node is opened a second time
// without a say; the firmware is always this one, whichever the gyro menus use; either image sensor's node missing
// sets the one bit of both.
constexpr std::array<checked_file, 10> kCheckedFiles{{
    {kHubDevice, 1},
    {kRtuDevice, 2},
    {kAutofocusDevice, 4},
    {kRtuDevice, 0},
    {kIlluminationDevice, 16},
    {kButtonDevice, 32},
    {kHubFirmware, 128},
    {kHubInterrupt, 256},
    {kImx567Device, 64},
    {kImx296Device, 64},
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
