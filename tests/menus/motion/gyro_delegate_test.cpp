// Transcripts of the two delegate menus, and the orientation that they show live.
#include <algorithm>
#include <cstdio>

#include "tests/menus/motion/motion_run.h"
#include "tests/support/screens/motion.h"

namespace {

using namespace motion;
using namespace screens;
using support::Calls;
using support::ConsoleSession;
using support::run_console;
using support::SessionOptions;

Step const kAnnouncedRelease{'t', "", "Running", kRelease.calls};
Step const kFailedHold{'t', "", "", {"gyro_t::irq_callback_hold(true) = -1"}};

TEST(DelegateMenuTest, OnlyTheReleaseIsAnnounced) {
    expect_run(kDelegate, {kHold, kAnnouncedRelease, kHold});
}

TEST(DelegateMenuTest, FirmwareIsAlwaysTheSame) {
    auto const run = run_console("Ohxx", stepped());
    EXPECT_EQ(run.calls, calls_of_visit(kDelegate, {}));
}

TEST(DelegateMenuTest, FailuresOfTheLibraryAreNotReported) {
    Menu failing = kDelegate;
    failing.opening = with_failures(kDelegate.opening);
    expect_run(failing, {kFailedHold, {'t', "", "Running", {"gyro_t::irq_callback_hold(false) = -1"}}},
               with_scenario({"fault add gyro_t::boot status -1", "fault add gyro_t::activate* status -1",
                              "fault add gyro_t::irq_* status -1"}));
}

TEST(CombinedMenuTest, HoldAndReleaseAreSilent) {
    expect_run(kDelegateAndAlarm, {kHold, kRelease, kHold});
}

TEST(CombinedMenuTest, FirmwareFollowsTheMainMenusChoice) {
    auto const run = run_console("OHxx", stepped());
    Menu menu = kDelegateAndAlarm;
    menu.opening[1] = gyro_construction(kFirmwareAb);
    EXPECT_EQ(run.calls, calls_of_visit(menu, {}));
}

TEST(CombinedMenuTest, FailuresOfTheLibraryAreNotReported) {
    Menu failing = kDelegateAndAlarm;
    failing.start = "int test_gyro_delegate_and_alarm()\nDetected device R47";
    failing.opening = with_failures(kDelegateAndAlarm.opening);
    expect_run(failing, {kFailedHold, {'t', "", "", {"gyro_t::irq_callback_hold(false) = -1"}}}, with_failing_hub());
}

TEST(CombinedMenuTest, OtherVariantHasItsButtonOnLine44) {
    Menu menu = kDelegateAndAlarm;
    menu.start = "int test_gyro_delegate_and_alarm()\n" + firmware_report("AP", true);
    menu.opening[2] = button_construction(44);
    menu.opening[8] = "rtu_t::set_device_status(3) = -1";
    expect_run(menu, {}, of_another_variant());
}

class BothMenusTest : public testing::TestWithParam<Menu> {};

TEST_P(BothMenusTest, StartsAndLeaves) {
    expect_run(GetParam(), {});
}

TEST_P(BothMenusTest, AllOtherKeysShowTheMenuAgain) {
    expect_run(GetParam(), ignored("abcdefghijklmnopqrsuvwyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789;-"));
}

std::string name_of(testing::TestParamInfo<Menu> const& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Both, BothMenusTest, testing::Values(kDelegate, kDelegateAndAlarm), name_of);

// A delegate menu at its prompt; its samples come by `step`.
class LiveOrientationTest : public BothMenusTest {
protected:
    LiveOrientationTest() {
        session.type(GetParam().entry_keys());
        session.wait_for(kDelegateMenu);
    }

    bool alone() const { return GetParam().key == kDelegate.key; }

    void step(std::string const& length) { session.control("step " + length); }

    std::string const line = "  Alpha: 0  Beta : 0  Gamma: 0\n";
    // Of the next rates that the hub has above 5 and 1 Hz.
    std::string const period = alone() ? "160ms" : "640ms";
    ConsoleSession session{stepped()};
};

TEST_P(LiveOrientationTest, EachSampleIsOneLineUntilTheHold) {
    step("1ms");
    for (int i = 0; i < 3; ++i) {
        step(period);
    }
    // The next screen tells that the hold is in force.
    session.type("t");
    session.wait_for(delegate_menu('t').substr(kDelegateMenu.size()) + kDelegateMenu);
    step("10s");
    session.type("t");
    session.wait_for(kDelegateMenu);
    step(period);
    session.type("xx");
    EXPECT_EQ(session.wait_for_exit(), 0);
    std::string const echo_t = delegate_menu('t').substr(kDelegateMenu.size());
    std::string const echo_x = delegate_menu('x').substr(kDelegateMenu.size());
    std::string const lines = kDelegateMenu + line + line + line + echo_t + kDelegateMenu + echo_t +
                              (alone() ? "Running" : "") + kDelegateMenu + line + echo_x;
    EXPECT_EQ(session.output(), output_before(GetParam()) + lines + main_menu('x'));
}

TEST_P(LiveOrientationTest, AnglesFollowTheDevice) {
    session.control("tilt 0 0 180");
    step("1001ms");
    session.wait_for("  Alpha: 0  Beta : 0  Gamma: 180\n");
    session.control("tilt 10 20 30");
    step("1001ms");
    session.wait_for("  Alpha: 1");
    session.type("xx");
    session.wait_for_exit();
    std::size_t const at = session.output().rfind("  Alpha: ");
    float yaw = 0;
    float pitch = 0;
    float roll = 0;
    ASSERT_EQ(std::sscanf(session.output().c_str() + at, "  Alpha: %f  Beta : %f  Gamma: %f\n", &yaw, &pitch, &roll),
              3);
    EXPECT_NEAR(yaw, 10, 0.02);
    EXPECT_NEAR(pitch, 20, 0.02);
    EXPECT_NEAR(roll, 30, 0.02);
}

INSTANTIATE_TEST_SUITE_P(Both, LiveOrientationTest, testing::Values(kDelegate, kDelegateAndAlarm), name_of);

TEST(CombinedScenarioTest, AlarmAndDelegateSeeTheSameSamples) {
    ConsoleSession session(stepped());
    session.type("H");
    session.wait_for(kDelegateMenu);
    session.control("tilt 0 20 0");
    session.control("step 1001ms");
    EXPECT_EQ(device_state(session), 5);
    session.control("step 500ms");
    session.control("press 5s");
    session.control("step 6s");
    EXPECT_EQ(device_state(session), 3);
    session.type("xx");
    EXPECT_EQ(session.wait_for_exit(), 0);
    Calls const sample{"callback gyro_delegate_t(37)"};
    Calls const samples_until_the_release(10, sample.front());
    Calls const expected = Calls{"callback gyro_alarm_t::on_position_left()", "rtu_t::set_device_status(5) = 0"} +
                           samples_until_the_release +
                           Calls{"callback button_t::release_records(1)", "gyro_alarm_t::teach_current_position() = 0",
                                 "callback gyro_alarm_t::on_position_reached()", "rtu_t::set_device_status(3) = 0"} +
                           sample;
    EXPECT_EQ(calls_from(kDelegateAndAlarm.opening.size(), session.calls()), expected + kDelegateAndAlarm.closing);
}

// What the printer takes and what not, through r47-entry-points.
TEST(OrientationPrinterTest, OnlyQuaternionsOfTheOrientationSensorsArePrinted) {
    SessionOptions options = stepped();
    options.entry_point = "orientation_printer";
    auto const run = run_console("", options);
    EXPECT_EQ(run.output,
              "37:   Alpha: 0  Beta : 0  Gamma: 180\n"
              "38:   Alpha: 0  Beta : 0  Gamma: 180\n"
              "36: \n39: \nno kind: \nkind 2: \nno data: \n");
}

// 400 samples a second for a minute, through r47-entry-points: no menu asks for as many.
TEST(SamplesOfAMinuteTest, NoneIsLostDoubledOrLate) {
    SessionOptions options = stepped();
    options.entry_point = "samples_of_a_minute";
    ConsoleSession session(options);
    session.wait_for("ready\n");
    session.control("step 30s");
    session.control("tilt 0 20 0");
    session.control("step 30s");
    session.control("step 1ms");
    session.type("h");
    session.wait_for("held: samples 24000 transitions 1\n");
    session.control("tilt 0 0 0");
    session.control("step 60s");
    session.type("e");
    session.wait_for("end: samples 24000 transitions 1\n");
    EXPECT_EQ(session.wait_for_exit(), 0);
    EXPECT_EQ(session.errors(), "");
    auto const calls = session.calls();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "callback gyro_delegate_t(37)"), 24000);
}

}  // namespace
