// Transcripts of the tilt alarm menu, and what a tilt and a long press do in it.
#include <algorithm>

#include "tests/menus/motion/motion_run.h"
#include "tests/support/screens/motion.h"

namespace {

using namespace motion;
using namespace screens;
using support::Calls;
using support::ConsoleSession;
using support::run_console;
using support::SessionOptions;

struct KeyCase {
    char const* name;
    std::vector<Step> steps;
};

class AlarmMenuKeyTest : public testing::TestWithParam<KeyCase> {};

TEST_P(AlarmMenuKeyTest, PrintsAndCallsWhatBelongsToIt) {
    expect_run(kAlarm, GetParam().steps);
}

// One of the keys that ask for an angle, of which the library takes `taken`.
Step angle(char key, std::string const& typed, std::string const& taken, std::string const& status = "0") {
    return {key, typed, "Please enter angle", {"gyro_alarm_t::set_angle_limit(" + taken + ") = " + status}};
}

KeyCase const kKeys[] = {
    {"None", {}},
    {"Alpha", {angle('a', "12.5\n", "12.5")}},
    {"Beta", {angle('b', "3\n", "3")}},
    {"Gamma", {angle('g', "90\n", "90")}},
    {"MistypedAngle", {angle('a', "none\n", "0")}},
    {"AngleOutOfRange", {angle('a', "-1\n", "-1", "-1")}},
    {"HexadecimalAngle", {angle('a', "0x10\n", "16")}},
    {"HexAngleWithExponent", {angle('a', "0x1.8p3", "12"), angle('b', "1\n", "1")}},
    {"AngleThatOnlyBegins", {angle('a', "0x\n", "0"), angle('b', "1e xx\n", "0")}},
    {"InfiniteAngle", {angle('a', "-InFinity", "-inf", "-1"), angle('b', "1e99\n", "inf", "-1")}},
    {"AngleThatIsNoNumber", {angle('a', "nan\n", "nan", "-1")}},
    {"HoldAndRelease", {kHold, kRelease}},
    {"DeadKeys", ignored("AT0r?")},
};

INSTANTIATE_TEST_SUITE_P(, AlarmMenuKeyTest, testing::ValuesIn(kKeys), [](auto const& key) { return key.param.name; });

TEST(AlarmMenuTest, AllOtherKeysShowTheMenuAgain) {
    expect_run(kAlarm, ignored("cdefhijklmnopqrsuvwyzBCDEFGHIJKLMNOPQRSUVWXYZ123456789;-"));
}

TEST(AlarmMenuTest, FailuresOfTheLibraryAreNotReported) {
    Menu failing = kAlarm;
    failing.start = "int test_gyro_alarm()\nDetected device R47";
    failing.opening = with_failures(kAlarm.opening);
    expect_run(failing,
               {angle('a', "5\n", "5", "-1"),
                angle('b', "6\n", "6", "-1"),
                angle('g', "7\n", "7", "-1"),
                {'t', "", "", {"gyro_t::irq_callback_hold(true) = -1"}},
                {'t', "", "", {"gyro_t::irq_callback_hold(false) = -1"}}},
               with_failing_hub());
}

TEST(AlarmMenuTest, WordStartsItAlone) {
    SessionOptions options = stepped();
    options.arguments = {"alarm"};
    support::expect_transcript(options, "x", kStart + "5\nTeste Gyro Alarm\n" + kAlarm.start + alarm_menu('x'),
                               calls_of_visit(kAlarm, {}));
}

TEST(AlarmMenuTest, FirmwareFollowsTheMainMenusChoice) {
    auto const run = run_console("OGxx", stepped());
    Menu menu = kAlarm;
    menu.opening[1] = gyro_construction(kFirmwareAb);
    EXPECT_EQ(run.calls, calls_of_visit(menu, {}));
}

TEST(AlarmMenuTest, OtherVariantHasItsButtonOnLine44) {
    Menu menu = kAlarm;
    menu.start = "int test_gyro_alarm()\n" + firmware_report("AP", true);
    menu.opening[2] = button_construction(44);
    menu.opening[7] = "rtu_t::set_device_status(3) = -1";
    expect_run(menu, {}, of_another_variant());
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
    Calls later_calls() { return calls_from(kAlarm.opening.size(), session.calls()); }

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
        support::look_until(
            [&] {
                session.control("tilt 0 " + std::to_string(device_state(session)) + " 0");
                return times_taught(session) >= presses;
            },
            "the press to teach");
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

void wait_until_a_rule_has_fired(ConsoleSession& session) {
    support::look_until([&] { return session.control("fault list").find("fired 1") != std::string::npos; }, "the rule");
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
        wait_until_a_rule_has_fired(session);  // the teaching is on its way
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
