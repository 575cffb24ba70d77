// Tests of the table of the device's state.
#include "sim/device/properties.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "sim/control/value_words.h"

namespace {

using sim::Properties;

enum class Colour : std::uint8_t { red = 1, green = 2 };

class PropertiesTest : public testing::Test {
protected:
    PropertiesTest() {
        properties_.add(
            "a.count", "how many, 0-10", [this] { return count_; }, [this](unsigned int count) { return put(count); },
            0U, 10U);
        properties_.add_variable("a.small", "a byte", small_);
        properties_.add_variable("a.factor", "a factor", factor_);
        properties_.add_variable("a.on", "a switch", on_);
        properties_.add("a.colour", "1 red, 2 green", [this] { return colour_; });
        properties_.add(
            "ab", "a text", [this] { return text_; },
            [this](std::string const& text) {
                bool const good = text != "bad";
                text_ = good ? text : text_;
                return good ? 0 : -1;
            },
            "not that one");
    }

    int put(unsigned int count) {
        if (count > 10) {
            return -1;
        }
        count_ = count;
        return 0;
    }

    unsigned int count_ = 3;
    unsigned char small_ = 200;
    float factor_ = 0.5F;
    bool on_ = true;
    Colour colour_ = Colour::green;
    std::string text_ = "x\"y\n";
    Properties properties_;
};

TEST_F(PropertiesTest, TableListsWhatBeginsWithThePrefix) {
    EXPECT_EQ(properties_.table("a"),
              "a.colour  2     1 red, 2 green\n"
              "a.count   3     how many, 0-10\n"
              "a.factor  0.5   a factor\n"
              "a.on      true  a switch\n"
              "a.small   200   a byte\n");
    EXPECT_EQ(properties_.table("a.count"), "a.count  3  how many, 0-10\n");
    EXPECT_EQ(properties_.table("a.c"), "");
}

TEST_F(PropertiesTest, JsonHasTypedValues) {
    EXPECT_EQ(properties_.json(""),
              "{\n"
              "  \"a.colour\": 2,\n"
              "  \"a.count\": 3,\n"
              "  \"a.factor\": 0.5,\n"
              "  \"a.on\": true,\n"
              "  \"a.small\": 200,\n"
              "  \"ab\": \"x\\\"y\\u000a\"\n"
              "}\n");
    EXPECT_EQ(properties_.json("nothing"), "{}\n");
}

TEST_F(PropertiesTest, SetTakesEveryType) {
    EXPECT_EQ(sim::set_property(properties_, "a.count", "0x0A"), "");
    EXPECT_EQ(count_, 10U);
    EXPECT_EQ(sim::set_property(properties_, "a.small", "255"), "");
    EXPECT_EQ(small_, 255);
    EXPECT_EQ(sim::set_property(properties_, "a.factor", "-2.25"), "");
    EXPECT_EQ(factor_, -2.25F);
    EXPECT_EQ(sim::set_property(properties_, "a.on", "off"), "");
    EXPECT_FALSE(on_);
    EXPECT_EQ(sim::set_property(properties_, "ab", "new"), "");
    EXPECT_EQ(text_, "new");
}

TEST_F(PropertiesTest, AValueOfAnotherTypeIsRefused) {
    EXPECT_EQ(properties_.set("a.count", sim::Value(4LL)), "");
    EXPECT_EQ(count_, 4U);
    EXPECT_EQ(properties_.set("a.count", sim::Value(5.0)), "a.count: not a value of this property: 5");
    EXPECT_EQ(properties_.set("a.on", sim::Value(0LL)), "a.on: not a value of this property: 0");
    EXPECT_EQ(properties_.set("ab", sim::Value(true)), "ab: not a value of this property: true");
    EXPECT_EQ(count_, 4U);
    EXPECT_TRUE(on_);
}

TEST_F(PropertiesTest, RefusedValuesChangeNothing) {
    EXPECT_EQ(sim::set_property(properties_, "a.count", "11"), "a.count: out of range 0 to 10");
    EXPECT_EQ(sim::set_property(properties_, "a.count", "-1"), "a.count: not a value of this property: -1");
    EXPECT_EQ(sim::set_property(properties_, "a.small", "256"), "a.small: not a value of this property: 256");
    EXPECT_EQ(sim::set_property(properties_, "a.factor", "1.5x"), "a.factor: not a value of this property: 1.5x");
    EXPECT_EQ(sim::set_property(properties_, "a.factor", "nan"), "a.factor: not a value of this property: nan");
    EXPECT_EQ(sim::set_property(properties_, "a.on", "maybe"), "a.on: not a value of this property: maybe");
    EXPECT_EQ(sim::set_property(properties_, "ab", "bad"), "ab: not that one");
    EXPECT_EQ(sim::set_property(properties_, "a.colour", "1"), "a.colour is read only");
    EXPECT_EQ(sim::set_property(properties_, "a", "1"), "unknown property a");
    EXPECT_EQ(count_, 3U);
    EXPECT_EQ(small_, 200);
    EXPECT_EQ(factor_, 0.5F);
    EXPECT_TRUE(on_);
    EXPECT_EQ(text_, "x\"y\n");
}

}  // namespace
