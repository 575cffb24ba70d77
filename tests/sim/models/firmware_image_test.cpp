// Tests of the sensor hub's firmware image.
#include "sim/models/firmware_image.h"

#include <gtest/gtest.h>

namespace {

using sim::HubVariant;
using sim::make_firmware_image;
using sim::read_firmware_image;

TEST(FirmwareImageTest, ReadsWhatItMade) {
    for (HubVariant const variant : {HubVariant::bhi260ap, HubVariant::bhi260ab}) {
        auto const image = read_firmware_image(make_firmware_image({variant, 0x1234}));
        ASSERT_TRUE(image);
        EXPECT_EQ(image->variant, variant);
        EXPECT_EQ(image->version, 0x1234);
    }
}

// Its last four bytes are what zlib's crc32() makes of the code.
TEST(FirmwareImageTest, HeaderTellsTheHubTheVersionAndTheSumOfTheCode) {
    using namespace std::string_literals;
    std::string const ap = make_firmware_image({HubVariant::bhi260ap, 0x1767});
    std::string const ab = make_firmware_image({HubVariant::bhi260ab, 0x1767});
    EXPECT_EQ(ap.substr(0, 20), "R47HUBFWP\x89\x67\x17\x00\x10\x00\x00\x35\xca\xe4\x86"s);
    EXPECT_EQ(ab.substr(0, 20), "R47HUBFWB\x89\x67\x17\x00\x10\x00\x00\xa1\xe0\x2f\xd0"s);
    EXPECT_EQ(ap.size(), std::size_t{4116});
}

TEST(FirmwareImageTest, ADamagedByteAnywhereIsFound) {
    std::string const bytes = make_firmware_image({HubVariant::bhi260ap, 5991});
    std::size_t const step = 61;  // through the code; the header byte by byte
    for (std::size_t i = 0; i < bytes.size(); i += i < 32 ? 1 : step) {
        if (i == 10 || i == 11) {
            continue;  // the version stands for itself
        }
        std::string damaged = bytes;
        damaged[i] = static_cast<char>(damaged[i] ^ 0x40);
        EXPECT_FALSE(read_firmware_image(damaged)) << "byte " << i;
    }
}

TEST(FirmwareImageTest, WhatIsDamagedMayStillBeginAsOne) {
    std::string bytes = make_firmware_image({HubVariant::bhi260ap, 5991});
    bytes.back() = static_cast<char>(bytes.back() ^ 1);
    EXPECT_TRUE(sim::begins_as_firmware_image(bytes));
    EXPECT_TRUE(sim::begins_as_firmware_image(bytes.substr(0, 20)));
    EXPECT_FALSE(sim::begins_as_firmware_image(bytes.substr(0, 19)));
    EXPECT_FALSE(sim::begins_as_firmware_image("#!/bin/sh\nexit 0\n# a text of some length"));
    bytes[9] = 0x70;
    EXPECT_FALSE(sim::begins_as_firmware_image(bytes)) << "of another hub";
}

TEST(FirmwareImageTest, APartOrMoreThanAnImageIsNone) {
    std::string const bytes = make_firmware_image({HubVariant::bhi260ap, 5991});
    EXPECT_FALSE(read_firmware_image(""));
    EXPECT_FALSE(read_firmware_image(bytes.substr(0, 19)));
    EXPECT_FALSE(read_firmware_image(bytes.substr(0, bytes.size() - 1)));
    EXPECT_FALSE(read_firmware_image(bytes + "x"));
    EXPECT_FALSE(read_firmware_image("#!/bin/sh\nexit 0\n# a text of some length"));
}

}  // namespace
