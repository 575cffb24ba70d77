// The firmware image of the sensor hub, as the device's firmware files hold it.
#include "sim/models/firmware_image.h"

namespace sim {

namespace {

// The layout is ours, as the maker's is not published: what a loader needs to tell an image from anything else, to tell
// for which hub it is, and to find damage.
constexpr std::string_view kMagic = "R47HUBFW";  // long enough that no other file begins so by chance
constexpr std::uint8_t kProductId = 0x89;        // as the hub's own register has it
constexpr std::size_t kVariantAt = kMagic.size();
constexpr std::size_t kProductIdAt = kVariantAt + 1;
constexpr std::size_t kVersionAt = kProductIdAt + 1;
constexpr std::size_t kCodeSizeAt = kVersionAt + 2;
constexpr std::size_t kCodeCrcAt = kCodeSizeAt + 4;
constexpr std::size_t kHeaderSize = kCodeCrcAt + 4;  // bytes
// Bytes: a page, so that a file is written at once. Nobody runs the code, and the hub tells the time of an upload
// itself, so a real image's hundred kilobytes would make the device's start slower and nothing truer.
constexpr std::size_t kCodeSize = 4096;

// CRC-32 of IEEE 802.3, lowest bit first, as any tool reckons it: finds every burst of up to 32 wrong bits.
constexpr std::uint32_t kCrcPolynomial = 0xEDB88320U;
constexpr std::uint32_t kCrcStart = 0xFFFFFFFFU;  // also what the remainder is turned over by

// Knuth's linear congruential generator: the same on every host, unlike the library's, and of a period of 2^32.
constexpr std::uint32_t kFactor = 1664525U;
constexpr std::uint32_t kAddend = 1013904223U;

std::uint32_t crc32(std::string_view bytes) {
    std::uint32_t crc = kCrcStart;
    for (char const byte : bytes) {
        crc ^= static_cast<std::uint8_t>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1U) ^ ((crc & 1U) != 0 ? kCrcPolynomial : 0U);
        }
    }
    return crc ^ kCrcStart;
}

template <typename Number>
void put(std::string& bytes, Number number) {
    for (unsigned i = 0; i < sizeof(Number); ++i) {
        bytes += static_cast<char>(static_cast<std::uint8_t>(number >> (8 * i)));
    }
}

template <typename Number>
Number get(std::string_view bytes, std::size_t at) {
    std::uint32_t number = 0;
    for (unsigned i = 0; i < sizeof(Number); ++i) {
        number |= static_cast<std::uint32_t>(static_cast<std::uint8_t>(bytes[at + i])) << (8 * i);
    }
    return static_cast<Number>(number);
}

// Stands for the hub's code: a fixed pattern, different for each variant and version.
std::string make_code(FirmwareImage const& image) {
    std::string code;
    std::uint32_t state = (static_cast<std::uint32_t>(image.variant) << 16U) | image.version;
    while (code.size() < kCodeSize) {
        state = state * kFactor + kAddend;
        put(code, state);
    }
    return code;
}

}  // namespace

std::string make_firmware_image(FirmwareImage const& image) {
    std::string const code = make_code(image);
    std::string bytes(kMagic);
    put(bytes, static_cast<std::uint8_t>(image.variant));
    put(bytes, kProductId);
    put(bytes, image.version);
    put(bytes, static_cast<std::uint32_t>(code.size()));
    put(bytes, crc32(code));
    return bytes + code;
}

bool begins_as_firmware_image(std::string_view bytes) {
    return bytes.size() >= kHeaderSize && bytes.substr(0, kMagic.size()) == kMagic &&
           get<std::uint8_t>(bytes, kProductIdAt) == kProductId;
}

std::optional<FirmwareImage> read_firmware_image(std::string_view bytes) {
    if (!begins_as_firmware_image(bytes)) {
        return std::nullopt;
    }
    auto const variant = static_cast<HubVariant>(bytes[kVariantAt]);
    if (variant != HubVariant::bhi260ap && variant != HubVariant::bhi260ab) {
        return std::nullopt;
    }
    std::string_view const code = bytes.substr(kHeaderSize);
    if (code.size() != get<std::uint32_t>(bytes, kCodeSizeAt) || crc32(code) != get<std::uint32_t>(bytes, kCodeCrcAt)) {
        return std::nullopt;
    }
    return FirmwareImage{variant, get<std::uint16_t>(bytes, kVersionAt)};
}

}  // namespace sim
