// Tests of texts as the journal, JSON and error messages write them.
#include "sim/core/text.h"

#include <gtest/gtest.h>

namespace {

TEST(TextTest, QuotedTextsShowWhatCannotBePrinted) {
    EXPECT_EQ(sim::quoted("/dev/x"), "\"/dev/x\"");
    EXPECT_EQ(sim::quoted("a\"b\\c\nd\x01\xC3\x7F"), "\"a\\\"b\\\\c\\nd\\x01\\xC3\\x7F\"");
}

TEST(TextTest, JsonTextsAreEscapedAsJsonHasIt) {
    EXPECT_EQ(sim::json_text("a\"b\\c\nd\x01\xC3\xA4"), "\"a\\\"b\\\\c\\u000ad\\u0001\xC3\xA4\"");
}

TEST(TextTest, JsonTextsAreUtf8WhateverTheBytes) {
    EXPECT_EQ(sim::json_text("\xC3\xBC \xE2\x82\xAC \xF0\x9F\x99\x82 \x7F"),
              "\"\xC3\xBC \xE2\x82\xAC \xF0\x9F\x99\x82 \x7F\"");
    EXPECT_EQ(sim::json_text("a\xFFz\xC3"), "\"a\\\\xFFz\\\\xC3\"") << "no character, and half of one";
    EXPECT_EQ(sim::json_text("\xC0\x80"), "\"\\\\xC0\\\\x80\"") << "longer than it need be";
    EXPECT_EQ(sim::json_text("\xED\xA0\x80"), "\"\\\\xED\\\\xA0\\\\x80\"") << "half of a pair of UTF-16";
    EXPECT_EQ(sim::json_text("\xF4\x90\x80\x80"), "\"\\\\xF4\\\\x90\\\\x80\\\\x80\"") << "beyond the last";
}

TEST(PatternTest, MatchesWholeNames) {
    EXPECT_TRUE(sim::matches("*", "rtu_t::get_exposure"));
    EXPECT_TRUE(sim::matches("rtu_t::*", "rtu_t::get_exposure"));
    EXPECT_TRUE(sim::matches("*::get_*e", "rtu_t::get_exposure"));
    EXPECT_TRUE(sim::matches("rtu_t::get_exposure*", "rtu_t::get_exposure"));
    EXPECT_FALSE(sim::matches("rtu_t::get", "rtu_t::get_exposure"));
    EXPECT_FALSE(sim::matches("*::get_*x", "rtu_t::get_exposure"));
    EXPECT_FALSE(sim::matches("", "rtu_t::get_exposure"));
}

TEST(PatternTest, ManyStarsAreNoBurden) {
    std::string pattern;
    for (int i = 0; i < 1000; ++i) {
        pattern += "*e";
    }
    EXPECT_FALSE(sim::matches(pattern, "rtu_t::get_exposure"));
}

}  // namespace
