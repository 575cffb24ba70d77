// Tests of how fault rules fill in the results of an operation.
#include "sim/calls/fault_values.h"

#include <gtest/gtest.h>

#include "sim/calls/text.h"

namespace {

using sim::FaultValues;
using sim::text_of;

TEST(FaultValuesTest, FillRecordsFieldByField) {
    std::vector<long double> const values{0x30, 0xC0, 1, 0, 0, 1, 7};
    hal::spot_states states{};
    FaultValues(values).fill(states);
    EXPECT_EQ(text_of(states), "{48, 192, 1, 0, 0, 1, 7}");
}

TEST(FaultValuesTest, ThoseThatAreMissingAreZero) {
    std::vector<long double> const values{1, 2};
    hal::revision_t revision{9, 9, 9, 9, 9, 9};
    FaultValues(values).fill(revision);
    EXPECT_EQ(text_of(revision), "{1, 2, 0, 0, 0, 0}");
}

TEST(FaultValuesTest, FitEveryType) {
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

TEST(FaultValuesTest, WhatIsHiddenTakesNone) {
    std::vector<long double> const values{4, 5};
    FaultValues all(values);
    sim::Hidden<int> hidden{1};
    int number = 0;
    all.fill(hidden);
    all.fill(number);
    EXPECT_EQ(hidden.value, 1);
    EXPECT_EQ(number, 4);
}

}  // namespace
