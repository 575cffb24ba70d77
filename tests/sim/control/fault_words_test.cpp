// Tests of the fault rules' words: what they choose by, what they do, and what can do nothing.
#include "sim/control/fault_words.h"

#include <gtest/gtest.h>

#include <map>

namespace {

using namespace std::chrono_literals;
using sim::Error;
using sim::FaultEffect;
using sim::FaultOccasion;
using sim::FaultRules;

constexpr char const* kGet = "rtu_t::get_exposure";
constexpr char const* kSet = "rtu_t::set_exposure";

class FaultWordsTest : public testing::Test {
protected:
    Error add(std::string const& line) {
        sim::Words words;
        EXPECT_TRUE(sim::split_words(line, words));
        sim::FaultRule rule;
        Error error = sim::parse_fault_rule(words, rule);
        if (error.empty()) {
            rules_.add(rule);
        }
        return error;
    }
    bool fires(FaultOccasion const& occasion) { return rules_.next(occasion).rule != 0; }
    // Which of so many calls of `operation` are met, from 1.
    std::vector<int> met(int calls, FaultOccasion const& occasion = {kGet}) {
        std::vector<int> met;
        for (int i = 1; i <= calls; ++i) {
            if (fires(occasion)) {
                met.push_back(i);
            }
        }
        return met;
    }

    FaultRules rules_;
};

TEST_F(FaultWordsTest, ARuleChoosesByArguments) {
    EXPECT_EQ(add("rtu_t::set_exposure arg 1 0x1388 status -1"), "");
    EXPECT_TRUE(fires({kSet, {}, 1, {"5000"}})) << "the same number";
    EXPECT_FALSE(fires({kSet, {}, 1, {"5001"}}));
    EXPECT_EQ(add("base_t::base_t arg 1 /dev/imx296 arg 2 2 status -1"), "");
    EXPECT_TRUE(fires({"base_t::base_t", {}, 0, {"\"/dev/imx296\"", "2"}})) << "a text without its quotes";
    EXPECT_FALSE(fires({"base_t::base_t", {}, 0, {"\"/dev/imx296\"", "1"}})) << "all of them must hold";
    EXPECT_FALSE(fires({"base_t::base_t", {}, 0, {"\"/dev/imx567\"", "2"}}));
    EXPECT_EQ(add("rtu_t::single_shot arg 1 true status -1"), "");
    EXPECT_TRUE(fires({"rtu_t::single_shot", {}, 1, {"true"}}));
    EXPECT_FALSE(fires({"rtu_t::single_shot", {}, 1, {"false"}}));
}

TEST_F(FaultWordsTest, ARuleChoosesByObject) {
    EXPECT_EQ(add("rtu_t::get_* object 3 status -1"), "");
    EXPECT_TRUE(fires({kGet, {}, 3, {}}));
    EXPECT_FALSE(fires({kGet, {}, 4, {}}));
}

TEST_F(FaultWordsTest, ARuleChoosesByTime) {
    EXPECT_EQ(add("* from 2s to 3500ms status -1"), "");
    EXPECT_FALSE(fires({kGet, 1999999us}));
    EXPECT_TRUE(fires({kGet, 2s}));
    EXPECT_TRUE(fires({kGet, 3499999us}));
    EXPECT_FALSE(fires({kGet, 3500ms}));
}

TEST_F(FaultWordsTest, ARuleChoosesEveryNth) {
    EXPECT_EQ(add("rtu_t::* skip 2 every 3 count 2 status -1"), "");
    EXPECT_EQ(met(15), (std::vector<int>{5, 8}));
}

TEST_F(FaultWordsTest, OnlyWhatTheRestOfTheRuleChoosesIsCounted) {
    EXPECT_EQ(add("rtu_t::* object 1 skip 1 status -1"), "");
    EXPECT_FALSE(fires({kGet, {}, 2, {}}));
    EXPECT_FALSE(fires({kGet, {}, 1, {}}));
    EXPECT_TRUE(fires({kGet, {}, 1, {}}));
}

TEST_F(FaultWordsTest, AProbabilityChoosesTheSameCallsForASeed) {
    EXPECT_EQ(add("rtu_t::* probability 0.25 seed 7 status -1"), "");
    auto const first = met(1000);
    EXPECT_GT(first.size(), 200U);
    EXPECT_LT(first.size(), 300U);
    rules_.clear();
    EXPECT_EQ(add("rtu_t::* probability 0.25 seed 7 status -1"), "");
    EXPECT_EQ(met(1000), first);
    rules_.clear();
    EXPECT_EQ(add("rtu_t::* probability 0.25 seed 8 status -1"), "");
    EXPECT_NE(met(1000), first);
}

TEST_F(FaultWordsTest, AnErrnoIsAFailure) {
    EXPECT_EQ(add("rtu_t::get_exposure errno EBUSY"), "");
    FaultEffect const effect = rules_.next({kGet});
    EXPECT_EQ(effect.status, -1);
    EXPECT_EQ(effect.error, EBUSY);
    EXPECT_EQ(add("rtu_t::rtu_t errno EACCES status 3"), "");
    EXPECT_EQ(rules_.next({"rtu_t::rtu_t"}).status, 3);
}

TEST_F(FaultWordsTest, CallbacksHaveRulesOfTheirOwn) {
    EXPECT_EQ(add("gyro_* drop count 1"), "");
    EXPECT_EQ(add("gyro_* late 2.5 double"), "");
    EXPECT_EQ(add("* status -1"), "");
    EXPECT_EQ(rules_.next({"gyro_delegate_t", {}, 2, {"37"}}).delivery, FaultEffect::Delivery::dropped);
    FaultEffect const late = rules_.next({"gyro_alarm_t::on_position_left"});
    EXPECT_EQ(late.delivery, FaultEffect::Delivery::doubled);
    EXPECT_EQ(late.delay, 2500us);
    EXPECT_EQ(rules_.next({"gyro_t::boot"}).rule, 3) << "an operation is no callback";
    EXPECT_EQ(rules_.next({"button_t::press_records", {}, 2, {"1"}}).rule, 0) << "nor the other way round";
    EXPECT_EQ(add("button_t::press_records arg 1 4 drop"), "");
    EXPECT_FALSE(fires({"button_t::press_records", {}, 2, {"1"}}));
    EXPECT_TRUE(fires({"button_t::press_records", {}, 2, {"4"}}));
}

TEST_F(FaultWordsTest, WhatCanDoNothingIsRefused) {
    std::map<std::string, std::string> const bad{
        {"rtu_t::~rtu_t status -1", "it can do nothing: rtu_t::~rtu_t answers no status"},
        {"rtu_t::~* errno EIO", "it can do nothing: rtu_t::~rtu_t answers no status"},
        {"rtu_t::rtu_t value 1", "it can do nothing: rtu_t::rtu_t has no results"},
        {"rtu_t::~rtu_t value 1", "it can do nothing: rtu_t::~rtu_t has no results"},
        {"rtu_t::set_exposure value 1", "it can do nothing: rtu_t::set_exposure has no results"},
        {"rtu_t::set_exposure value 1 status 0", "it can do nothing: rtu_t::set_exposure has no results"},
        {"gyro_t::info_firmware value 1", "it can do nothing: gyro_t::info_firmware has no results"},
        {"rtu_t::rtu_t status 0", "it can do nothing: rtu_t::rtu_t opens its object with status 0 by itself"},
        {"rtu_t::rtu_t object 1 status 1", "it can do nothing: rtu_t::rtu_t has no object yet"},
        {"autofocus_t::set_present errno EIO", "it can do nothing: autofocus_t::set_present answers no errno"},
        {"rtu_t::get_exposure arg 1 5 status 1", "it can do nothing: rtu_t::get_exposure has no argument 1"},
        {"tof_t::shot arg 1 5 status 1", "it can do nothing: tof_t::shot has no argument 1"},
        {"rtu_t::get_exposure value 1,2", "it can do nothing: rtu_t::get_exposure has no more than 1 value"},
        {"rtu_t::get_revision value 1,2,3,4,5,6,7", "it can do nothing: rtu_t::get_revision has no more than 6 values"},
        {"camera_t::get_imxtype value 1,2", "it can do nothing: camera_t::get_imxtype has no more than 1 value"},
        {"camera_t::determine_imxtype object 1 status 1",
         "it can do nothing: camera_t::determine_imxtype has no object"},
        {"rtu_t::set_exposure arg 1 long status 1",
         "it can do nothing: argument 1 of rtu_t::set_exposure is never long"},
        {"rtu_t::set_exposure arg 1 -1 status 1", "it can do nothing: argument 1 of rtu_t::set_exposure is never -1"},
        {"rtu_t::set_exposure arg 1 1.5 status 1", "it can do nothing: argument 1 of rtu_t::set_exposure is never 1.5"},
        {"rtu_t::set_pin_value arg 1 256 status 1",
         "it can do nothing: argument 1 of rtu_t::set_pin_value is never 256"},
        {"rtu_t::single_shot arg 1 2 status 1", "it can do nothing: argument 1 of rtu_t::single_shot is never 2"},
        {"gyro_delegate_t arg 1 left drop", "it can do nothing: argument 1 of gyro_delegate_t is never left"},
        {"gyro_delegate_t arg 2 5 drop", "it can do nothing: gyro_delegate_t has no argument 2"},
    };
    for (auto const& [line, message] : bad) {
        EXPECT_EQ(add(line), message) << line;
    }
    EXPECT_EQ(rules_.list(), "");
}

TEST_F(FaultWordsTest, APatternTakesWhatItCanDoSomethingTo) {
    EXPECT_EQ(add("rtu_t::* status -1"), "");
    EXPECT_TRUE(fires({"rtu_t::rtu_t"}));
    EXPECT_FALSE(fires({"rtu_t::~rtu_t"})) << "not even counted";
    EXPECT_EQ(rules_.list(), "1  rtu_t::* status -1  fired 1\n");
    rules_.clear();
    EXPECT_EQ(add("rtu_t::* value 5"), "");
    EXPECT_TRUE(fires({kGet}));
    EXPECT_FALSE(fires({kSet}));
    rules_.clear();
    EXPECT_EQ(add("rtu_t::* value 5,6"), "");
    EXPECT_FALSE(fires({kGet})) << "it has but one";
    EXPECT_TRUE(fires({"rtu_t::get_revision"}));
    rules_.clear();
    EXPECT_EQ(add("rtu_t::* arg 1 0x10 arg 1 16 status 1"), "") << "the same twice";
    rules_.clear();
    EXPECT_EQ(add("*::~* delay 1"), "");
    EXPECT_TRUE(fires({"rtu_t::~rtu_t"}));
}

TEST_F(FaultWordsTest, WhatIsNotUnderstoodIsRefused) {
    std::map<std::string, std::string> const bad{
        {"rtu_t::get_exposur status 1", "no operation is called rtu_t::get_exposur: did you mean rtu_t::get_exposure?"},
        {"rtu_t::get_exposure drop", "no callback is called rtu_t::get_exposure"},
        {"gyro_delegate_t status 1",
         "no operation is called gyro_delegate_t: did you mean gyro_delegate_t::gyro_delegate_t?"},
        {"* drop status 1", "status, errno, delay and value are for calls; drop, double and late are for callbacks"},
        {"* object 0 status 1", "bad object: 0"},
        {"* arg 0 1 status 1", "bad arg: 0"},
        {"* arg 1", "arg needs a number and a value"},
        {"* from 3 status 1", "bad from: 3"},
        {"* from 2s to 2s status 1", "an empty time: from must be before to"},
        {"* to 0s status 1", "an empty time: from must be before to"},
        {"* count 1 count 2 status 1", "count is given twice"},
        {"* status 1 status 2", "status is given twice"},
        {"* drop double", "a callback is dropped or doubled"},
        {"rtu_t::* arg 1 1 arg 1 2 status 1", "argument 1 cannot be 1 and 2"},
        {"* every 0 status 1", "bad every: 0"},
        {"* probability 0 status 1", "bad probability: 0"},
        {"* probability 1 status 1", "bad probability: 1"},
        {"* seed 1 status 1", "a seed needs a probability"},
        {"* errno EWHAT", "bad errno: EWHAT"},
        {"* errno EIO status 0", "status 0 is no failure: it has no errno"},
        {"* delay 0", "bad delay: 0"},
        {"* late -1", "bad late: -1"},
        {"* skip 1", "no effect given: status, errno, delay or value; of callbacks drop, double or late"},
    };
    for (auto const& [line, message] : bad) {
        EXPECT_EQ(add(line), message) << line;
    }
    EXPECT_EQ(rules_.list(), "");
}

TEST_F(FaultWordsTest, TheListIsWhatAddTakes) {
    for (char const* const rule :
         {"camera_t::camera_t arg 2 \"two words\" arg 3 \"a\\\"b\" skip 1 every 2 count 3 status -1 errno EBUSY",
          "rtu_t::get_* object 3 from 0.000001s to 86400s probability 0.1 seed 18 status 4 delay 2.01 value 1,0.5",
          "gyro_t::callback_records arg 1 0 arg 2 37 drop late 0.001", "*_records double"}) {
        ASSERT_EQ(add(rule), "") << rule;
        std::string const list = rules_.list();
        std::string const text = list.substr(3, list.find("  fired") - 3);
        rules_.clear();
        ASSERT_EQ(add(text), "") << text;
        std::string const again = rules_.list();
        EXPECT_EQ(again.substr(3, again.find("  fired") - 3), text);
        rules_.clear();
    }
}

TEST_F(FaultWordsTest, RulesThatNeverFiredAreKnown) {
    add("rtu_t::get_exposure status 1");
    add("rtu_t::set_exposure status 2");
    add("rtu_t::single_shot status 3");
    fires({kGet});
    EXPECT_EQ(rules_.clear(3), "");
    EXPECT_EQ(rules_.never_fired(),
              (std::vector<std::string>{"3  rtu_t::single_shot status 3", "2  rtu_t::set_exposure status 2"}));
    rules_.clear();
    EXPECT_EQ(rules_.never_fired().size(), 2U) << "clearing is no firing";
}

}  // namespace
