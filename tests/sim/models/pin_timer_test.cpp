// Delays and pulses of a pin in time.
#include "sim/models/pin_timer.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using sim::PinTimer;
using sim::PinTiming;
using sim::Time;

PinTimer timer_with(PinTiming const& timing) {
    PinTimer timer;
    timer.reset(timing, false);
    return timer;
}

TEST(PinTimerTest, StateFollowsAtOnceWithoutDelays) {
    PinTimer timer = timer_with({});
    timer.set_signal(true, Time(5));
    EXPECT_TRUE(timer.state());
    timer.set_signal(false, Time(6));
    EXPECT_FALSE(timer.state());
    EXPECT_FALSE(timer.next_change());
}

TEST(PinTimerTest, OnDelayHoldsTheRiseBack) {
    PinTimer timer = timer_with({20ms, {}, {}});
    timer.set_signal(true, Time(1ms));
    EXPECT_FALSE(timer.state());
    ASSERT_EQ(timer.next_change(), Time(21ms));
    timer.change();
    EXPECT_TRUE(timer.state());
    timer.set_signal(false, Time(30ms));
    EXPECT_FALSE(timer.state());
}

TEST(PinTimerTest, SignalShorterThanTheOnDelayHasNoEffect) {
    PinTimer timer = timer_with({20ms, {}, {}});
    timer.set_signal(true, Time(0));
    timer.set_signal(false, Time(19ms));
    EXPECT_FALSE(timer.state());
    EXPECT_FALSE(timer.next_change());
}

TEST(PinTimerTest, OffDelayHoldsTheFallBack) {
    PinTimer timer = timer_with({{}, 30ms, {}});
    timer.set_signal(true, Time(0));
    timer.set_signal(false, Time(10ms));
    EXPECT_TRUE(timer.state());
    ASSERT_EQ(timer.next_change(), Time(40ms));
    timer.change();
    EXPECT_FALSE(timer.state());
}

TEST(PinTimerTest, SignalThatComesBackWithinTheOffDelayKeepsTheState) {
    PinTimer timer = timer_with({{}, 30ms, {}});
    timer.set_signal(true, Time(0));
    timer.set_signal(false, Time(10ms));
    timer.set_signal(true, Time(20ms));
    EXPECT_TRUE(timer.state());
    EXPECT_FALSE(timer.next_change());
}

TEST(PinTimerTest, PulseEndsByItselfWhileTheSignalStays) {
    PinTimer timer = timer_with({{}, {}, 5ms});
    timer.set_signal(true, Time(0));
    EXPECT_TRUE(timer.state());
    ASSERT_EQ(timer.next_change(), Time(5ms));
    timer.change();
    EXPECT_FALSE(timer.state());
    timer.set_signal(false, Time(8ms));
    EXPECT_FALSE(timer.state());
    timer.set_signal(true, Time(9ms));
    EXPECT_EQ(timer.next_change(), Time(14ms)) << "the next rise makes the next pulse";
}

TEST(PinTimerTest, PulseKeepsItsLengthWhateverTheSignalDoes) {
    PinTimer timer = timer_with({{}, 50ms, 5ms});
    timer.set_signal(true, Time(0));
    timer.set_signal(false, Time(1ms));
    timer.set_signal(true, Time(2ms));
    timer.set_signal(false, Time(3ms));
    EXPECT_TRUE(timer.state());
    ASSERT_EQ(timer.next_change(), Time(5ms));
    timer.change();
    EXPECT_FALSE(timer.state());
    EXPECT_FALSE(timer.next_change());
}

TEST(PinTimerTest, PulseBeginsAfterTheOnDelay) {
    PinTimer timer = timer_with({10ms, {}, 5ms});
    timer.set_signal(true, Time(0));
    ASSERT_EQ(timer.next_change(), Time(10ms));
    timer.change();
    EXPECT_TRUE(timer.state());
    EXPECT_EQ(timer.next_change(), Time(15ms));
}

TEST(PinTimerTest, ResetTakesTheSignalAsSettled) {
    PinTimer timer;
    timer.reset({20ms, {}, {}}, true);
    EXPECT_TRUE(timer.state());
    timer.reset({{}, {}, 20ms}, true);
    EXPECT_FALSE(timer.state()) << "its pulse is over";
    EXPECT_FALSE(timer.next_change());
    timer.set_signal(false, Time(0));
    timer.set_signal(true, Time(1ms));
    ASSERT_EQ(timer.next_change(), Time(21ms));
    timer.reset({{}, {}, {}}, true);
    EXPECT_FALSE(timer.next_change());
    timer.set_signal(false, Time(2ms));
    EXPECT_FALSE(timer.state());
    PinTimer other;
    other.reset({}, true);
    other.set_signal(false, Time(0));
    EXPECT_FALSE(other.state());
}

TEST(PinTimerTest, StartsOff) {
    PinTimer timer;
    EXPECT_FALSE(timer.state());
    timer.set_signal(true, Time(0));
    EXPECT_TRUE(timer.state());
}

TEST(PinTimerTest, SignalThatStaysDoesNotBeginItsDelayAnew) {
    PinTimer timer = timer_with({20ms, {}, {}});
    timer.set_signal(true, Time(0));
    timer.set_signal(true, Time(10ms));
    EXPECT_EQ(timer.next_change(), Time(20ms));
}

TEST(PinTimerTest, WithBothDelaysAShortGapIsNotSeen) {
    PinTimer timer = timer_with({20ms, 30ms, {}});
    timer.set_signal(true, Time(0));
    timer.change();
    timer.set_signal(false, Time(30ms));
    timer.set_signal(true, Time(40ms));
    EXPECT_TRUE(timer.state());
    EXPECT_FALSE(timer.next_change());
}

TEST(PinTimerTest, RepeatsWhereTheSameFollowsAtTheSameDistance) {
    PinTimer const idle = timer_with({20ms, {}, {}});
    EXPECT_TRUE(idle.repeats(idle, 100ms));
    PinTimer one = idle;
    one.set_signal(true, Time(5ms));
    PinTimer later = idle;
    later.set_signal(true, Time(105ms));
    EXPECT_TRUE(later.repeats(one, 100ms));
    EXPECT_FALSE(later.repeats(one, 99ms));
}

TEST(PinTimerTest, AnotherSignalStateOrWaitIsNoRepetition) {
    PinTimer pulse = timer_with({{}, {}, 50ms});
    pulse.set_signal(true, Time(0));
    PinTimer signal_gone = pulse;
    signal_gone.set_signal(false, Time(10ms));
    EXPECT_FALSE(signal_gone.repeats(pulse, 0s));
    PinTimer pulse_over = pulse;
    pulse_over.change();
    PinTimer steady = timer_with({});
    steady.set_signal(true, Time(0));
    EXPECT_FALSE(steady.repeats(pulse_over, 0s));
    PinTimer waits = timer_with({20ms, {}, {}});
    waits.set_signal(true, Time(0));
    EXPECT_FALSE(pulse_over.repeats(waits, 0s));
    EXPECT_FALSE(waits.repeats(pulse_over, 0s));
}

TEST(PinTimerTest, WhatIsDueCanBePostponed) {
    PinTimer timer = timer_with({20ms, {}, {}});
    timer.postpone(1s);
    EXPECT_FALSE(timer.next_change());
    timer.set_signal(true, Time(0));
    timer.postpone(1s);
    EXPECT_EQ(timer.next_change(), Time(1020ms));
}

}  // namespace
