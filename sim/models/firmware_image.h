// The firmware image of the sensor hub, as the device's firmware files hold it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace sim {

// The hub comes in two variants, each with an image of its own: by the last letter of their names, 260AP and 260AB.
enum class HubVariant : char { bhi260ap = 'P', bhi260ab = 'B' };

struct FirmwareImage {
    HubVariant variant;
    std::uint16_t version;  // kernel and user version: one build makes both
};

// Layout, numbers little-endian: "R47HUBFW", variant (1), product id 0x89 (1), version (2), length of the code (4),
// its CRC-32 (4), the code.
std::string make_firmware_image(FirmwareImage const& image);
// Whether the bytes begin as an image does, be it whole or not.
bool begins_as_firmware_image(std::string_view bytes);
// Nothing when the bytes are no whole, undamaged image.
std::optional<FirmwareImage> read_firmware_image(std::string_view bytes);

}  // namespace sim
