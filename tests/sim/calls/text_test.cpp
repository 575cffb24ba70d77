// Tests of how the journal writes arguments and results.
#include "sim/calls/text.h"

#include <gtest/gtest.h>

namespace {

using sim::list_of;
using sim::Text;
using sim::text_of;

TEST(CallTextTest, ScalarsAreShort) {
    unsigned char const byte = 200;
    EXPECT_EQ(list_of(true, false, -5, 18446744073709551615UL, byte, 0.1F, 1e6F),
              "true, false, -5, 18446744073709551615, 200, 0.1, 1000000");
    EXPECT_EQ(text_of(hal::imx_te::imx567), "2");
    EXPECT_EQ(text_of(std::bitset<6>(0b100001)), "100001");
    EXPECT_EQ(text_of(sim::FunctionGiven{false}), "null");
    EXPECT_EQ(text_of(sim::FunctionGiven{true}), "function");
    EXPECT_EQ(text_of(sim::ObjectNumber{7}), "#7");
}

TEST(CallTextTest, TextsAreQuotedAndEscaped) {
    EXPECT_EQ(text_of(Text()), "null");
    EXPECT_EQ(text_of(Text("/dev/x")), "\"/dev/x\"");
    EXPECT_EQ(text_of(std::string("a\"b\\c\nd\x01\xC3")), "\"a\\\"b\\\\c\\nd\\x01\\xC3\"");
}

TEST(CallTextTest, WhatIsHiddenIsLeftOut) {
    EXPECT_EQ(list_of(1, sim::Hidden<int>{2}, 3), "1, 3");
    EXPECT_EQ(list_of(sim::Hidden<Text>{}), "");
}

TEST(CallTextTest, RecordsListTheirFields) {
    EXPECT_EQ(text_of(hal::revision_t{1, 6, 0, 2, 22, 14}), "{1, 6, 0, 2, 22, 14}");
    EXPECT_EQ(text_of(hal::color_t{100, 255, 0, 1}), "{100, 255, 0, 1}");
    EXPECT_EQ(text_of(hal::dio_pin_config_t{}),
              "{0, 0, 0, false, false, false, false, 0, 0, 0, {0: 46, 1: 48, 2: 18, 3: 17, 4: 19, 5: 20}}");
    EXPECT_EQ(text_of(hal::spot_states{0x40, 0x10, {1, 0, 0, 1}, 9}), "{64, 16, 1, 0, 0, 1, 9}");
}

TEST(CallTextTest, ArraysInRecordsAreLists) {
    VL53L5CX_ResultsData results{};
    results.silicon_temp_degc = -3;
    results.distance_mm[1] = 1234;
    std::string const text = text_of(results);
    EXPECT_EQ(text.substr(0, 10), "{-3, {0, 0");
    EXPECT_NE(text.find("{0, 1234, 0"), std::string::npos);
}

}  // namespace
