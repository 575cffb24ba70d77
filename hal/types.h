// The codes and records that several classes of the library share.
#pragma once

#include <cstdint>

namespace hal {

// Revision of a module, as its driver reports it.
struct revision_t {
    std::uint16_t major;
    std::uint16_t minor;
    std::uint16_t patch;
    std::uint16_t num;
    std::uint16_t year;  // two digits
    std::uint16_t week;  // calendar week
};
static_assert(sizeof(revision_t) == 12);

// An image sensor. Codes are typed by number at the console, so any int may arrive.
enum class imx_te : int { none = 0, imx296 = 1, imx567 = 2 };

// How the camera is triggered.
enum class trigger_te : int { manual = 0, continuous = 1 };

// Horizontal scan mode of an image sensor.
enum class roi_te : int { normal = 0, subsampling = 1, binning = 2 };

// The state that the device shows to its user. 7 and 8 are not assigned.
enum class device_state_te : int {
    boot = 1,
    confirm = 2,
    running = 3,
    find_me = 4,
    warning = 5,
    error = 6,
    preview_network_reset = 9,
    preview_localize = 10,
};

// Colour of the light bar. As a 32-bit value it is little-endian: 0xFF64 is brightness 100, red 255.
struct color_t {
    std::uint8_t brightness;  // percent, 0-100
    std::uint8_t red;
    std::uint8_t green;
    std::uint8_t blue;
};
static_assert(sizeof(color_t) == 4);

}  // namespace hal
