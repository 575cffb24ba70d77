// Tests of the table of the device's state.
#include "sim/device/properties.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "sim/control/property_table.h"
#include "sim/control/value_words.h"
#include "sim/device/schema.h"

namespace {

using sim::About;
using sim::Properties;

enum class Colour : std::uint8_t { red = 1, green = 2 };

class PropertiesTest : public testing::Test {
protected:
    PropertiesTest() {
        properties_.add(
            "a.count", About("how many", "ms").within([this] {
                return sim::ValueRange{0, most_, 2};
            }),
            [this] { return count_; }, [this](unsigned int count) { count_ = count; });
        properties_.add_variable("a.small", "a byte", small_);
        properties_.add_variable("a.factor", "a factor", factor_);
        properties_.add_variable("a.on", "a switch", on_);
        properties_.add("a.colour", About("its colour").among({{1LL, "red"}, {2LL, "green"}}),
                        [this] { return colour_; });
        properties_.add(
            "ab", About("a text").unless("not that one"), [this] { return text_; },
            [this](std::string const& text) {
                bool const good = text != "bad";
                text_ = good ? text : text_;
                return good ? 0 : -1;
            });
    }

    unsigned int count_ = 4;
    double most_ = 10;
    unsigned char small_ = 200;
    float factor_ = 0.1F;
    bool on_ = true;
    Colour colour_ = Colour::green;
    std::string text_ = "x\"y\n\xFF";
    Properties properties_;
};

TEST_F(PropertiesTest, TableListsWhatBeginsWithThePrefix) {
    EXPECT_EQ(sim::property_table(sim::properties_json(properties_, {"a"}, true)),
              "a.colour  2 green       choice                its colour: 1 red, 2 green\n"
              "a.count   4 ms     set  integer 0 to 10 by 2  how many\n"
              "a.factor  0.1      set  number                a factor\n"
              "a.on      true     set  boolean               a switch\n"
              "a.small   200      set  integer 0 to 255      a byte\n");
    EXPECT_EQ(sim::property_table(sim::properties_json(properties_, {"a.c"}, true)), "");
}

TEST_F(PropertiesTest, TableIsCutAndColoured) {
    std::string const json = sim::properties_json(properties_, {"a.on"}, true);
    EXPECT_EQ(sim::property_table(json, {24, false}), "a.on  true  set  boolean\n");
    EXPECT_EQ(sim::property_table(json, {20, false}), "a.on  true  set  boo\n");
    EXPECT_EQ(sim::property_table(json, {8, true}), "\x1B[36ma.on\x1B[0m\x1B[1m  tr\x1B[0m\n");
}

TEST_F(PropertiesTest, TableCutsBetweenCharactersAndControlsNoTerminal) {
    text_ = "\xC3\xA4\xC3\xB6\x1B[31m";
    std::string const json = sim::properties_json(properties_, {"ab"}, true);
    EXPECT_EQ(sim::property_table(json, {5, false}), "ab  \xC3\xA4\n");
    EXPECT_EQ(sim::property_table(json), "ab  \xC3\xA4\xC3\xB6\\x1B[31m  set  text  a text\n");
}

TEST_F(PropertiesTest, JsonHasTypedValuesAndWhatTheyAre) {
    EXPECT_EQ(
        sim::properties_json(properties_, {}, true),
        R"({
  "a.colour": {"value":2,"name":"green","type":"choice",)"
        R"("choices":[{"value":1,"name":"red"},{"value":2,"name":"green"}],"settable":false,"meaning":"its colour"},
  "a.count": {"value":4,"type":"integer","unit":"ms","range":{"min":0,"max":10,"step":2},"settable":true,)"
        R"("meaning":"how many"},
  "a.factor": {"value":0.1,"type":"number","settable":true,"meaning":"a factor"},
  "a.on": {"value":true,"type":"boolean","settable":true,"meaning":"a switch"},
  "a.small": {"value":200,"type":"integer","range":{"min":0,"max":255},"settable":true,"meaning":"a byte"},
  "ab": {"value":"x\"y\n\\xFF","type":"text","settable":true,"meaning":"a text"}
}
)");
    EXPECT_EQ(sim::properties_json(properties_, {"a.on"}, false),
              "{\n  \"a.on\": {\"type\":\"boolean\",\"settable\":true,\"meaning\":\"a switch\"}\n}\n");
    EXPECT_EQ(sim::properties_json(properties_, {"nothing"}, true), "{}\n");
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
    EXPECT_EQ(properties_.set("a.count", sim::Value(6LL)), "");
    EXPECT_EQ(count_, 6U);
    EXPECT_EQ(properties_.set("a.count", sim::Value(5.0)), "a.count: 5 is not a multiple of 2 from 0 to 10 ms");
    EXPECT_EQ(properties_.set("a.on", sim::Value(0LL)), "a.on: 0 is not true or false");
    EXPECT_EQ(properties_.set("ab", sim::Value(true)), "ab: true is not a text");
    EXPECT_EQ(count_, 6U);
    EXPECT_TRUE(on_);
}

TEST_F(PropertiesTest, RefusedValuesChangeNothing) {
    most_ = 8;
    EXPECT_EQ(sim::set_property(properties_, "a.count", "10"), "a.count: 10 is not a multiple of 2 from 0 to 8 ms");
    EXPECT_EQ(sim::set_property(properties_, "a.count", "3"), "a.count: 3 is not a multiple of 2 from 0 to 8 ms");
    EXPECT_EQ(sim::set_property(properties_, "a.count", "-2"), "a.count: -2 is not a multiple of 2 from 0 to 8 ms");
    EXPECT_EQ(sim::set_property(properties_, "a.small", "256"), "a.small: 256 is not an integer from 0 to 255");
    EXPECT_EQ(sim::set_property(properties_, "a.factor", "1.5x"), "a.factor: 1.5x is not a number");
    EXPECT_EQ(sim::set_property(properties_, "a.factor", "nan"), "a.factor: nan is not a number");
    EXPECT_EQ(sim::set_property(properties_, "a.on", "maybe"), "a.on: maybe is not true or false");
    EXPECT_EQ(sim::set_property(properties_, "ab", "bad"), "ab: not that one; it takes a text");
    EXPECT_EQ(sim::set_property(properties_, "a.colour", "1"), "a.colour is read only");
    EXPECT_EQ(sim::set_property(properties_, "a.cuont", "1"), "unknown property a.cuont: did you mean a.count?");
    EXPECT_EQ(count_, 4U);
    EXPECT_EQ(small_, 200);
    EXPECT_EQ(factor_, 0.1F);
    EXPECT_TRUE(on_);
}

}  // namespace
