// The tilt alarm: limit, teaching, transitions.
#include "sim/models/tilt_alarm.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using sim::TiltAlarm;
using Transition = TiltAlarm::Transition;

sim::Rotation pitched(double degrees) {
    return sim::rotation_of(sim::Angles{0, degrees, 0});
}

TEST(TiltAlarmTest, LevelIsTheFirstTaughtPosition) {
    TiltAlarm alarm;
    EXPECT_EQ(alarm.judge(pitched(0)), std::nullopt);
    EXPECT_EQ(alarm.judge(pitched(4.9)), std::nullopt);
    EXPECT_EQ(alarm.judge(pitched(5.1)), Transition::left);
    EXPECT_FALSE(alarm.in_position());
}

TEST(TiltAlarmTest, EachTransitionIsToldOnce) {
    TiltAlarm alarm;
    EXPECT_EQ(alarm.judge(pitched(20)), Transition::left);
    EXPECT_EQ(alarm.judge(pitched(21)), std::nullopt);
    EXPECT_EQ(alarm.judge(pitched(4)), Transition::reached);
    EXPECT_EQ(alarm.judge(pitched(3)), std::nullopt);
}

TEST(TiltAlarmTest, ThereIsNoHysteresis) {
    TiltAlarm alarm;
    EXPECT_EQ(alarm.judge(pitched(5.01)), Transition::left);
    EXPECT_EQ(alarm.judge(pitched(4.99)), Transition::reached);
    EXPECT_EQ(alarm.judge(pitched(5.01)), Transition::left);
}

TEST(TiltAlarmTest, AnyAxisCounts) {
    for (sim::Angles const& angles : {sim::Angles{6, 0, 0}, sim::Angles{0, -6, 0}, sim::Angles{0, 0, 6}}) {
        TiltAlarm alarm;
        EXPECT_EQ(alarm.judge(sim::rotation_of(angles)), Transition::left);
    }
}

TEST(TiltAlarmTest, TaughtPositionIsReachedWithTheNextSample) {
    TiltAlarm alarm;
    alarm.judge(pitched(40));
    alarm.teach(pitched(40));
    EXPECT_FALSE(alarm.in_position());
    EXPECT_EQ(alarm.judge(pitched(40)), Transition::reached);
    EXPECT_EQ(alarm.judge(pitched(0)), Transition::left);
}

TEST(TiltAlarmTest, LimitOutOfRangeIsRefusedAndTheOldOneStays) {
    TiltAlarm alarm;
    EXPECT_TRUE(alarm.set_angle_limit(30));
    for (float const limit : {-0.1F, 180.5F, NAN, INFINITY}) {
        EXPECT_FALSE(alarm.set_angle_limit(limit));
    }
    EXPECT_EQ(alarm.angle_limit(), 30.0F);
    EXPECT_EQ(alarm.judge(pitched(29)), std::nullopt);
    EXPECT_EQ(alarm.judge(pitched(31)), Transition::left);
}

TEST(TiltAlarmTest, LimitsOfTheRangeAreTaken) {
    TiltAlarm alarm;
    EXPECT_TRUE(alarm.set_angle_limit(0));
    EXPECT_EQ(alarm.judge(pitched(0)), std::nullopt) << "the limit itself is in position";
    EXPECT_EQ(alarm.judge(pitched(0.5)), Transition::left);
    EXPECT_TRUE(alarm.set_angle_limit(180));
    EXPECT_EQ(alarm.judge(pitched(90)), Transition::reached);
}

}  // namespace
