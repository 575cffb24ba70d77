// Transcripts of the tilt alarm menu, and what a tilt and a long press do in it.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

#include "tests/menus/motion/motion_run.h"
#include "tests/support/screens/motion.h"

namespace {

using namespace motion;
using namespace screens;
using support::Calls;
using support::ConsoleSession;
using support::run_console;
using support::SessionOptions;

std::string const kAlarmStart = "int test_gyro_alarm()\nDetected device R47" + firmware_report("AP", true);

Calls start_calls(std::string const& firmware = kFirmwareAp) {
    return {kRtuConstruction,
            gyro_construction(firmware),
            button_construction(82),
            "gyro_t::boot() = 0",
            "gyro_t::info_firmware() = 0",
            "gyro_t::activate_vsensor(37, 10, 1) = 0",
            "gyro_alarm_t::gyro_alarm_t(#3, 37)",
            "rtu_t::set_device_status(3) = 0",
            "gyro_t::irq_callback_hold(false) = 0",
            "button_t::irq_callback_hold(false) = 0"};
}

Calls const kEndCalls = {"gyro_alarm_t::~gyro_alarm_t()", "button_t::~button_t()", "gyro_t::~gyro_t()",
                         "rtu_t::~rtu_t()"};

Calls menu_calls(Calls const& of_keys) {
    return start_calls() + of_keys + kEndCalls;
}

std::string transcript(std::string const& of_keys) {
    return visit('G', kAlarmStart + of_keys + alarm_menu('x'));
}

struct KeyCase {
    char const* name;
    std::string typed;
    std::string output;
    Calls calls;
};

class AlarmMenuKeyTest : public testing::TestWithParam<KeyCase> {};

TEST_P(AlarmMenuKeyTest, PrintsAndCallsWhatBelongsToIt) {
    KeyCase const& key = GetParam();
    auto const run = run_console("G" + key.typed + "xx", stepped());
    EXPECT_EQ(run.output, transcript(key.output));
    EXPECT_EQ(run.calls, menu_calls(key.calls));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 0);
}

KeyCase const kKeys[] = {
    {"None", "", "", {}},
    {"Alpha", "a12.5\n", alarm_menu('a') + "Please enter angle", {"gyro_alarm_t::set_angle_limit(12.5) = 0"}},
    {"Beta", "b3\n", alarm_menu('b') + "Please enter angle", {"gyro_alarm_t::set_angle_limit(3) = 0"}},
    {"Gamma", "g90\n", alarm_menu('g') + "Please enter angle", {"gyro_alarm_t::set_angle_limit(90) = 0"}},
    {"MistypedAngle", "anone\n", alarm_menu('a') + "Please enter angle", {"gyro_alarm_t::set_angle_limit(0) = 0"}},
    {"AngleOutOfRange", "a-1\n", alarm_menu('a') + "Please enter angle", {"gyro_alarm_t::set_angle_limit(-1) = -1"}},
    {"HexadecimalAngle", "a0x10\n", alarm_menu('a') + "Please enter angle", {"gyro_alarm_t::set_angle_limit(16) = 0"}},
    {"HexAngleWithExponent",
     "a0x1.8p3b1\n",
     alarm_menu('a') + "Please enter angle" + alarm_menu('b') + "Please enter angle",
     {"gyro_alarm_t::set_angle_limit(12) = 0", "gyro_alarm_t::set_angle_limit(1) = 0"}},
    {"AngleThatOnlyBegins",
     "a0x\nb1e xx\n",
     alarm_menu('a') + "Please enter angle" + alarm_menu('b') + "Please enter angle",
     {"gyro_alarm_t::set_angle_limit(0) = 0", "gyro_alarm_t::set_angle_limit(0) = 0"}},
    {"InfiniteAngle",
     "a-InFinityb1e99\n",
     alarm_menu('a') + "Please enter angle" + alarm_menu('b') + "Please enter angle",
     {"gyro_alarm_t::set_angle_limit(-inf) = -1", "gyro_alarm_t::set_angle_limit(inf) = -1"}},
    {"AngleThatIsNoNumber",
     "anan\n",
     alarm_menu('a') + "Please enter angle",
     {"gyro_alarm_t::set_angle_limit(nan) = -1"}},
    {"HoldAndRelease",
     "tt",
     alarm_menu('t') + alarm_menu('t'),
     {"gyro_t::irq_callback_hold(true) = 0", "gyro_t::irq_callback_hold(false) = 0"}},
    {"DeadKeys", "AT0r?", alarm_menu('A') + alarm_menu('T') + alarm_menu('0') + alarm_menu('r') + alarm_menu('?'), {}},
};

INSTANTIATE_TEST_SUITE_P(, AlarmMenuKeyTest, testing::ValuesIn(kKeys), [](auto const& key) { return key.param.name; });

TEST(AlarmMenuTest, AllOtherKeysShowTheMenuAgain) {
    std::string const keys = "cdefhijklmnopqrsuvwyzBCDEFGHIJKLMNOPQRSUVWXYZ123456789;-";
    std::string shown;
    for (char const key : keys) {
        shown += alarm_menu(key);
    }
    auto const run = run_console("G" + keys + "xx", stepped());
    EXPECT_EQ(run.output, transcript(shown));
    EXPECT_EQ(run.calls, menu_calls({}));
}

TEST(AlarmMenuTest, FailuresOfTheLibraryAreNotReported) {
    auto const run = run_console(
        "Ga5\nb6\ng7\nttxx",
        stepped({"fault add *::boot status -1", "fault add *::info* status -1", "fault add *::activate* status -1",
                 "fault add *::set_* status -1", "fault add *::irq_* status -1"}));
    EXPECT_EQ(run.output,
              visit('G', "int test_gyro_alarm()\nDetected device R47" + alarm_menu('a') + "Please enter angle" +
                             alarm_menu('b') + "Please enter angle" + alarm_menu('g') + "Please enter angle" +
                             alarm_menu('t') + alarm_menu('t') + alarm_menu('x')));
    Calls const expected{kRtuConstruction,
                         gyro_construction(),
                         button_construction(82),
                         "gyro_t::boot() = -1",
                         "gyro_t::info_firmware() = -1",
                         "gyro_t::activate_vsensor(37, 10, 1) = -1",
                         "gyro_alarm_t::gyro_alarm_t(#3, 37)",
                         "rtu_t::set_device_status(3) = -1",
                         "gyro_t::irq_callback_hold(false) = -1",
                         "button_t::irq_callback_hold(false) = -1",
                         "gyro_alarm_t::set_angle_limit(5) = -1",
                         "gyro_alarm_t::set_angle_limit(6) = -1",
                         "gyro_alarm_t::set_angle_limit(7) = -1",
                         "gyro_t::irq_callback_hold(true) = -1",
                         "gyro_t::irq_callback_hold(false) = -1"};
    EXPECT_EQ(run.calls, expected + kEndCalls);
    EXPECT_EQ(run.errors, "");
}

TEST(AlarmMenuTest, WordStartsItAlone) {
    SessionOptions options = stepped();
    options.arguments = {"alarm"};
    auto const run = run_console("x", options);
    EXPECT_EQ(run.output, kStart + "5\nTeste Gyro Alarm\n" + kAlarmStart + alarm_menu('x'));
    EXPECT_EQ(run.calls, menu_calls({}));
    EXPECT_EQ(run.status, 0);
}

TEST(AlarmMenuTest, FirmwareFollowsTheMainMenusChoice) {
    auto const run = run_console("OGxx", stepped());
    EXPECT_EQ(run.calls, start_calls(kFirmwareAb) + kEndCalls);
}

TEST(AlarmMenuTest, OtherVariantHasItsButtonOnLine44) {
    SessionOptions options = stepped();
    options.without = {"/dev/r47-rtu-driver", "/dev/r47-autofocus-driver", "/dev/r47-illumination-driver"};
    auto const run = run_console("Gxx", options);
    EXPECT_EQ(run.output, visit('G', "int test_gyro_alarm()\n" + firmware_report("AP", true) + alarm_menu('x')));
    EXPECT_EQ(run.calls[2], button_construction(44));
    EXPECT_EQ(run.calls[7], "rtu_t::set_device_status(3) = -1");
}

TEST(AlarmMenuTest, EndOfInputLeavesTheMenu) {
    for (std::string const typed : {"G", "Ga"}) {
        ConsoleSession session(stepped());
        session.type(typed);
        session.end_input();
        session.wait_for(alarm_menu('x') + main_menu());
        EXPECT_NE(session.journal().back().find(" 2 rtu_t::~rtu_t()"), std::string::npos) << typed;
    }
}

// The alarm menu at its prompt.
class AlarmScenarioTest : public testing::Test {
protected:
    explicit AlarmScenarioTest(SessionOptions const& options = stepped()) : session(options) {
        session.type("G");
        session.wait_for(kAlarmMenu);
    }

    void step(std::string const& length) { session.control("step " + length); }

    // What was called since the menu was first shown.
    Calls later_calls() { return calls_from(start_calls().size(), session.calls()); }

    void expect_leaves() {
        session.type("xx");
        EXPECT_EQ(session.wait_for_exit(), 0);
    }

    ConsoleSession session;
};

Calls const kWarning = {"callback gyro_alarm_t::on_position_left()", "rtu_t::set_device_status(5) = 0"};
Calls const kRunning = {"callback gyro_alarm_t::on_position_reached()", "rtu_t::set_device_status(3) = 0"};

TEST_F(AlarmScenarioTest, DeviceShowsRunningBeforeTheMenuIsShown) {
    EXPECT_EQ(device_state(session), 3);
    expect_leaves();
}

TEST_F(AlarmScenarioTest, TiltOf20DegreesWarnsWithinOneSampleAndEndsOnReturn) {
    session.control("tilt 0 20 0");
    step("101ms");
    EXPECT_EQ(device_state(session), 5);
    EXPECT_EQ(later_calls(), kWarning);
    step("5s");
    session.control("tilt 0 0 0");
    step("101ms");
    EXPECT_EQ(device_state(session), 3);
    EXPECT_EQ(later_calls(), kWarning + kRunning);
    expect_leaves();
}

TEST_F(AlarmScenarioTest, SlowTurnWarnsOnceBeyondTheLimit) {
    session.control("tilt 0 0 20 over 4s");
    step("900ms");
    EXPECT_EQ(device_state(session), 3);
    step("300ms");
    EXPECT_EQ(device_state(session), 5);
    step("10s");
    EXPECT_EQ(later_calls(), kWarning);
    expect_leaves();
}

TEST_F(AlarmScenarioTest, TypedLimitDecides) {
    session.type("a30\n");
    session.wait_for(kAlarmMenu);
    session.control("tilt 25 0 0");
    step("1s");
    EXPECT_EQ(device_state(session), 3);
    session.control("tilt 31 0 0");
    step("1s");
    EXPECT_EQ(device_state(session), 5);
    expect_leaves();
}

TEST_F(AlarmScenarioTest, PressOf5SecondsTeachesTheNewPosition) {
    session.control("tilt 0 20 0");
    session.control("press 5s");
    step("5s");
    step("100ms");
    EXPECT_EQ(device_state(session), 3);
    Calls const teach{"callback button_t::release_records(1)", "gyro_alarm_t::teach_current_position() = 0"};
    EXPECT_EQ(later_calls(), kWarning + teach + kRunning);
    session.control("tilt 0 0 0");
    step("1s");
    EXPECT_EQ(device_state(session), 5);
    expect_leaves();
}

// The device's own calls, from its threads, fail without a word in both menus that have the alarm.
TEST(AlarmCallbackTest, FailuresOfTheLibraryAreNotReported) {
    for (std::string const key : {"G", "H"}) {
        ConsoleSession session(stepped());
        session.type(key);
        session.wait_for("x: Return to main");
        session.control("fault add rtu_t::set_device_status status -1");
        session.control("fault add gyro_alarm_t::teach_current_position status -1");
        session.control("tilt 0 20 0");
        session.control("step 1100ms");
        session.control("press 5s");
        session.control("step 5s");
        session.control("tilt 0 0 0");
        session.control("step 1100ms");
        session.type("xx");
        EXPECT_EQ(session.wait_for_exit(), 0);
        EXPECT_EQ(session.errors(), "");
        auto const calls = session.calls();
        for (char const* const failed : {"rtu_t::set_device_status(5) = -1", "rtu_t::set_device_status(3) = -1",
                                         "gyro_alarm_t::teach_current_position() = -1"}) {
            EXPECT_EQ(std::count(calls.begin(), calls.end(), failed), 1) << key << " " << failed;
        }
    }
}

TEST_F(AlarmScenarioTest, ShorterPressTeachesNothing) {
    session.control("tilt 0 20 0");
    session.control("press 4999ms");
    step("10s");
    EXPECT_EQ(device_state(session), 5);
    EXPECT_EQ(later_calls(), kWarning);
    expect_leaves();
}

TEST_F(AlarmScenarioTest, HeldCallbacksLeaveTheStateAsItIs) {
    session.type("t");
    session.wait_for(kAlarmMenu);
    session.control("tilt 0 20 0");
    step("5s");
    EXPECT_EQ(device_state(session), 3);
    session.type("t");
    session.wait_for(kAlarmMenu);
    step("101ms");
    EXPECT_EQ(device_state(session), 5);
    expect_leaves();
}

TEST_F(AlarmScenarioTest, LostHubIsQuiet) {
    session.control("node remove /dev/i2c-2");
    session.control("tilt 0 20 0");
    step("5s");
    EXPECT_EQ(device_state(session), 3);
    session.control("node restore /dev/i2c-2");
    step("101ms");
    EXPECT_EQ(device_state(session), 5);
    expect_leaves();
}

TEST_F(AlarmScenarioTest, NothingHappensAfterTheMenu) {
    session.type("x");
    session.wait_for(main_menu());
    std::size_t const calls = session.calls().size();
    session.control("tilt 0 20 0");
    session.control("press 6s");
    step("60s");
    EXPECT_EQ(session.calls().size(), calls);
    EXPECT_EQ(device_state(session), 3);
    session.type("x");
    EXPECT_EQ(session.wait_for_exit(), 0);
}

long times_taught(ConsoleSession const& session) {
    auto const calls = session.calls();
    return std::count(calls.begin(), calls.end(), "gyro_alarm_t::teach_current_position() = 0");
}

TEST(AlarmWhileTypingTest, TiltsAndPressesDoNotDisturbThePerson) {
    SessionOptions options;
    options.clock = "scaled 20";
    options.terminal = true;
    ConsoleSession session(options);
    session.wait_for("Please enter your option: ");
    session.type("G\n");
    session.wait_for("Please enter your option: ");
    long presses = 0;
    for (std::string const typed : {"a", "\n", "1", "5", "\n"}) {
        session.type(typed);
        session.control("tilt 0 40 0");
        session.control("press 5s");
        ++presses;
        while (times_taught(session) < presses) {
            session.control("tilt 0 " + std::to_string(device_state(session)) + " 0");
        }
    }
    session.wait_for("Please enter angle");
    session.wait_for("Please enter your option: ");
    session.type("x\n");
    session.wait_for("Your Option = x");
    session.wait_for("Please enter your option: ");
    session.type("x\n");
    EXPECT_EQ(session.wait_for_exit(), 0);
    EXPECT_EQ(session.errors(), "");
    auto const calls = session.calls();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "gyro_alarm_t::set_angle_limit(15) = 0"), 1);
    EXPECT_EQ(times_taught(session), 5);
}

// The alarm's destruction takes so long that the press ends in it.
TEST(LeaveWhilePressedTest, AlarmThatGoesIsNotTaught) {
    for (std::string const key : {"G", "H"}) {
        ConsoleSession session(stepped({"fault add gyro_alarm_t::~gyro_alarm_t delay 6000"}));
        session.type(key);
        session.wait_for("x: Return to main");
        session.control("press 5s");
        session.type("xx");
        EXPECT_EQ(session.wait_for_exit(), 0);
        auto const calls = session.calls();
        EXPECT_EQ(std::count(calls.begin(), calls.end(), "callback button_t::release_records(1)"), 1) << key;
        EXPECT_EQ(std::count(calls.begin(), calls.end(), "gyro_alarm_t::teach_current_position() = 0"), 0) << key;
    }
}

void wait_for_call(ConsoleSession const& session, std::string const& call) {
    auto const limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    for (Calls calls; std::find(calls.begin(), calls.end(), call) == calls.end(); calls = session.calls()) {
        ASSERT_LT(std::chrono::steady_clock::now(), limit) << call;
    }
}

// The person leaves while the alarm is being taught: its destruction waits for that, and the button goes after it.
TEST(LeaveWhileTaughtTest, AlarmGoesAfterItsTeachingAndBeforeTheButton) {
    for (std::string const key : {"G", "H"}) {
        SessionOptions options = stepped({"fault add gyro_alarm_t::teach_current_position delay 60000"});
        options.clock = "real";
        ConsoleSession session(options);
        session.type(key);
        session.wait_for("x: Return to main");
        session.control("press 5s");
        session.control("clock scaled 100");
        wait_for_call(session, "callback button_t::release_records(1)");
        session.type("xx");
        EXPECT_EQ(session.wait_for_exit(), 0);
        auto const calls = session.calls();
        auto const at = [&](std::string const& call) {
            return std::find(calls.begin(), calls.end(), call) - calls.begin();
        };
        EXPECT_LT(at("gyro_alarm_t::teach_current_position() = 0"), at("gyro_alarm_t::~gyro_alarm_t()")) << key;
        EXPECT_LT(at("gyro_alarm_t::~gyro_alarm_t()"), at("button_t::~button_t()")) << key;
    }
}

}  // namespace
