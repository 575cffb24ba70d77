// Tests of the device's time.
#include "sim/core/clock.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using sim::Clock;
using sim::parse_duration;
using sim::Time;

Clock::HostTime const kHost{100s};

TEST(ClockTest, RealTimeFollowsTheHost) {
    Clock clock(kHost);
    clock.run_real(kHost + 1s);
    EXPECT_EQ(clock.now(kHost + 1s), 0us);
    EXPECT_EQ(clock.now(kHost + 1s + 1500us), 1500us);
    EXPECT_EQ(clock.setting(), "real");
}

TEST(ClockTest, HostTimeIsNotBeforeTheTimeHasCome) {
    Clock clock(kHost);
    clock.run_scaled(kHost, 3.0);
    Time const due = 1000001us;
    ASSERT_TRUE(clock.host_time(due));
    EXPECT_GE(clock.now(*clock.host_time(due)), due);
}

TEST(ClockTest, ScaledTimePassesFasterFromTheTimeReached) {
    Clock clock(kHost);
    clock.run_real(kHost);
    clock.run_scaled(kHost + 1s, 10.0);
    EXPECT_EQ(clock.now(kHost + 3s), 21s);
    EXPECT_EQ(clock.setting(), "scaled 10");
}

TEST(ClockTest, SteppedTimeStandsUntilItIsMoved) {
    Clock clock(kHost);
    clock.run_real(kHost);
    clock.run_stepped(kHost + 2s);
    EXPECT_EQ(clock.now(kHost + 60s), 2s);
    EXPECT_FALSE(clock.host_time(5s));
    clock.advance_to(5s);
    EXPECT_EQ(clock.now(kHost + 60s), 5s);
    clock.advance_to(1s);
    EXPECT_EQ(clock.now(kHost + 60s), 5s) << "never backwards";
    EXPECT_EQ(clock.setting(), "stepped");
}

TEST(ClockTest, ItIsSteppedAtFirstAndStandsAtZero) {
    Clock const clock(kHost);
    EXPECT_EQ(clock.now(kHost + 3s), 0us);
    EXPECT_EQ(clock.setting(), "stepped");
}

TEST(ClockTest, RealTimeGoesOnFromTheSteppedTime) {
    Clock clock(kHost);
    clock.advance_to(7s);
    clock.run_real(kHost + 50s);
    EXPECT_EQ(clock.now(kHost + 51s), 8s);
}

TEST(ClockTest, DurationsAreReadInAllUnits) {
    EXPECT_EQ(parse_duration("3s"), 3s);
    EXPECT_EQ(parse_duration("250ms"), 250ms);
    EXPECT_EQ(parse_duration("10us"), 10us);
    EXPECT_EQ(parse_duration("1.5s"), 1500ms);
    EXPECT_EQ(parse_duration("0s"), 0s);
    EXPECT_EQ(parse_duration("86400s"), 24h);
    EXPECT_EQ(parse_duration("2min"), 2min);
    EXPECT_EQ(parse_duration("0.5h"), 30min);
    EXPECT_EQ(parse_duration("24h"), 24h);
}

TEST(ClockTest, OtherTextsAreNoDurations) {
    for (char const* text :
         {"", "s", "3", "3 s", "-1s", "3sec", "xs", "1e300s", "nans", "infs", "86401s", "--1s", "+1s", "-0s"}) {
        EXPECT_FALSE(parse_duration(text)) << text;
    }
}

TEST(ClockTest, SecondsHaveSixDecimals) {
    EXPECT_EQ(sim::seconds(12345us), "0.012345");
    EXPECT_EQ(sim::seconds(3600s + 1us), "3600.000001");
}

}  // namespace
