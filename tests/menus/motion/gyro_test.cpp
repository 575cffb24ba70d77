// Transcripts of the low-level menu of the sensor hub.
#include <gtest/gtest.h>

#include "tests/menus/motion/motion_run.h"
#include "tests/support/console_session.h"
#include "tests/support/screens/motion.h"

namespace {

using namespace motion;
using namespace screens;
using support::Calls;
using support::ConsoleSession;
using support::run_console;
using support::SessionOptions;
using support::Transcript;

// The sequence of the start and of key 'n'.
Calls start_calls(int boot_status = 0) {
    return {"gyro_t::boot() = " + std::to_string(boot_status), "gyro_t::install_callbacks() = 0",
            "gyro_t::info_firmware() = 0", "gyro_t::activate_vsensor(37, 5, 1) = 0"};
}

Calls menu_calls(Calls const& of_keys, std::string const& firmware = kFirmwareAp) {
    return Calls{gyro_construction(firmware)} + start_calls() + Calls{"gyro_t::irq_callback_hold(false) = 0"} +
           of_keys + Calls{"gyro_t::~gyro_t()"};
}

std::string const kStartOutput = firmware_report("AP", true) + "\n\n\n\n\n";

// Types at the menu, which 'x' leaves at the end.
Transcript run_menu(std::string const& typed, SessionOptions const& options = stepped()) {
    return run_console("g" + typed + "xx", options);
}

// What the run prints where the keys print this.
std::string transcript(std::string const& of_keys) {
    return visit('g', kStartOutput + of_keys + gyro_menu('x'));
}

struct KeyCase {
    char const* name;
    std::string typed;   // from the key on
    std::string output;  // behind the key's echo
    Calls calls;
};

class GyroMenuKeyTest : public testing::TestWithParam<KeyCase> {};

TEST_P(GyroMenuKeyTest, PrintsAndCallsWhatBelongsToIt) {
    KeyCase const& key = GetParam();
    auto const run = run_menu(key.typed);
    EXPECT_EQ(run.output, transcript(gyro_menu(key.typed.front()) + key.output));
    EXPECT_EQ(run.calls, menu_calls(key.calls));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 0);
}

KeyCase const kKeys[] = {
    {"Status", "1", "Status of the Module: \tDone!\n", {"gyro_t::get_status() = 0 [0]"}},
    {"SerialNumber", "3", "", {}},
    {"DefaultSensor", "d5\n", "Please enter sensor id: Your Option = 5\n", {}},
    {"Activate", "a", activating("0", "50", "100"), {"gyro_t::activate_vsensor(0, 50, 100) = -1"}},
    {"ActivateAsking",
     "A37\n12.5\n30\n",
     "Please enter sensor id: [0]\nPlease enter frame rate: [50]\nPlease enter latency: [100]\n" +
         activating("37", "12.5", "30"),
     {"gyro_t::activate_vsensor(37, 12.5, 30) = 0"}},
    {"ActivateWithRateZero",
     "A37\n0\n7\n",
     "Please enter sensor id: [0]\nPlease enter frame rate: [50]\nPlease enter latency: [100]\n" +
         activating("37", "0", "7"),
     {"gyro_t::activate_vsensor(37, 0, 7) = 0"}},
    {"VirtualSensors", "w", kVirtualSensors, {"gyro_t::info_vsensor_list() = 0"}},
    {"PhysicalSensors", "W", kPhysicalSensors, {"gyro_t::info_psensor_list() = 0"}},
    {"Configuration", "s", "Virtual sensor 0 is not present\n", {"gyro_t::info_vsensor_cfg(0) = -1"}},
    {"Sensor", "S", "Virtual sensor 0 is not present\n", {"gyro_t::info_vsensor(0) = -1"}},
    {"PhysicalSensors1And3",
     "P",
     kPhysicalSensors1And3,
     {"gyro_t::info_psensor(1) = 0", "gyro_t::info_psensor(3) = 0"}},
    {"UploadOfAMissingImage", "f", "", {"gyro_t::upload_firmware(\"./Bosch.fw\") = -1"}},
    {"Firmware", "F", firmware_report("AP", false), {"gyro_t::info_firmware() = 0"}},
    {"FirmwareByItsOtherKey", "q", firmware_report("AP", false), {"gyro_t::info_firmware() = 0"}},
    {"InterruptControl", "e", kInterruptControl, {"gyro_t::info_irq_ctrl() = 0"}},
    {"InterruptStatus", "E", kInterruptAfterReset, {"gyro_t::info_irq() = 0"}},
    {"Boot", "b", "", {"gyro_t::boot() = 0"}},
    {"InstallCallbacks", "B", "", {"gyro_t::install_callbacks() = 0"}},
    {"StartAgain", "n", firmware_report("AP", true) + "\n\n\n\n\n", start_calls()},
    {"Hold", "t", "", {"gyro_t::irq_callback_hold(true) = 0"}},
    {"DeadReadFifos", "r", "", {}},
};

INSTANTIATE_TEST_SUITE_P(, GyroMenuKeyTest, testing::ValuesIn(kKeys), [](auto const& key) { return key.param.name; });

class GyroMenuFailureTest : public testing::TestWithParam<KeyCase> {};

TEST_P(GyroMenuFailureTest, FailingCallLeavesTheMenuGoing) {
    KeyCase const& key = GetParam();
    // Each operation of the start has been called once, and passes.
    auto const run = run_menu(
        key.typed,
        stepped({"fault add gyro_t::boot skip 1 status 3", "fault add gyro_t::install_callbacks skip 1 status -1",
                 "fault add gyro_t::info_firmware skip 1 status -1",
                 "fault add gyro_t::activate_vsensor skip 1 status -1",
                 "fault add gyro_t::irq_callback_hold skip 1 status -1", "fault add gyro_t::info_vsensor* status -1",
                 "fault add gyro_t::info_psensor* status -1", "fault add gyro_t::info_irq* status -1",
                 "fault add gyro_t::upload_firmware status -1", "fault add gyro_t::get_* status -1"}));
    EXPECT_EQ(run.output, transcript(gyro_menu(key.typed.front()) + key.output));
    EXPECT_EQ(run.calls, menu_calls(key.calls));
    EXPECT_EQ(run.status, 0);
}

KeyCase const kFailingKeys[] = {
    {"Activate", "a", activating("0", "50", "100"), {"gyro_t::activate_vsensor(0, 50, 100) = -1"}},
    {"ActivateAsking",
     "A37\n12.5\n30\n",
     "Please enter sensor id: [0]\nPlease enter frame rate: [50]\nPlease enter latency: [100]\n" +
         activating("37", "12.5", "30"),
     {"gyro_t::activate_vsensor(37, 12.5, 30) = -1"}},
    {"VirtualSensors", "w", "", {"gyro_t::info_vsensor_list() = -1"}},
    {"PhysicalSensors", "W", "", {"gyro_t::info_psensor_list() = -1"}},
    {"Configuration", "s", "", {"gyro_t::info_vsensor_cfg(0) = -1"}},
    {"Sensor", "S", "", {"gyro_t::info_vsensor(0) = -1"}},
    {"PhysicalSensors1And3", "P", "", {"gyro_t::info_psensor(1) = -1", "gyro_t::info_psensor(3) = -1"}},
    {"Upload", "f", "", {"gyro_t::upload_firmware(\"./Bosch.fw\") = -1"}},
    {"Firmware", "F", "", {"gyro_t::info_firmware() = -1"}},
    {"FirmwareByItsOtherKey", "q", "", {"gyro_t::info_firmware() = -1"}},
    {"InterruptControl", "e", "", {"gyro_t::info_irq_ctrl() = -1"}},
    {"InterruptStatus", "E", "", {"gyro_t::info_irq() = -1"}},
    {"Boot", "b", "booting failed\n", {"gyro_t::boot() = 3"}},
    {"InstallCallbacks", "B", "", {"gyro_t::install_callbacks() = -1"}},
    {"StartAgain",
     "n",
     "\n\n\n\n\n",
     {"gyro_t::boot() = 3", "gyro_t::install_callbacks() = -1", "gyro_t::info_firmware() = -1",
      "gyro_t::activate_vsensor(37, 5, 1) = -1"}},
    {"Hold", "t", "", {"gyro_t::irq_callback_hold(true) = -1"}},
    {"Status", "1", "Status of the Module: \t", {"gyro_t::get_status() = -1"}},
    {"Revision", "2", "Revision of the Module: \t", {"gyro_t::get_revision() = -1"}},
};

INSTANTIATE_TEST_SUITE_P(, GyroMenuFailureTest, testing::ValuesIn(kFailingKeys),
                         [](auto const& key) { return key.param.name; });

TEST(GyroMenuTest, FailedStatusIsReportedOnStandardError) {
    auto const run = run_menu("1", stepped({"fault add gyro_t::get_status status -1"}));
    EXPECT_EQ(run.errors, "Failed read rev\n: Input/output error\n");
}

TEST(GyroMenuTest, RevisionHasNoDriverName) {
    auto const run = run_menu("2", stepped({"fault add gyro_t::get_revision value 1,6,0,2,22,14"}));
    EXPECT_EQ(run.output,
              transcript(gyro_menu('2') +
                         "Revision of the Module: \t\nMajor \t1,\nMinor \t6,\nWeek \t14,\nYear \t22,\nNum \t2,\n"
                         "Patch \t0,\n Done!\n"));
    EXPECT_EQ(run.calls, menu_calls({"gyro_t::get_revision() = 0 [{1, 6, 0, 2, 22, 14}]"}));
}

TEST(GyroMenuTest, KeysWithoutAnEntryShowTheMenuAgain) {
    std::string const keys = "456789cgGhHiIjJkKlLmMNoOpQRTuUvVyYzZCX?-;";
    std::string shown;
    for (char const key : keys) {
        shown += gyro_menu(key);
    }
    auto const run = run_menu(keys);
    EXPECT_EQ(run.output, transcript(shown));
    EXPECT_EQ(run.calls, menu_calls({}));
}

TEST(GyroMenuTest, Key0EndsTheProcessWithoutDestruction) {
    auto const run = run_console("g0", stepped());
    EXPECT_EQ(run.output, kStart + main_menu('g') + kStartOutput + gyro_menu('0') + kGoodBye);
    EXPECT_EQ(run.status, 0);
    Calls calls = menu_calls({});
    calls.pop_back();
    EXPECT_EQ(run.calls, calls);
}

TEST(GyroMenuTest, InformationIsOfTheDefaultSensor) {
    auto const run = run_menu("d5\nsS");
    EXPECT_EQ(run.output, transcript(gyro_menu('d') + "Please enter sensor id: Your Option = 5\n" + gyro_menu('s') +
                                     kVirtualSensor5Configuration + gyro_menu('S') + kVirtualSensor5));
    EXPECT_EQ(run.calls, menu_calls({"gyro_t::info_vsensor_cfg(5) = 0", "gyro_t::info_vsensor(5) = 0"}));
}

TEST(GyroMenuTest, ActivationKeepsTheSensorOfItsFirstUse) {
    auto const run = run_menu("ad5\nasD9\n20\n3\nsa");
    EXPECT_EQ(run.calls, menu_calls({"gyro_t::activate_vsensor(0, 50, 100) = -1",
                                     "gyro_t::activate_vsensor(0, 50, 100) = -1", "gyro_t::info_vsensor_cfg(5) = 0",
                                     "gyro_t::info_vsensor_cfg(9) = -1", "gyro_t::activate_vsensor(0, 50, 100) = -1"}));
}

TEST(GyroMenuTest, ActivationTakesTheDefaultSensorAtItsFirstUse) {
    auto const run = run_menu("d38\na");
    EXPECT_EQ(run.calls, menu_calls({"gyro_t::activate_vsensor(38, 50, 100) = 0"}));
}

TEST(GyroMenuTest, DefaultsKeepTheirFirstAnswerAsTheSensor) {
    auto const run = run_menu("D7\n20\n3\nsaD8\n1\n2\n");
    std::string const first = gyro_menu('D') +
                              "Sensor id: 0\nPlease frame rate Please enter frame rate: [0]\n"
                              "Please enter latency: [0]\n";
    std::string const second = gyro_menu('D') +
                               "Sensor id: 7\nPlease frame rate Please enter frame rate: [20]\n"
                               "Please enter latency: [3]\n";
    std::string const configuration =
        "Configuration of virtual sensor 7: Accelerometer uncalibrated wake up\n"
        "  sample rate         0 Hz\n  latency             0 ms\n  sensitivity         0\n  range               16\n";
    EXPECT_EQ(run.output, transcript(first + gyro_menu('s') + configuration + gyro_menu('a') +
                                     activating("7", "50", "100") + second));
    EXPECT_EQ(run.calls, menu_calls({"gyro_t::info_vsensor_cfg(7) = 0", "gyro_t::activate_vsensor(7, 50, 100) = 0"}));
}

TEST(GyroMenuTest, ActivationShowsItsLastValues) {
    auto const run = run_menu("A37\n12.5\n30\nA\n38\n400\n2\n");
    EXPECT_EQ(run.output, transcript(gyro_menu('A') +
                                     "Please enter sensor id: [0]\nPlease enter frame rate: [50]\n"
                                     "Please enter latency: [100]\n" +
                                     activating("37", "12.5", "30") + gyro_menu('A') +
                                     "Please enter sensor id: [37]\nPlease enter frame rate: [12.5]\n"
                                     "Please enter latency: [30]\n" +
                                     activating("38", "400", "2")));
}

TEST(GyroMenuTest, ValuesOutliveTheMenu) {
    auto const run = run_console("gA37\n10\n5\nd3\nxgaD4\n5\n6\nxx", stepped());
    EXPECT_NE(run.output.find(gyro_menu('a') + activating("37", "10", "5")), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("Sensor id: 3\n"), std::string::npos) << run.output;
}

TEST(GyroMenuTest, MistypedNumbersKeepTheOldValues) {
    auto const run = run_menu("dabc\nDx1\nb\nc\nA-\n+\nx\n");
    EXPECT_EQ(run.output,
              transcript(gyro_menu('d') + "Please enter sensor id: Your Option = 0\n" + gyro_menu('D') +
                         "Sensor id: 0\nPlease frame rate Please enter frame rate: [0]\n"
                         "Please enter latency: [0]\n" +
                         gyro_menu('A') +
                         "Please enter sensor id: [0]\nPlease enter frame rate: [50]\nPlease enter latency: [100]\n" +
                         activating("0", "50", "100")));
}

TEST(GyroMenuTest, FloatEndsWhereItCannotGoOn) {
    // What is left of the line answers the next prompt, and is no number there.
    for (auto const& [typed, taken] : {std::pair("1.2.3", "1.2, 100) = 0"),
                                       {"1e1.5", "10, 100) = 0"},
                                       {"1e1-", "10, 100) = 0"},
                                       {"1e5e3", "100000, 100) = -1"},
                                       {"+.5E+1x", "5, 100) = 0"}}) {
        auto const run = run_menu(std::string("A37\n") + typed + "\n");
        EXPECT_EQ(run.calls, menu_calls({std::string("gyro_t::activate_vsensor(37, ") + taken})) << typed;
    }
}

TEST(GyroMenuTest, FloatThatIsNoneKeepsTheOldValueAndItsLineIsDropped) {
    std::string const too_large(70, '1');
    std::string const too_long(1024, '0');
    for (std::string const typed : {"1e", ".e1", "-", "1e+", too_large.c_str(), too_long.c_str()}) {
        auto const run = run_menu("A37\n" + typed + "\n10\n");
        EXPECT_EQ(run.calls, menu_calls({"gyro_t::activate_vsensor(37, 50, 10) = 0"})) << typed;
    }
    auto const run = run_menu("A37\n" + std::string(70, '0') + "1\n10\n");
    EXPECT_EQ(run.calls, menu_calls({"gyro_t::activate_vsensor(37, 1, 10) = 0"}));
}

TEST(GyroMenuTest, SecondHoldKeyReleases) {
    auto const run = run_menu("ttt");
    EXPECT_EQ(run.calls, menu_calls({"gyro_t::irq_callback_hold(true) = 0", "gyro_t::irq_callback_hold(false) = 0",
                                     "gyro_t::irq_callback_hold(true) = 0"}));
}

TEST(GyroMenuTest, StartingAgainLeavesTheHoldAsItIs) {
    auto const run = run_menu("tnt");
    EXPECT_EQ(run.calls, menu_calls(Calls{"gyro_t::irq_callback_hold(true) = 0"} + start_calls() +
                                    Calls{"gyro_t::irq_callback_hold(false) = 0"}));
}

TEST(GyroMenuTest, FailedBootAtTheStartIsNotReported) {
    auto const run = run_menu("", stepped({"fault add gyro_t::boot status 7"}));
    EXPECT_EQ(run.output.find("booting failed"), std::string::npos);
    EXPECT_EQ(run.calls[1], "gyro_t::boot() = 7");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 0);
}

TEST(GyroMenuTest, BootWithoutTheFirmwareOrTheInterruptLineFails) {
    for (std::string const& path : {kFirmwareAp, std::string("/sys/class/gpio/gpio481/value")}) {
        SessionOptions options = stepped();
        options.without = {path};
        auto const run = run_menu("b", options);
        EXPECT_NE(run.output.find(gyro_menu('b') + "booting failed\n"), std::string::npos) << path;
    }
}

TEST(GyroMenuTest, FirmwareFollowsTheMainMenusChoice) {
    auto const run = run_console("Ogxx", stepped());
    EXPECT_EQ(run.output, kStart + main_menu('O') + main_menu('g') + firmware_report("AB", true) + "\n\n\n\n\n" +
                              gyro_menu('x') + main_menu('x'));
    EXPECT_EQ(run.calls, menu_calls({}, kFirmwareAb));
}

TEST(GyroMenuTest, FirmwareFollowsTheCommandWord) {
    SessionOptions options = stepped();
    options.arguments = {"old_gyro_fw"};
    auto const run = run_console("gxx", options);
    EXPECT_EQ(run.output, kStart + "11\n" + main_menu('g') + firmware_report("AB", true) + "\n\n\n\n\n" +
                              gyro_menu('x') + main_menu('x'));
    EXPECT_EQ(run.calls, menu_calls({}, kFirmwareAb));
}

TEST(GyroMenuTest, UploadTakesTheImageBesideTheConsole) {
    SessionOptions options = stepped();
    options.script = "cp " + kFirmwareAb + " Bosch.fw && \"$@\"";
    auto const run = run_menu("fF", options);
    EXPECT_EQ(run.output, transcript(gyro_menu('f') + gyro_menu('F') + firmware_report("AB", true)));
    EXPECT_EQ(run.calls, menu_calls({"gyro_t::upload_firmware(\"./Bosch.fw\") = 0", "gyro_t::info_firmware() = 0"}));
}

TEST(GyroMenuTest, UploadOfWhatIsNoImageFails) {
    SessionOptions options = stepped();
    options.script = "echo none > Bosch.fw && \"$@\"";
    EXPECT_EQ(run_menu("f", options).calls, menu_calls({"gyro_t::upload_firmware(\"./Bosch.fw\") = -1"}));
}

TEST(GyroMenuTest, EndOfInputLeavesTheMenu) {
    for (std::string const typed : {"g", "gd", "gA", "gD7\n"}) {
        ConsoleSession session(stepped());
        session.type(typed);
        session.end_input();
        session.wait_for("Your Option = x\n" + main_menu());
        EXPECT_EQ(session.calls().back(), "gyro_t::~gyro_t()") << typed;
    }
}

TEST(GyroMenuTest, ControlDCostsOneRedisplay) {
    SessionOptions options = stepped();
    options.terminal = true;
    ConsoleSession session(options);
    session.wait_for("Please enter your option: ");
    session.type("g\n");
    session.wait_for("r: read and process fifos");
    session.wait_for("Please enter your option: ");
    session.type("\x04");
    session.wait_for(std::string("Your Option = ") + '\0');
    session.wait_for("Please enter your option: ");
    session.type("x\n");
    session.wait_for("Your Option = x");
    session.wait_for("Enter the Option");
    session.type("x\n");
    EXPECT_EQ(session.wait_for_exit(), 0);
}

}  // namespace
