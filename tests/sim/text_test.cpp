// Tests of how the journal writes values and how fault rules fill them in.
#include "sim/library/text.h"

#include <gtest/gtest.h>

namespace {

using sim::FaultValues;
using sim::list_of;
using sim::text_of;

TEST(TextTest, ScalarsAreShort) {
    char const* const none = nullptr;
    unsigned char const byte = 200;
    EXPECT_EQ(list_of(true, false, -5, 18446744073709551615UL, byte, 0.1F, 1e6F),
              "true, false, -5, 18446744073709551615, 200, 0.1, 1000000");
    EXPECT_EQ(text_of(none), "null");
    EXPECT_EQ(text_of(hal::imx_te::imx567), "2");
    EXPECT_EQ(text_of(std::bitset<6>(0b100001)), "100001");
    EXPECT_EQ(text_of(std::function<void()>()), "null");
    EXPECT_EQ(text_of(std::function<void()>([] {})), "function");
    EXPECT_EQ(text_of(sim::ObjectNumber{7}), "#7");
}

TEST(TextTest, TextsAreQuotedAndEscaped) {
    EXPECT_EQ(text_of("/dev/x"), "\"/dev/x\"");
    EXPECT_EQ(text_of(std::string("a\"b\\c\nd\x01\xC3")), "\"a\\\"b\\\\c\\nd\\x01\\xC3\"");
}

TEST(TextTest, RecordsListTheirFields) {
    EXPECT_EQ(text_of(hal::revision_t{1, 6, 0, 2, 22, 14}), "{1, 6, 0, 2, 22, 14}");
    EXPECT_EQ(text_of(hal::color_t{100, 255, 0, 1}), "{100, 255, 0, 1}");
    EXPECT_EQ(text_of(hal::dio_pin_config_t{}),
              "{0, 0, 0, false, false, false, false, 0, 0, 0, {0: 46, 1: 48, 2: 18, 3: 17, 4: 19, 5: 20}}");
    EXPECT_EQ(text_of(hal::spot_states{0x40, 0x10, {1, 0, 0, 1}, 9}), "{64, 16, 1, 0, 0, 1, 9}");
}

TEST(TextTest, ArraysInRecordsAreLists) {
    VL53L5CX_ResultsData results{};
    results.silicon_temp_degc = -3;
    results.distance_mm[1] = 1234;
    std::string const text = text_of(results);
    EXPECT_EQ(text.substr(0, 10), "{-3, {0, 0");
    EXPECT_NE(text.find("{0, 1234, 0"), std::string::npos);
}

TEST(TextTest, FaultValuesFillRecordsFieldByField) {
    std::vector<long double> const values{0x30, 0xC0, 1, 0, 0, 1, 7};
    hal::spot_states states{};
    FaultValues(values).fill(states);
    EXPECT_EQ(text_of(states), "{48, 192, 1, 0, 0, 1, 7}");
}

TEST(TextTest, FaultValuesThatAreMissingAreZero) {
    std::vector<long double> const values{1, 2};
    hal::revision_t revision{9, 9, 9, 9, 9, 9};
    FaultValues(values).fill(revision);
    EXPECT_EQ(text_of(revision), "{1, 2, 0, 0, 0, 0}");
}

TEST(TextTest, FaultValuesFitEveryType) {
    std::vector<long double> const values{-1, -1, 1.5L, 18446744073709551615.0L, 300, 2, 5};
    FaultValues all(values);
    unsigned int number = 0;
    long negative = 0;
    float fraction = 0;
    unsigned long large = 0;
    unsigned char byte = 0;
    bool truth = false;
    std::bitset<6> bits;
    all.fill(number);
    all.fill(negative);
    all.fill(fraction);
    all.fill(large);
    all.fill(byte);
    all.fill(truth);
    all.fill(bits);
    EXPECT_EQ(number, 0xFFFFFFFFU);
    EXPECT_EQ(negative, -1);
    EXPECT_EQ(fraction, 1.5F);
    EXPECT_EQ(large, 18446744073709551615UL);
    EXPECT_EQ(byte, 300 - 256);
    EXPECT_TRUE(truth);
    EXPECT_EQ(bits.to_string(), "000101");
}

}  // namespace
