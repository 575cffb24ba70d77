// The push button: which records fire, and when.
#include "sim/models/button.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using sim::ButtonEvents;
using Records = ButtonEvents::Records;

constexpr sim::Duration kDebounce = 2ms;
constexpr Records kPress = {{50ms, false}, {2000ms, true}, {3000ms, false}, {4000ms, true}};
constexpr Records kRelease = {{50ms, false}, {1250ms, true}, {2250ms, true}, {4250ms, true}};

// "p1 r2": the records that fired.
std::string text(std::vector<ButtonEvents::Event> const& events) {
    std::string list;
    for (auto const& event : events) {
        list += (list.empty() ? "" : " ") + std::string(event.press ? "p" : "r") + std::to_string(event.index);
    }
    return list;
}

// All that fires in a press of this length, with nobody looking in between.
std::string press_of(sim::Duration length, Records const& press = kPress, Records const& release = kRelease) {
    ButtonEvents events(kDebounce);
    events.press(10s, press);
    return text(events.release(10s + length, release));
}

TEST(PushButtonTest, TellsWhetherItIsPressedAndForHowLong) {
    sim::PushButton button;
    EXPECT_FALSE(button.release());
    EXPECT_EQ(button.held(1s), 0s);
    EXPECT_TRUE(button.press(2s));
    EXPECT_FALSE(button.press(3s));
    EXPECT_TRUE(button.pressed());
    EXPECT_EQ(button.held(5s), 3s);
    EXPECT_TRUE(button.release());
    EXPECT_FALSE(button.pressed());
}

TEST(DebounceTest, WhatIsShorterThanItsTimeIsNotSeen) {
    sim::Debounce debounce(kDebounce);
    EXPECT_FALSE(debounce.passes(true, 1999us));
    EXPECT_TRUE(debounce.passes(true, 2ms));
    EXPECT_FALSE(debounce.passes(false, 1999us));
    EXPECT_FALSE(debounce.passes(true, 1h)) << "it was closed before";
    EXPECT_TRUE(debounce.passes(false, 2ms));
    EXPECT_FALSE(debounce.passes(false, 2ms));
}

TEST(DebounceTest, TheContactIsOpenAtFirstAndAfterAReset) {
    sim::Debounce debounce(kDebounce);
    EXPECT_FALSE(debounce.passes(false, 1h));
    EXPECT_TRUE(debounce.passes(true, 1h));
    debounce.reset();
    EXPECT_FALSE(debounce.passes(false, 1h));
    EXPECT_TRUE(debounce.passes(true, 1h));
}

TEST(ButtonEventsTest, AForgottenPressFiresNothing) {
    ButtonEvents events(kDebounce);
    events.press(10s, kPress);
    events.reset();
    EXPECT_EQ(events.next_due(), std::nullopt);
    EXPECT_EQ(text(events.release(15s, kRelease)), "");
}

TEST(ButtonEventsTest, LengthOfThePressDecides) {
    EXPECT_EQ(press_of(49ms), "");
    EXPECT_EQ(press_of(50ms), "");
    EXPECT_EQ(press_of(1249ms), "");
    EXPECT_EQ(press_of(1250ms), "r1");
    EXPECT_EQ(press_of(1999ms), "r1");
    EXPECT_EQ(press_of(2s), "p1 r1");
    EXPECT_EQ(press_of(2250ms), "p1 r2");
    EXPECT_EQ(press_of(4s), "p1 p3 r2");
    EXPECT_EQ(press_of(4249ms), "p1 p3 r2");
    EXPECT_EQ(press_of(4250ms), "p1 p3 r3");
    EXPECT_EQ(press_of(60s), "p1 p3 r3");
}

TEST(ButtonEventsTest, PressRecordsFireWhileHeldEachOnce) {
    ButtonEvents events(kDebounce);
    EXPECT_EQ(events.next_due(), std::nullopt);
    events.press(10s, kPress);
    EXPECT_EQ(events.next_due(), 12s);
    EXPECT_EQ(text(events.advance(11999ms)), "");
    EXPECT_EQ(text(events.advance(12s)), "p1");
    EXPECT_EQ(text(events.advance(13s)), "");
    EXPECT_EQ(events.next_due(), 14s);
    EXPECT_EQ(text(events.release(13s, kRelease)), "r2");
    EXPECT_EQ(events.next_due(), std::nullopt);
    EXPECT_EQ(text(events.advance(20s)), "");
}

TEST(ButtonEventsTest, SecondPressFiresAgain) {
    ButtonEvents events(kDebounce);
    events.press(0s, kPress);
    EXPECT_EQ(text(events.release(2s, kRelease)), "p1 r1");
    events.press(3s, kPress);
    EXPECT_EQ(text(events.release(5s, kRelease)), "p1 r1");
}

TEST(ButtonEventsTest, PressShorterThanTheDebounceTimeIsNotSeen) {
    constexpr Records at_once = {{0ms, true}};
    EXPECT_EQ(press_of(1999us, at_once, at_once), "");
    EXPECT_EQ(press_of(2ms, at_once, at_once), "p0 r0");
}

TEST(ButtonEventsTest, ReleaseWithoutAPressIsIgnored) {
    ButtonEvents events(kDebounce);
    EXPECT_EQ(text(events.release(60s, kRelease)), "");
}

TEST(ButtonEventsTest, RecordWithoutAnActionHidesShorterOnes) {
    EXPECT_EQ(press_of(3s, {}, {{1000ms, true}, {2000ms, false}}), "");
    EXPECT_EQ(press_of(1500ms, {}, {{1000ms, true}, {2000ms, false}}), "r0");
}

TEST(ButtonEventsTest, RecordThatIsNotSetHidesNone) {
    EXPECT_EQ(press_of(1s, {}, {{0ms, false}, {0ms, true}}), "r1");
}

TEST(ButtonEventsTest, RecordsFireInTheOrderOfTheirTimes) {
    EXPECT_EQ(press_of(5s, {{3000ms, true}, {1000ms, true}, {2000ms, true}}, {{5000ms, true}, {100ms, true}}),
              "p1 p2 p0 r0");
}

TEST(ButtonEventsTest, OfEqualTimesTheFirstRecordComesFirst) {
    EXPECT_EQ(press_of(5s, {{1000ms, true}, {1000ms, true}}, {{1000ms, true}, {1000ms, true}}), "p0 p1 r0");
}

TEST(ButtonEventsTest, AnyHoldTimeSetsARecord) {
    EXPECT_EQ(press_of(1s, {}, {{0ms, true}, {1us, false}}), "");
}

TEST(ButtonEventsTest, ANewPressForgetsTheOldOne) {
    ButtonEvents events(kDebounce);
    events.press(0s, kPress);
    events.press(1s, kPress);
    EXPECT_EQ(text(events.advance(20s)), "p1 p3");
}

TEST(ButtonEventsTest, APressIsReleasedOnce) {
    ButtonEvents events(kDebounce);
    events.press(0s, kPress);
    EXPECT_EQ(text(events.release(1500ms, kRelease)), "r1");
    EXPECT_EQ(text(events.release(3s, kRelease)), "");
}

TEST(ButtonEventsTest, ThereAreFiveRecordsAndTwoLines) {
    EXPECT_EQ(ButtonEvents::kRecords, std::size_t{5});
    EXPECT_EQ(long{sim::PushButton::kR47Line}, 82);
    EXPECT_EQ(long{sim::PushButton::kOtherLine}, 44);
}

}  // namespace
