// Tests of the numbers as they are typed: what belongs to one, and what it is worth.
#include "app/typed_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

// What a number takes of the text, and what that is worth as text: "12|x = 12", "-| = nothing".
template <typename Typed>
std::string read(std::string const& text) {
    Typed number;
    std::size_t taken = 0;
    while (taken < text.size() && number.take(text[taken])) {
        ++taken;
    }
    std::string told = text.substr(0, taken) + "|" + text.substr(taken) + " = ";
    auto const value = number.value();
    if (!value) {
        return told + "nothing";
    }
    char digits[64];
    std::snprintf(digits, sizeof digits, "%.10g", static_cast<double>(*value));
    return told + digits;
}

using Int = typed_integer<int>;
using Unsigned = typed_integer<unsigned int>;

TEST(TypedNumbersTest, IntegersEndAtTheFirstOtherCharacter) {
    EXPECT_EQ(read<Int>("42"), "42| = 42");
    EXPECT_EQ(read<Int>("-7x"), "-7|x = -7");
    EXPECT_EQ(read<Int>("+7+1"), "+7|+1 = 7");
    EXPECT_EQ(read<Int>("0x10"), "0|x10 = 0");
    EXPECT_EQ(read<Int>("1.5"), "1|.5 = 1");
    EXPECT_EQ(read<Int>("00000000000000000012"), "00000000000000000012| = 12");
}

TEST(TypedNumbersTest, IntegersWithoutDigitsDoNotConvert) {
    EXPECT_EQ(read<Int>(""), "| = nothing");
    EXPECT_EQ(read<Int>("-"), "-| = nothing");
    EXPECT_EQ(read<Int>("--1"), "-|-1 = nothing");
    EXPECT_EQ(read<Unsigned>("x1"), "|x1 = nothing");
}

TEST(TypedNumbersTest, IntegersBeyondTheirTypeDoNotConvert) {
    EXPECT_EQ(read<Int>("2147483647"), "2147483647| = 2147483647");
    EXPECT_EQ(read<Int>("2147483648"), "2147483648| = nothing");
    EXPECT_EQ(read<Int>("-2147483648"), "-2147483648| = -2147483648");
    EXPECT_EQ(read<Int>("-2147483649"), "-2147483649| = nothing");
    EXPECT_EQ(read<Int>("99999999999999999999999999"), "99999999999999999999999999| = nothing");
    EXPECT_EQ(read<Unsigned>("4294967296"), "4294967296| = nothing");
    EXPECT_EQ(read<Unsigned>("-4294967296"), "-4294967296| = nothing");
}

TEST(TypedNumbersTest, NegativeNumbersWrapIntoTheUnsignedType) {
    EXPECT_EQ(read<Unsigned>("4294967295"), "4294967295| = 4294967295");
    Unsigned number;
    for (char const c : std::string("-1")) {
        EXPECT_TRUE(number.take(c));
    }
    EXPECT_EQ(number.value(), std::numeric_limits<unsigned int>::max());
}

TEST(TypedNumbersTest, FloatsAreDecimal) {
    EXPECT_EQ(read<typed_float>("12.5"), "12.5| = 12.5");
    EXPECT_EQ(read<typed_float>("-.5e1x"), "-.5e1|x = -5");
    EXPECT_EQ(read<typed_float>("5.e-1.2"), "5.e-1|.2 = 0.5");
    EXPECT_EQ(read<typed_float>("1e5.5"), "1e5|.5 = 100000");
    EXPECT_EQ(read<typed_float>("1.2.3"), "1.2|.3 = 1.200000048");
    EXPECT_EQ(read<typed_float>("0x10"), "0|x10 = 0");
    for (std::string const text : {"1e", "1e+", ".", "-", "+.", "1e99"}) {
        EXPECT_EQ(read<typed_float>(text), text + "| = nothing");
    }
    for (std::string const text : {"inf", "nan", "e1"}) {
        EXPECT_EQ(read<typed_float>(text), "|" + text + " = nothing");
    }
}

TEST(TypedNumbersTest, ScannedFloatsAreWhatScanfTakes) {
    EXPECT_EQ(read<scanned_float>("12.5 x"), "12.5| x = 12.5");
    EXPECT_EQ(read<scanned_float>("-.5e1x"), "-.5e1|x = -5");
    EXPECT_EQ(read<scanned_float>("0x10x"), "0x10|x = 16");
    EXPECT_EQ(read<scanned_float>("0XA.8"), "0XA.8| = 10.5");
    EXPECT_EQ(read<scanned_float>("-0x1p-1p"), "-0x1p-1|p = -0.5");
    EXPECT_EQ(read<scanned_float>("0x1.8P+1"), "0x1.8P+1| = 3");
    EXPECT_EQ(read<scanned_float>("0b33t"), "0|b33t = 0");
    EXPECT_EQ(read<scanned_float>("INFx"), "INF|x = inf");
    EXPECT_EQ(read<scanned_float>("-Infinityt"), "-Infinity|t = -inf");
    EXPECT_EQ(read<scanned_float>("NaNt"), "NaN|t = nan");
    EXPECT_EQ(read<scanned_float>("nan(a_1)t"), "nan(a_1)|t = nan");
    EXPECT_EQ(read<scanned_float>("1e99"), "1e99| = inf");
    EXPECT_EQ(read<scanned_float>("-0x1p999"), "-0x1p999| = -inf");
}

TEST(TypedNumbersTest, WhatOnlyBeginsAScannedFloatIsTakenAndDoesNotConvert) {
    for (std::string const text : {"-", "+", ".", "-.", "0x", "0x.", "-0X", "1e", "1e-", "0x1p", "0x1p+", "i", "in",
                                   "infi", "-infinit", "n", "na", "nan(", "nan(1"}) {
        EXPECT_EQ(read<scanned_float>(text + " x"), text + "| x = nothing");
    }
    for (std::string const text : {"x", "e1", "p1", "t"}) {
        EXPECT_EQ(read<scanned_float>(text), "|" + text + " = nothing");
    }
}

TEST(TypedNumbersTest, FloatsOfMoreThan1023CharactersDoNotConvert) {
    std::string const zeros(1022, '0');
    EXPECT_EQ(read<typed_float>(zeros + "1"), zeros + "1| = 1");
    EXPECT_EQ(read<typed_float>(zeros + "01"), zeros + "01| = nothing");
    EXPECT_EQ(read<typed_float>(zeros + "001"), zeros + "00|1 = nothing");
    EXPECT_EQ(read<scanned_float>(zeros + "1"), zeros + "1| = 1");
    EXPECT_EQ(read<scanned_float>(zeros + "001"), zeros + "00|1 = nothing");
}

TEST(TypedNumbersTest, NumberOfALineIsItsBeginning) {
    EXPECT_EQ(scan_int("25"), 25);
    EXPECT_EQ(scan_int(" \t-3;"), -3);
    EXPECT_EQ(scan_int("\n\v\f\r4"), 4);
    EXPECT_EQ(scan_int("99999999999"), std::nullopt);
    EXPECT_EQ(scan_int("abc"), std::nullopt);
    EXPECT_EQ(scan_int(""), std::nullopt);
}

}  // namespace
