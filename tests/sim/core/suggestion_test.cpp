// Tests of what a mistyped word was likely meant to be.
#include "sim/core/suggestion.h"

#include <gtest/gtest.h>

namespace {

using sim::did_you_mean;

TEST(SuggestionTest, EachKindOfMistakeIsSeen) {
    for (char const* word : {"journal", "jurnal", "journnal", "juornal", "jaurnal", "Journal"}) {
        EXPECT_EQ(did_you_mean(word, {"set", "journal", "show"}), ": did you mean journal?") << word;
    }
}

TEST(SuggestionTest, TheNearestIsTakenAndOfSeveralTheFirst) {
    EXPECT_EQ(did_you_mean("imx297.gain", {"imx567.gain", "imx296.gain"}), ": did you mean imx296.gain?");
    EXPECT_EQ(did_you_mean("sot", {"set", "sit"}), ": did you mean set?");
}

TEST(SuggestionTest, TheLastPartOfANameWillDo) {
    EXPECT_EQ(did_you_mean("state", {"system.alive", "system.state"}), ": did you mean system.state?");
    EXPECT_EQ(did_you_mean("get_exposure", {"rtu_t::get_exposure"}), ": did you mean rtu_t::get_exposure?");
    EXPECT_EQ(did_you_mean("exposure", {"rtu_t::get_exposure"}), "");
}

TEST(SuggestionTest, WhatIsTooFarIsNotMeant) {
    EXPECT_EQ(did_you_mean("frobnicate", {"set", "fault", "power"}, ": try help"), ": try help");
    EXPECT_EQ(did_you_mean("stat", {"slot", "set"}), "");
    EXPECT_EQ(did_you_mean("x", {"y"}), "") << "nothing of it is right";
    EXPECT_EQ(did_you_mean("", {"set"}), "");
    EXPECT_EQ(did_you_mean("show", {}), "");
    EXPECT_EQ(did_you_mean(std::string(101, 'a'), {std::string(101, 'a')}), "");
}

TEST(SuggestionTest, LongWordsMayHaveThreeMistakes) {
    EXPECT_EQ(did_you_mean("rtu_t::gt_exposre", {"rtu_t::get_exposure"}), ": did you mean rtu_t::get_exposure?");
    EXPECT_EQ(did_you_mean("abcdefghijkl-1234", {"abcdefghijklmnopq"}), "");
}

}  // namespace
