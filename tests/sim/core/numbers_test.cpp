// Tests of how numbers are written.
#include "sim/core/numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using sim::number_text;

TEST(NumbersTest, NothingIsLost) {
    for (double const value :
         {1.0 / 3.0, 0.1, 123456.789, 86399.999999, 5e-324, 1.7976931348623157e308, -2.5e-5, 1e15 + 1}) {
        EXPECT_EQ(sim::parse_float(number_text(value)), value) << number_text(value);
    }
    EXPECT_EQ(sim::parse_number(number_text(18446744073709551615.0L)), 18446744073709551615.0L);
}

TEST(NumbersTest, TheShortestFormOfTheTypeIsWritten) {
    EXPECT_EQ(number_text(0.1F), "0.1");
    EXPECT_EQ(number_text(0.1), "0.1");
    EXPECT_EQ(number_text(0.1L), "0.1");
    EXPECT_EQ(number_text(static_cast<double>(0.1F)), "0.10000000149011612");
    EXPECT_EQ(number_text(1234567.8), "1234567.8");
    EXPECT_EQ(number_text(0.0), "0");
    EXPECT_EQ(number_text(-20.0), "-20");
}

TEST(NumbersTest, AnExponentIsForTheVerySmallAndTheVeryLarge) {
    EXPECT_EQ(number_text(100000.0), "100000");
    EXPECT_EQ(number_text(9999999999999998.0), "9999999999999998");
    EXPECT_EQ(number_text(1e16), "1e+16");
    EXPECT_EQ(number_text(0.0001), "0.0001");
    EXPECT_EQ(number_text(0.00002), "2e-05");
    EXPECT_EQ(number_text(std::numeric_limits<double>::infinity()), "inf");
}

TEST(NumbersTest, TheNearestPartHasNoNoiseAndNoNegativeNought) {
    EXPECT_EQ(number_text(sim::to_nearest_part(20.000000000000004, 10000)), "20");
    EXPECT_EQ(number_text(sim::to_nearest_part(-1e-9, 10000)), "0");
    EXPECT_EQ(number_text(sim::to_nearest_part(12.34567, 1000)), "12.346");
}

}  // namespace
