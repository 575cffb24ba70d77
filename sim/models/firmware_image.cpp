// The firmware image of the sensor hub, as the device's firmware files hold it.
#include "sim/models/firmware_image.h"

namespace sim {

namespace {

constexpr std::string_view kMagic = "R47HUBFW";
constexpr std::uint8_t kProductId = 0x89;
constexpr std::size_t kHeaderSize = 20;
constexpr std::size_t kCodeSize = 4096;

std::uint32_t crc32(std::string_view bytes) {
    std::uint32_t crc = 0xFFFFFFFFU;
    for (char const byte : bytes) {
        crc ^= static_cast<std::uint8_t>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1U) ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
        }
    }
    return ~crc;
}

void put(std::string& bytes, std::uint32_t number, unsigned size) {
    for (unsigned i = 0; i < size; ++i) {
        bytes += static_cast<char>((number >> (8 * i)) & 0xFFU);
    }
}

std::uint32_t get(std::string_view bytes, std::size_t at, unsigned size) {
    std::uint32_t number = 0;
    for (unsigned i = 0; i < size; ++i) {
        number |= static_cast<std::uint32_t>(static_cast<std::uint8_t>(bytes[at + i])) << (8 * i);
    }
    return number;
}

// Stands for the hub's code: a fixed pattern, different for each variant and version.
std::string make_code(FirmwareImage const& image) {
    std::string code;
    std::uint32_t state = (static_cast<std::uint32_t>(image.variant) << 16U) | image.version;
    while (code.size() < kCodeSize) {
        state = state * 1664525U + 1013904223U;
        put(code, state, 4);
    }
    return code;
}

}  // namespace

std::string make_firmware_image(FirmwareImage const& image) {
    std::string const code = make_code(image);
    std::string bytes(kMagic);
    put(bytes, static_cast<std::uint8_t>(image.variant), 1);
    put(bytes, kProductId, 1);
    put(bytes, image.version, 2);
    put(bytes, static_cast<std::uint32_t>(code.size()), 4);
    put(bytes, crc32(code), 4);
    return bytes + code;
}

bool begins_as_firmware_image(std::string_view bytes) {
    return bytes.size() >= kHeaderSize && bytes.substr(0, kMagic.size()) == kMagic && get(bytes, 9, 1) == kProductId;
}

std::optional<FirmwareImage> read_firmware_image(std::string_view bytes) {
    if (!begins_as_firmware_image(bytes)) {
        return std::nullopt;
    }
    auto const variant = static_cast<HubVariant>(bytes[8]);
    if (variant != HubVariant::bhi260ap && variant != HubVariant::bhi260ab) {
        return std::nullopt;
    }
    std::string_view const code = bytes.substr(kHeaderSize);
    if (code.size() != get(bytes, 12, 4) || crc32(code) != get(bytes, 16, 4)) {
        return std::nullopt;
    }
    return FirmwareImage{variant, static_cast<std::uint16_t>(get(bytes, 10, 2))};
}

}  // namespace sim
