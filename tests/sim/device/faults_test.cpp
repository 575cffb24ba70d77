// Tests of the fault rules.
#include "sim/device/faults.h"

#include <gtest/gtest.h>

#include "sim/control/fault_words.h"

namespace {

using namespace std::chrono_literals;
using sim::Error;
using sim::FaultRules;

class FaultsTest : public testing::Test {
protected:
    Error add(sim::Words const& words) {
        sim::FaultRule rule;
        Error error = sim::parse_fault_rule(words, rule);
        if (error.empty()) {
            rules_.add(rule);
        }
        return error;
    }
    // The status that the rules give the next call of an operation; 99 for none.
    int next(char const* operation = "rtu_t::get_exposure") { return rules_.next({operation}).status.value_or(99); }

    FaultRules rules_;
};

TEST_F(FaultsTest, ARuleAppliesForEver) {
    EXPECT_EQ(add({"rtu_t::get_exposure", "status", "-1"}), "");
    EXPECT_EQ(next(), -1);
    EXPECT_EQ(next(), -1);
    EXPECT_EQ(next("rtu_t::set_exposure"), 99);
}

TEST_F(FaultsTest, SkipAndCountChooseTheCalls) {
    EXPECT_EQ(add({"rtu_t::get_exposure", "count", "2", "status", "5", "skip", "1"}), "");
    EXPECT_EQ(next(), 99);
    EXPECT_EQ(next(), 5);
    EXPECT_EQ(next(), 5);
    EXPECT_EQ(next(), 99);
    EXPECT_EQ(rules_.list(), "1  rtu_t::get_exposure skip 1 count 2 status 5  fired 2\n");
}

TEST_F(FaultsTest, TheFirstRuleThatAppliesTakesTheCall) {
    add({"rtu_t::get_exposure", "status", "1", "count", "1"});
    add({"rtu_t::*", "status", "2", "count", "1"});
    add({"*", "status", "3"});
    EXPECT_EQ(next(), 1);
    EXPECT_EQ(next(), 2);
    EXPECT_EQ(next(), 3);
    EXPECT_EQ(next("tof_t::shot"), 3);
}

TEST_F(FaultsTest, EffectsCanBeCombined) {
    EXPECT_EQ(add({"rtu_t::get_revision", "value", "0x30,-1,1.5,true", "delay", "2.5", "status", "4"}), "");
    auto const effect = rules_.next({"rtu_t::get_revision"});
    EXPECT_EQ(effect.status, 4);
    EXPECT_EQ(effect.delay, 2500us);
    EXPECT_EQ(effect.values, (std::vector<long double>{0x30, -1, 1.5, 1}));
    EXPECT_TRUE(effect.answers());
}

TEST_F(FaultsTest, TheListHasEveryRuleInOneOrderAndWithoutLoss) {
    EXPECT_EQ(
        add({"*", "value", "0x30,-1,0.1,true,18446744073709551615", "delay", "2.01", "status", "4", "count", "0x2"}),
        "");
    EXPECT_EQ(rules_.list(), "1  * count 2 status 4 delay 2.01 value 48,-1,0.1,1,1.8446744073709551615e+19  fired 0\n");
    EXPECT_EQ(rules_.next({"tof_t::shot"}).delay, 2010us);
}

TEST_F(FaultsTest, ARuleAnswersItsId) {
    EXPECT_EQ(rules_.add({"*", 0, {}, {}}), 1);
    EXPECT_EQ(rules_.clear(1), "");
    EXPECT_EQ(rules_.add({"*", 0, {}, {}}), 2) << "ids are not used again";
}

TEST_F(FaultsTest, ADelayAloneLetsTheDeviceAnswer) {
    EXPECT_EQ(add({"*", "delay", "1"}), "");
    EXPECT_FALSE(rules_.next({"tof_t::shot"}).answers());
}

TEST_F(FaultsTest, RulesAreCleared) {
    add({"rtu_t::get_exposure", "status", "1"});
    add({"rtu_t::get_exposure", "status", "2"});
    EXPECT_EQ(rules_.clear(1), "");
    EXPECT_EQ(next(), 2);
    EXPECT_EQ(rules_.clear(1), "no fault rule 1");
    rules_.clear();
    EXPECT_EQ(rules_.list(), "");
    EXPECT_EQ(next(), 99);
}

TEST_F(FaultsTest, BadRulesAreRefused) {
    std::vector<std::vector<std::string>> const bad{
        {},
        {"rtu_t::get_exposur", "status", "1"},
        {"rtu_t", "status", "1"},
        {"", "status", "1"},
        {"rtu_t::get_exposure"},
        {"rtu_t::get_exposure", "skip", "1"},
        {"rtu_t::get_exposure", "status"},
        {"rtu_t::get_exposure", "status", "x"},
        {"rtu_t::get_exposure", "status", "99999999999"},
        {"rtu_t::get_exposure", "status", "1", "skip", "-1"},
        {"rtu_t::get_exposure", "status", "1", "count", "0"},
        {"rtu_t::get_exposure", "delay", "-1"},
        {"rtu_t::get_exposure", "delay", "1e99"},
        {"rtu_t::get_exposure", "value", "1,,2"},
        {"rtu_t::get_exposure", "value", "1,"},
        {"rtu_t::get_exposure", "value", "inf"},
        {"rtu_t::get_exposure", "explode", "1"},
    };
    for (auto const& words : bad) {
        EXPECT_NE(add(words), "") << testing::PrintToString(words);
    }
    EXPECT_EQ(rules_.list(), "");
}

}  // namespace
