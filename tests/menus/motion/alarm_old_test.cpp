// Transcripts of the legacy tilt alarm test, which r47-entry-points starts.
#include <algorithm>

#include "tests/menus/motion/motion_run.h"
#include "tests/support/screens/motion.h"

namespace {

using namespace motion;
using namespace screens;
using support::Calls;
using support::ConsoleSession;
using support::SessionOptions;

SessionOptions legacy(SessionOptions options = stepped()) {
    options.entry_point = kLegacyAlarm.entry_point;
    return options;
}

// The test at its prompt.
class LegacyAlarmTest : public testing::Test {
protected:
    explicit LegacyAlarmTest(SessionOptions const& options = legacy()) : session(options) {
        session.wait_for(kLegacyAlarmMenu);
    }

    void step(std::string const& length) { session.control("step " + length); }

    // One sample of the orientation sensor, which has no 1 Hz, but 1.5625.
    void sample() { step("640ms"); }

    void type(char key) {
        session.type({&key, 1});
        session.wait_for(legacy_alarm_menu(key).substr(kLegacyAlarmMenu.size()));
        session.wait_for(kLegacyAlarmMenu);
    }

    // The whole output, where `shown` stands between the start and the last menu.
    void expect_output(std::string const& shown) {
        session.type("x");
        EXPECT_EQ(session.wait_for_exit(), 0);
        EXPECT_EQ(session.output(),
                  kLegacyAlarm.start + shown + legacy_alarm_menu('x').substr(kLegacyAlarmMenu.size()));
        EXPECT_EQ(session.errors(), "");
    }

    Calls later_calls() { return calls_from(kLegacyAlarm.opening.size(), session.calls()); }

    ConsoleSession session;
};

std::string const kToWarning = "################################################# Changing to warning  \n";
std::string const kToRunning =
    "void cb_sensor_data(uint8_t, hal::cb_struct_te, void*)"
    "################################################# Changing to running\n";
std::string const kLevelSaved =
    "Saved Pos0  : 0Saved Pos1  : 0Saved Pos2  : 0###############   Saving done  ###################\n";

Calls const kSample = {"callback gyro_t::callback_records(0, 37)"};

TEST_F(LegacyAlarmTest, StartsAndLeavesInItsOrder) {
    expect_output(kLegacyAlarmMenu);
    EXPECT_EQ(session.calls(), calls_of_visit(kLegacyAlarm, {}));
}

TEST_F(LegacyAlarmTest, DeviceShowsRunningBeforeAnySample) {
    EXPECT_EQ(device_state(session), 3);
}

TEST_F(LegacyAlarmTest, ListAndHoldKeysCallTheLibrary) {
    type('i');
    type('t');
    type('t');
    type('t');
    expect_output(kLegacyAlarmMenu + legacy_alarm_menu('i').substr(kLegacyAlarmMenu.size()) + kVirtualSensors +
                  legacy_alarm_menu('t') + legacy_alarm_menu('t') + "Running" + legacy_alarm_menu('t') +
                  kLegacyAlarmMenu);
    Calls const of_keys{"gyro_t::info_vsensor_list() = 0", "gyro_t::irq_callback_hold(true) = 0",
                        "gyro_t::irq_callback_hold(false) = 0", "gyro_t::irq_callback_hold(true) = 0"};
    EXPECT_EQ(session.calls(), calls_of_visit(kLegacyAlarm, of_keys));
}

TEST_F(LegacyAlarmTest, AllOtherKeysShowTheMenuAgain) {
    std::string const keys = "abcdefghjklmnopqruvwyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789;-";
    session.type(keys);
    std::string shown;
    for (char const key : keys) {
        shown += legacy_alarm_menu(key);
    }
    expect_output(shown + kLegacyAlarmMenu);
    EXPECT_EQ(session.calls(), calls_of_visit(kLegacyAlarm, {}));
}

TEST_F(LegacyAlarmTest, TiltWarnsAndReturnRuns) {
    step("1ms");
    session.control("tilt 0 20 0");
    sample();
    EXPECT_EQ(device_state(session), 5);
    sample();
    session.control("tilt 0 0 0");
    sample();
    EXPECT_EQ(device_state(session), 3);
    expect_output(kLegacyAlarmMenu + kSampleTrace + kToWarning + kSampleTrace + kSampleTrace + kToRunning);
    EXPECT_EQ(later_calls(), kSample + Calls{"rtu_t::set_device_status(5) = 0"} + kSample + kSample +
                                 Calls{"rtu_t::set_device_status(3) = 0"} + kLegacyAlarm.closing);
}

TEST_F(LegacyAlarmTest, RefusedDeviceStatesAreNotReported) {
    step("1ms");
    session.control("fault add rtu_t::set_device_status status -1");
    session.control("tilt 0 20 0");
    sample();
    session.control("tilt 0 0 0");
    sample();
    expect_output(kLegacyAlarmMenu + kSampleTrace + kToWarning + kSampleTrace + kToRunning);
    EXPECT_EQ(later_calls(), kSample + Calls{"rtu_t::set_device_status(5) = -1"} + kSample +
                                 Calls{"rtu_t::set_device_status(3) = -1"} + kLegacyAlarm.closing);
}

TEST_F(LegacyAlarmTest, SaveKeyTakesTheNextSample) {
    step("1ms");
    session.control("tilt 0 0 180");
    sample();
    EXPECT_EQ(device_state(session), 5);
    type('s');
    sample();
    sample();
    EXPECT_EQ(device_state(session), 3);
    expect_output(kLegacyAlarmMenu + kSampleTrace + kToWarning +
                  legacy_alarm_menu('s').substr(kLegacyAlarmMenu.size()) + kLegacyAlarmMenu + kSampleTrace +
                  "Saved Pos0  : 0Saved Pos1  : 0Saved Pos2  : 180"
                  "###############   Saving done  ###################\n" +
                  kSampleTrace + kToRunning);
}

TEST_F(LegacyAlarmTest, HeldCallbacksBringNoSample) {
    step("1ms");
    type('t');
    session.control("tilt 0 20 0");
    step("10s");
    EXPECT_EQ(device_state(session), 3);
    EXPECT_EQ(later_calls(), Calls{"gyro_t::irq_callback_hold(true) = 0"});
}

TEST_F(LegacyAlarmTest, ButtonOfAnR47IsOnAnotherLine) {
    step("1ms");
    session.control("press 6s");
    Calls samples;
    std::string traces;
    for (int i = 1; i <= 10; ++i) {
        sample();
        EXPECT_EQ(is_pressed(session), i * 640 < 6000);
        samples = samples + kSample;
        traces += kSampleTrace;
    }
    EXPECT_EQ(later_calls(), samples);
    expect_output(kLegacyAlarmMenu + traces);
}

class LegacyAlarmOnOtherVariantTest : public LegacyAlarmTest {
protected:
    static SessionOptions other_variant() {
        SessionOptions options = legacy();
        options.without = of_another_variant().without;
        return options;
    }

    LegacyAlarmOnOtherVariantTest() : LegacyAlarmTest(other_variant()) {}
};

TEST_F(LegacyAlarmOnOtherVariantTest, PressOf5SecondsSavesThePosition) {
    step("1ms");
    session.control("press 5s");
    step("5s");  // seven samples, and the release
    sample();    // which saves the position
    sample();
    std::string traces;
    for (int i = 0; i < 8; ++i) {
        traces += kSampleTrace;
    }
    expect_output(kLegacyAlarmMenu + traces + kLevelSaved + kSampleTrace);
}

TEST(LegacyAlarmStartTest, FailuresOfTheLibraryAreNotReported) {
    Menu failing = kLegacyAlarm;
    failing.start = "int test_alarm_old()\n";
    failing.opening = with_failures(kLegacyAlarm.opening);
    expect_run(failing,
               {{'i', "", "", {"gyro_t::info_vsensor_list() = -1"}},
                {'t', "", "", {"gyro_t::irq_callback_hold(true) = -1"}},
                {'t', "", "Running", {"gyro_t::irq_callback_hold(false) = -1"}}},
               with_failing_hub());
}

TEST(LegacyAlarmStartTest, HubIsGiven3SecondsBeforeTheMenu) {
    SessionOptions options = legacy();
    options.entry_point = "alarm_old_waits";
    EXPECT_EQ(support::run_console("x", options).output,
              kLegacyAlarm.start + "waited 3000 ms\n" + legacy_alarm_menu('x'));
}

// Its own sensor is 37; 38 has a record, too, for whoever activates it.
TEST(LegacyAlarmStartTest, BothRecordsHearTheirSensors) {
    SessionOptions options = legacy();
    options.entry_point = "alarm_old_with_both_sensors";
    ConsoleSession session(options);
    session.wait_for(kLegacyAlarmMenu);
    session.control("step 641ms");
    session.wait_for(kSampleTrace);
    session.wait_for(kSampleTrace);
    session.type("x");
    EXPECT_EQ(session.wait_for_exit(), 0);
    Calls const calls = session.calls();
    for (char const* sample :
         {"callback gyro_t::callback_records(0, 37)", "callback gyro_t::callback_records(1, 38)"}) {
        EXPECT_EQ(std::count(calls.begin(), calls.end(), sample), 1) << sample;
    }
}

TEST(LegacyAlarmStartTest, SamplesArriveBeforeTheMenu) {
    SessionOptions options = legacy();
    options.clock = "real";
    ConsoleSession session(options);
    session.wait_for(kSampleTrace);
    session.wait_for(kSampleTrace);
    session.wait_for(kLegacyAlarmMenu);
    session.type("x");
    EXPECT_EQ(session.wait_for_exit(), 0);
}

void save_position_and_leave(ConsoleSession& session) {
    session.wait_for(kLegacyAlarmMenu);
    session.control("step 1ms");
    session.type("s");
    session.wait_for(kLegacyAlarmMenu);
    session.control("step 2s");
    session.wait_for(kLevelSaved);
    session.type("x");
}

TEST(LegacyAlarmStartTest, LogFileIsEmptiedAndStaysEmpty) {
    SessionOptions options = legacy();
    options.script = "echo old > /tmp/gyro.txt; \"$@\"; echo \"size $(stat -c %s /tmp/gyro.txt)\"";
    ConsoleSession session(options);
    save_position_and_leave(session);
    session.wait_for("size 0\n");
}

TEST(LegacyAlarmStartTest, LogFileThatCannotBeOpenedChangesNothing) {
    SessionOptions options = legacy();
    options.script = "mkdir /tmp/gyro.txt; exec \"$@\"";
    ConsoleSession session(options);
    save_position_and_leave(session);
    EXPECT_EQ(session.wait_for_exit(), 0);
    EXPECT_EQ(session.errors(), "");
}

TEST(LegacyAlarmStartTest, EndOfInputLeavesTheMenu) {
    ConsoleSession session(legacy());
    session.end_input();
    EXPECT_EQ(session.wait_for_exit(), 0);
    EXPECT_EQ(session.output(), output_of_visit(kLegacyAlarm, ""));
    EXPECT_EQ(session.calls(), calls_of_visit(kLegacyAlarm, {}));
}

}  // namespace
