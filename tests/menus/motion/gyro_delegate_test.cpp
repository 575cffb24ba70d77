// Transcripts of the two delegate menus, and the orientation that they show live.
#include <gtest/gtest.h>

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

Calls delegate_start() {
    return {gyro_construction(), "gyro_t::boot() = 0", "gyro_t::activate_vsensor(37, 5, 1) = 0",
            "gyro_delegate_t::gyro_delegate_t(#2, 37, function)"};
}

Calls const kDelegateEnd = {"gyro_delegate_t::~gyro_delegate_t()", "gyro_t::~gyro_t()"};

Calls combined_start(std::string const& firmware = kFirmwareAp) {
    return {kRtuConstruction,
            gyro_construction(firmware),
            button_construction(82),
            "gyro_t::boot() = 0",
            "gyro_t::info_firmware() = 0",
            "gyro_t::activate_vsensor(37, 1, 1) = 0",
            "gyro_alarm_t::gyro_alarm_t(#3, 37)",
            "gyro_delegate_t::gyro_delegate_t(#3, 37, function)",
            "rtu_t::set_device_status(3) = 0",
            "gyro_t::irq_callback_hold(false) = 0",
            "button_t::irq_callback_hold(false) = 0"};
}

Calls const kCombinedEnd = {"gyro_delegate_t::~gyro_delegate_t()", "gyro_alarm_t::~gyro_alarm_t()",
                            "button_t::~button_t()", "gyro_t::~gyro_t()", "rtu_t::~rtu_t()"};

std::string const kCombinedStart =
    "int test_gyro_delegate_and_alarm()\nDetected device R47" + firmware_report("AP", true);

Calls const kHold = {"gyro_t::irq_callback_hold(true) = 0"};
Calls const kRelease = {"gyro_t::irq_callback_hold(false) = 0"};

TEST(DelegateMenuTest, StartsAndLeavesWithoutAnOutputOfItsOwn) {
    auto const run = run_console("hxx", stepped());
    EXPECT_EQ(run.output, visit('h', delegate_menu('x')));
    EXPECT_EQ(run.calls, delegate_start() + kDelegateEnd);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 0);
}

TEST(DelegateMenuTest, OnlyTheReleaseIsAnnounced) {
    auto const run = run_console("htttxx", stepped());
    EXPECT_EQ(run.output, visit('h', delegate_menu('t') + delegate_menu('t') + "Running" + delegate_menu('t') +
                                         delegate_menu('x')));
    EXPECT_EQ(run.calls, delegate_start() + kHold + kRelease + kHold + kDelegateEnd);
}

TEST(DelegateMenuTest, FirmwareIsAlwaysTheSame) {
    auto const run = run_console("Ohxx", stepped());
    EXPECT_EQ(run.calls, delegate_start() + kDelegateEnd);
}

TEST(DelegateMenuTest, FailuresOfTheLibraryAreNotReported) {
    auto const run =
        run_console("httxx", stepped({"fault add gyro_t::boot status -1", "fault add gyro_t::activate* status -1",
                                      "fault add gyro_t::irq_* status -1"}));
    EXPECT_EQ(run.output, visit('h', delegate_menu('t') + delegate_menu('t') + "Running" + delegate_menu('x')));
    EXPECT_EQ(run.calls, (Calls{gyro_construction(), "gyro_t::boot() = -1", "gyro_t::activate_vsensor(37, 5, 1) = -1",
                                "gyro_delegate_t::gyro_delegate_t(#2, 37, function)",
                                "gyro_t::irq_callback_hold(true) = -1", "gyro_t::irq_callback_hold(false) = -1"} +
                          kDelegateEnd));
    EXPECT_EQ(run.errors, "");
}

TEST(CombinedMenuTest, StartsWithItsTraceAndTheFirmware) {
    auto const run = run_console("Hxx", stepped());
    EXPECT_EQ(run.output, visit('H', kCombinedStart + delegate_menu('x')));
    EXPECT_EQ(run.calls, combined_start() + kCombinedEnd);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 0);
}

TEST(CombinedMenuTest, HoldAndReleaseAreSilent) {
    auto const run = run_console("Htttxx", stepped());
    EXPECT_EQ(run.output, visit('H', kCombinedStart + delegate_menu('t') + delegate_menu('t') + delegate_menu('t') +
                                         delegate_menu('x')));
    EXPECT_EQ(run.calls, combined_start() + kHold + kRelease + kHold + kCombinedEnd);
}

TEST(CombinedMenuTest, FirmwareFollowsTheMainMenusChoice) {
    auto const run = run_console("OHxx", stepped());
    EXPECT_EQ(run.calls, combined_start(kFirmwareAb) + kCombinedEnd);
}

TEST(CombinedMenuTest, FailuresOfTheLibraryAreNotReported) {
    auto const run = run_console("Httxx", stepped({"fault add *::boot status -1", "fault add *::info* status -1",
                                                   "fault add *::activate* status -1", "fault add *::set_* status -1",
                                                   "fault add *::irq_* status -1"}));
    EXPECT_EQ(run.output, visit('H', "int test_gyro_delegate_and_alarm()\nDetected device R47" + delegate_menu('t') +
                                         delegate_menu('t') + delegate_menu('x')));
    Calls expected = combined_start();
    for (std::string& call : expected) {
        if (call.size() > 4 && call.compare(call.size() - 4, 4, " = 0") == 0) {
            call.replace(call.size() - 1, 1, "-1");
        }
    }
    Calls const of_keys{"gyro_t::irq_callback_hold(true) = -1", "gyro_t::irq_callback_hold(false) = -1"};
    EXPECT_EQ(run.calls, expected + of_keys + kCombinedEnd);
    EXPECT_EQ(run.errors, "");
}

TEST(CombinedMenuTest, OtherVariantHasItsButtonOnLine44) {
    SessionOptions options = stepped();
    options.without = {"/dev/r47-rtu-driver", "/dev/r47-autofocus-driver", "/dev/r47-illumination-driver"};
    auto const run = run_console("Hxx", options);
    EXPECT_EQ(run.output,
              visit('H', "int test_gyro_delegate_and_alarm()\n" + firmware_report("AP", true) + delegate_menu('x')));
    EXPECT_EQ(run.calls[2], button_construction(44));
}

class BothMenusTest : public testing::TestWithParam<char> {
protected:
    std::string const key{GetParam()};
};

TEST_P(BothMenusTest, AllOtherKeysShowTheMenuAgain) {
    std::string const keys = "abcdefghijklmnopqrsuvwyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789;-";
    std::string shown;
    for (char const typed : keys) {
        shown += delegate_menu(typed);
    }
    auto const run = run_console(key + keys + "xx", stepped());
    EXPECT_EQ(run.output, visit(GetParam(), (key == "H" ? kCombinedStart : "") + shown + delegate_menu('x')));
    EXPECT_EQ(run.calls, key == "H" ? combined_start() + kCombinedEnd : delegate_start() + kDelegateEnd);
}

TEST_P(BothMenusTest, EndOfInputLeavesTheMenu) {
    ConsoleSession session(stepped());
    session.type(key);
    session.end_input();
    session.wait_for(delegate_menu('x') + main_menu());
    std::string const last = key == "H" ? " 2 rtu_t::~rtu_t()" : " 2 gyro_t::~gyro_t()";
    EXPECT_NE(session.journal().back().find(last), std::string::npos) << session.journal().back();
}

INSTANTIATE_TEST_SUITE_P(Both, BothMenusTest, testing::Values('h', 'H'));

// A delegate menu at its prompt; its samples come by `step`.
class LiveOrientationTest : public BothMenusTest {
protected:
    LiveOrientationTest() {
        session.type(key);
        session.wait_for(kDelegateMenu);
    }

    void step(std::string const& length) { session.control("step " + length); }

    std::string const line = "  Alpha: 0  Beta : 0  Gamma: 0\n";
    std::string const period = GetParam() == 'h' ? "200ms" : "1s";
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
                              (key == "h" ? "Running" : "") + kDelegateMenu + line + echo_x;
    EXPECT_EQ(session.output(), visit(GetParam(), (key == "H" ? kCombinedStart : "") + lines));
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

INSTANTIATE_TEST_SUITE_P(Both, LiveOrientationTest, testing::Values('h', 'H'));

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
    Calls const expected = Calls{"callback gyro_alarm_t::on_position_left()", "rtu_t::set_device_status(5) = 0"} +
                           sample + sample + sample + sample + sample + sample +
                           Calls{"callback button_t::release_records(1)", "gyro_alarm_t::teach_current_position() = 0",
                                 "callback gyro_alarm_t::on_position_reached()", "rtu_t::set_device_status(3) = 0"} +
                           sample;
    EXPECT_EQ(calls_from(combined_start().size(), session.calls()), expected + kCombinedEnd);
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
