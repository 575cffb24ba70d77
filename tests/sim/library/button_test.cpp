// Tests of the actions of a button_t.
#include "hal/button.h"

#include <gtest/gtest.h>

#include <future>
#include <optional>

#include "tests/sim/served_device.h"

namespace {

using namespace std::chrono_literals;

char const* const kChip = "/dev/gpiochip1";

// Actions are looked at when a step is done, so none of them runs then.
class ButtonObjectTest : public ServedDeviceTest {
protected:
    ButtonObjectTest() {
        for (std::size_t i = 0; i < 3; ++i) {
            button_.press_records[i] = {static_cast<unsigned int>(1000 * (i + 1)), [this, i] { fired("p", i); }};
            button_.release_records[i] = {static_cast<unsigned int>(500 + 1000 * i), [this, i] { fired("r", i); }};
        }
    }

    void fired(char const* kind, std::size_t index) {
        log_ += (log_.empty() ? "" : " ") + std::string(kind) + std::to_string(index);
    }

    std::string log_;
    hal::button_t button_{kChip, 82, true, 2000};
};

TEST_F(ButtonObjectTest, RecordsFireAtTheirTimes) {
    button_.irq_callback_hold(false);
    control("button down");
    step(999ms);
    EXPECT_EQ(log_, "");
    step(1ms);
    EXPECT_EQ(log_, "p0");
    step(1500ms);
    EXPECT_EQ(log_, "p0 p1");
    control("button up");
    step(0s);
    EXPECT_EQ(log_, "p0 p1 r2");
    step(10s);
    EXPECT_EQ(log_, "p0 p1 r2");
}

TEST_F(ButtonObjectTest, TheJournalHasEachActionAtItsTime) {
    button_.irq_callback_hold(false);
    control("press 1s");
    step(999ms);
    std::size_t const before = journal().size();
    step(10s);
    auto const lines = journal();
    EXPECT_EQ(
        std::vector<std::string>(lines.begin() + static_cast<std::ptrdiff_t>(before), lines.end()),
        (std::vector<std::string>{"callback button_t::press_records(0)", "callback button_t::release_records(0)"}));
    EXPECT_EQ(last_record().start, 1s);
    EXPECT_EQ(last_record().thread, 0U);
}

TEST_F(ButtonObjectTest, APressOfATimeIsReleasedByItself) {
    button_.irq_callback_hold(false);
    control("press 2s");
    step(2s);
    EXPECT_EQ(log_, "p0 p1 r1");
    EXPECT_FALSE(device_.access()->presses.button().pressed());
}

TEST_F(ButtonObjectTest, AReleaseByHandCancelsTheOneThatWasSet) {
    button_.irq_callback_hold(false);
    control("press 3s");
    step(600ms);
    control("button up");
    control("button down");
    step(10s);
    EXPECT_EQ(log_, "r0 p0 p1 p2");
    EXPECT_TRUE(device_.access()->presses.button().pressed());
}

TEST_F(ButtonObjectTest, EventsAreHeldUntilTheRelease) {
    control("press 2s");
    step(5s);
    EXPECT_EQ(log_, "");
    button_.irq_callback_hold(false);
    step(0s);
    EXPECT_EQ(log_, "p0 p1 r1");
}

TEST_F(ButtonObjectTest, EventsWhileHeldMeetTheRecordsOfTheRelease) {
    control("press 2s");
    step(5s);
    button_.press_records[0].action = nullptr;
    button_.irq_callback_hold(false);
    step(0s);
    EXPECT_EQ(log_, "p1 r1");
}

TEST_F(ButtonObjectTest, NoMoreThanSixteenEdgesWait) {
    for (int i = 0; i < 20; ++i) {
        control("press 600ms");
        step(1s);
    }
    button_.irq_callback_hold(false);
    step(0s);
    EXPECT_EQ(log_, "r0 r0 r0 r0 r0 r0 r0 r0");
}

TEST_F(ButtonObjectTest, AVeryLongHoldTimeIsNotReached) {
    button_.press_records[3] = {4294967295U, [this] { fired("p", 3); }};
    button_.irq_callback_hold(false);
    control("button down");
    step(24h);
    EXPECT_EQ(log_, "p0 p1 p2");
}

TEST_F(ButtonObjectTest, AnotherLineNeverSeesTheButton) {
    hal::button_t other(kChip, 44, true, 2000);
    other.press_records[0] = {0, [this] { fired("other", 0); }};
    other.irq_callback_hold(false);
    control("press 5s");
    step(10s);
    EXPECT_EQ(log_, "");
    control("button down");
    bool state = true;
    EXPECT_EQ(other.irq_read(state), 0);
    EXPECT_FALSE(state);
    EXPECT_EQ(button_.irq_read(state), 0);
    EXPECT_TRUE(state);
}

TEST_F(ButtonObjectTest, TheLineFollowsTheVariantOfTheDevice) {
    auto const device = device_.access();
    EXPECT_EQ(sim::button_line(device->nodes), 82);
    device->nodes.remove("/dev/r47-autofocus-driver");
    device->nodes.remove("/dev/r47-illumination-driver");
    EXPECT_EQ(sim::button_line(device->nodes), 82);
    device->nodes.remove("/dev/r47-rtu-driver");
    EXPECT_EQ(sim::button_line(device->nodes), 44);
}

TEST_F(ButtonObjectTest, WithoutItsNodeThereIsNoButton) {
    button_.irq_callback_hold(false);
    control("node remove " + std::string(kChip));
    control("press 2s");
    step(5s);
    bool state = true;
    EXPECT_EQ(button_.irq_read(state), -1);
    EXPECT_TRUE(state);
    EXPECT_EQ(log_, "");
}

TEST_F(ButtonObjectTest, APressShorterThanTheDebounceTimeIsNotSeen) {
    hal::button_t slow(kChip, 82, true, 700000);
    hal::button_t never(kChip, 82, true, ~0UL);
    for (hal::button_t* const button : {&slow, &never}) {
        button->release_records[0] = {0, [this] { fired("late", 0); }};
        button->irq_callback_hold(false);
    }
    control("press 600ms");
    step(1s);
    EXPECT_EQ(log_, "");
    control("press 800ms");
    step(1s);
    EXPECT_EQ(log_, "late0");
}

TEST_F(ButtonObjectTest, AnActionMayDestroyItsObjectAndNothingFollows) {
    std::optional<hal::button_t> own(std::in_place, kChip, 82, true, 2000UL);
    own->press_records[0] = {1000, [&] {
                                 fired("own", 0);
                                 own.reset();
                             }};
    own->press_records[1] = {2000, [&] { fired("own", 1); }};
    own->irq_callback_hold(false);
    control("press 5s");
    step(10s);
    EXPECT_EQ(log_, "own0");
}

TEST_F(ButtonObjectTest, AnActionMayHoldAndTheRestFollowsLater) {
    button_.press_records[0].action = [this] {
        fired("p", 0);
        button_.irq_callback_hold(true);
    };
    button_.irq_callback_hold(false);
    control("press 2s");
    step(10s);
    EXPECT_EQ(log_, "p0");
    button_.irq_callback_hold(false);
    step(0s);
    EXPECT_EQ(log_, "p0 p1 r1");
}

TEST_F(ButtonObjectTest, EveryObjectOfTheLineSeesThePress) {
    hal::button_t other(kChip, 82, true, 2000);
    other.press_records[0] = {1000, [this] { fired("other", 0); }};
    other.irq_callback_hold(false);
    button_.irq_callback_hold(false);
    control("press 1500ms");
    step(5s);
    EXPECT_EQ(log_, "p0 other0 r1");
}

// The action takes the device 6 s, in which the contact opens.
TEST_F(ButtonObjectTest, ASlowActionDoesNotMakeThePressLonger) {
    control("fault add button_t::irq_read delay 6000");
    button_.press_records[0].action = [this] {
        fired("p", 0);
        bool state = false;
        EXPECT_EQ(button_.irq_read(state), 0);
    };
    button_.irq_callback_hold(false);
    control("press 2100ms");
    step(10s);
    EXPECT_EQ(log_, "p0 p1 r1");
}

// Whoever has the device keeps the release waiting until 8 s have gone.
TEST_F(ButtonObjectTest, AnEdgeCountsAtItsOwnTimeHoweverLateTheDeviceIs) {
    std::promise<void> released;
    for (std::size_t i = 0; i < 3; ++i) {
        button_.press_records[i].action = nullptr;
        button_.release_records[i].action = [&, i] {
            fired("r", i);
            released.set_value();
        };
    }
    button_.irq_callback_hold(false);
    control("clock scaled 1000");
    control("press 2100ms");
    {
        auto const busy = device_.access();
        while (now() < 8s) {
        }
    }
    ASSERT_EQ(released.get_future().wait_for(60s), std::future_status::ready);
    button_.irq_callback_hold(true);
    EXPECT_EQ(log_, "r1");
}

TEST_F(ButtonObjectTest, BounceWithinTheDebounceTimeIsNoEvent) {
    button_.irq_callback_hold(false);
    control("press 2s bounce 1999us");
    step(3s);
    EXPECT_EQ(log_, "p0 p1 r1") << "from the last closing to the last opening";
    EXPECT_FALSE(device_.access()->presses.button().pressed());
}

TEST_F(ButtonObjectTest, BounceBeyondTheDebounceTimeMakesPressesOfItsOwn) {
    button_.press_records[0] = {0, [this] { fired("p", 0); }};
    button_.irq_callback_hold(false);
    control("press 1s bounce 2ms");
    step(3s);
    EXPECT_EQ(log_, "p0 p0 r0 p0");
}

TEST_F(ButtonObjectTest, TheContactMovesAsItBounces) {
    auto const pressed = [this] { return device_.access()->presses.button().pressed(); };
    std::string moves;
    control("press 10ms bounce 3ms");
    for (int i = 0; i < 18; ++i) {
        moves += pressed() ? '-' : '_';
        step(1ms);
    }
    EXPECT_EQ(moves, "---___----___---__");
}

TEST_F(ButtonObjectTest, AReleaseByHandEndsTheBounceToo) {
    control("press 1s bounce 100ms");
    step(150ms);
    control("button up");
    step(10s);
    EXPECT_FALSE(device_.access()->presses.button().pressed());
    control("button down");
    EXPECT_TRUE(device_.access()->presses.button().pressed());
}

TEST_F(ButtonObjectTest, ALostChipSilencesThePressRecords) {
    button_.irq_callback_hold(false);
    control("button down");
    step(1500ms);
    control("node remove " + std::string(kChip));
    step(1s);
    control("node restore " + std::string(kChip));
    step(2s);
    EXPECT_EQ(log_, "p0") << "the press went with the chip";
    control("button up");
    step(0s);
    EXPECT_EQ(log_, "p0");
    control("press 1s");
    step(2s);
    EXPECT_EQ(log_, "p0 p0 r0");
}

TEST_F(ButtonObjectTest, AReleaseThatALostChipHidesEndsThePress) {
    button_.irq_callback_hold(false);
    control("press 2s");
    step(1500ms);
    control("node remove " + std::string(kChip));
    step(499ms);
    control("button up");
    control("node restore " + std::string(kChip));
    step(10s);
    EXPECT_EQ(log_, "p0");
}

TEST_F(ButtonObjectTest, AChipThatWentAndCameBackAtOnceTookThePressAlong) {
    button_.irq_callback_hold(false);
    control("button down");
    step(1500ms);
    control("node remove " + std::string(kChip));
    control("node restore " + std::string(kChip));
    step(1s);
    control("button up");
    step(0s);
    EXPECT_EQ(log_, "p0");
    control("press 1s");
    step(2s);
    EXPECT_EQ(log_, "p0 p0 r0");
}

TEST_F(ButtonObjectTest, AChipThatGoesTakesWhatIsHeldAlong) {
    control("press 1s");
    step(2s);
    control("node remove " + std::string(kChip));
    control("node restore " + std::string(kChip));
    button_.irq_callback_hold(false);
    step(0s);
    EXPECT_EQ(log_, "");
}

TEST_F(ButtonObjectTest, AnotherNodeThatGoesLeavesThePress) {
    button_.irq_callback_hold(false);
    control("button down");
    step(1500ms);
    control("node remove /dev/i2c-2");
    control("node restore /dev/i2c-2");
    control("button up");
    step(0s);
    EXPECT_EQ(log_, "p0 r1");
}

TEST_F(ButtonObjectTest, APowerThatWentAndCameBackAtOnceTookThePressAlong) {
    button_.irq_callback_hold(false);
    control("button down");
    control("power off");
    control("power on");
    step(10s);
    control("button up");
    step(0s);
    EXPECT_EQ(log_, "");
}

TEST_F(ButtonObjectTest, WithoutPowerNoPressRecordFires) {
    button_.irq_callback_hold(false);
    control("button down");
    control("power off");
    step(10s);
    control("power on");
    step(10s);
    EXPECT_EQ(log_, "");
}

}  // namespace
