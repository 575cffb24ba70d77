// Tests of the words that stand for typed values.
#include "sim/control/value_words.h"

#include <gtest/gtest.h>

namespace {

using sim::Scene;
using sim::Value;

std::optional<Scene> parse(std::string const& text) {
    sim::Words words;
    return sim::split_words(text, words) ? sim::parse_scene(words) : std::nullopt;
}

TEST(ValueWordsTest, SceneIsReadAsItIsWritten) {
    for (char const* text : {"none", "plane 800", "plane 20.5 reflectance 10", "tilted 800 20 0", "tilted 800 -20 5",
                             "step 500 900", "hole 600 0", "hole 600 1200 reflectance 88"}) {
        SCOPED_TRACE(text);
        auto const scene = parse(text);
        ASSERT_TRUE(scene);
        EXPECT_EQ(scene->text(), text);
    }
    EXPECT_EQ(parse("tilted 800 20")->text(), "tilted 800 20 0");
    EXPECT_EQ(parse("hole 600")->text(), "hole 600 0");
}

TEST(ValueWordsTest, WordsThatMakeNoSceneAreRefused) {
    for (char const* text : {"",
                             "wall 800",
                             "plane",
                             "plane 0",
                             "plane -5",
                             "plane 10001",
                             "plane 800 900",
                             "plane near",
                             "tilted 800",
                             "tilted 800 61",
                             "tilted 800 0 -61",
                             "tilted 800 1 2 3",
                             "step 500",
                             "step 500 0",
                             "hole 600 500",
                             "plane 800 reflectance",
                             "plane 800 reflectance 0",
                             "plane 800 reflectance 101",
                             "plane reflectance 50 800",
                             "plane 800 reflectance 5 reflectance 5",
                             "none 5",
                             "none reflectance 20",
                             "plane nan"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(parse(text));
    }
}

TEST(ValueWordsTest, SupplyIsOneOfTwo) {
    EXPECT_EQ(sim::parse_supply("24v"), sim::Supply::dc_24v);
    EXPECT_EQ(sim::parse_supply("poe"), sim::Supply::poe);
    EXPECT_FALSE(sim::parse_supply("24V"));
    EXPECT_FALSE(sim::parse_supply("battery"));
}

TEST(ValueWordsTest, AWordIsReadAsTheTypeOfTheOtherValue) {
    EXPECT_EQ(sim::parse_value("on", false), Value(true));
    EXPECT_EQ(sim::parse_value("0x10", 0LL), Value(16LL));
    EXPECT_EQ(sim::parse_value("0.1", 0.0F), Value(0.1F));
    EXPECT_EQ(sim::parse_value("0.1", 0.0), Value(0.1));
    EXPECT_EQ(sim::parse_value("0.1", std::string()), Value(std::string("0.1")));
    EXPECT_EQ(sim::parse_value("poe", sim::Supply::dc_24v), Value(sim::Supply::poe));
    EXPECT_EQ(sim::parse_value("plane 333", Scene()), Value(*Scene::plane(333)));
    EXPECT_EQ(sim::parse_value("8,0x10", sim::Pixel()), Value(sim::Pixel{8, 16}));
    for (char const* word : {"8", "8,", ",8", "8,8,8", "-8,8", "8 8"}) {
        EXPECT_FALSE(sim::parse_value(word, sim::Pixel())) << word;
    }
    EXPECT_FALSE(sim::parse_value("1.5", 0LL));
    EXPECT_FALSE(sim::parse_value("2", false));
    EXPECT_FALSE(sim::parse_value("plane \"333", Scene()));
}

}  // namespace
