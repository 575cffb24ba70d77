// Transcripts of the low-level menu of the sensor hub.
#include <algorithm>
#include <tuple>

#include "tests/menus/motion/motion_run.h"
#include "tests/support/screens/motion.h"

namespace {

using namespace motion;
using namespace screens;
using support::Calls;
using support::run_console;
using support::SessionOptions;

// The sequence of the start and of key 'n'.
Calls const kStartCalls = {"gyro_t::boot() = 0", "gyro_t::install_callbacks() = 0", "gyro_t::info_firmware() = 0",
                           "gyro_t::activate_vsensor(37, 5, 1) = 0"};

// The menu, with the old firmware.
Menu with_old_firmware() {
    Menu menu = kGyro;
    menu.start = firmware_report("AB", true) + "\n\n\n\n\n";
    menu.opening.front() = gyro_construction(kFirmwareAb);
    return menu;
}

struct KeyCase {
    char const* name;
    Step step;
};

class GyroMenuKeyTest : public testing::TestWithParam<KeyCase> {};

TEST_P(GyroMenuKeyTest, PrintsAndCallsWhatBelongsToIt) {
    expect_run(kGyro, {GetParam().step});
}

std::string activation_prompts(std::string const& id, std::string const& rate, std::string const& latency) {
    return "Please enter sensor id: [" + id + "]\nPlease enter frame rate: [" + rate + "]\nPlease enter latency: [" +
           latency + "]\n";
}

std::string default_prompts(std::string const& id, std::string const& rate, std::string const& latency) {
    return "Sensor id: " + id + "\nPlease frame rate Please enter frame rate: [" + rate + "]\nPlease enter latency: [" +
           latency + "]\n";
}

KeyCase const kKeys[] = {
    {"Status", {'1', "", "Status of the Module: \tDone!\n", {"gyro_t::get_status() = 0 [0]"}}},
    {"SerialNumber", {'3', "", "", {}}},
    {"DefaultSensor", {'d', "5\n", "Please enter sensor id: Your Option = 5\n", {}}},
    {"Activate", {'a', "", activating("0", "50", "100"), {"gyro_t::activate_vsensor(0, 50, 100) = -1"}}},
    {"ActivateAsking",
     {'A',
      "37\n12.5\n30\n",
      activation_prompts("0", "50", "100") + activating("37", "12.5", "30"),
      {"gyro_t::activate_vsensor(37, 12.5, 30) = 0"}}},
    {"ActivateWithRateZero",
     {'A',
      "37\n0\n7\n",
      activation_prompts("0", "50", "100") + activating("37", "0", "7"),
      {"gyro_t::activate_vsensor(37, 0, 7) = 0"}}},
    {"VirtualSensors", {'w', "", kVirtualSensors, {"gyro_t::info_vsensor_list() = 0"}}},
    {"PhysicalSensors", {'W', "", kPhysicalSensors, {"gyro_t::info_psensor_list() = 0"}}},
    {"Configuration", {'s', "", "Virtual sensor 0 is not present\n", {"gyro_t::info_vsensor_cfg(0) = -1"}}},
    {"Sensor", {'S', "", "Virtual sensor 0 is not present\n", {"gyro_t::info_vsensor(0) = -1"}}},
    {"PhysicalSensors1And3",
     {'P', "", kPhysicalSensors1And3, {"gyro_t::info_psensor(1) = 0", "gyro_t::info_psensor(3) = 0"}}},
    {"UploadOfAMissingImage", {'f', "", "", {"gyro_t::upload_firmware(\"./Bosch.fw\") = -1"}}},
    {"Firmware", {'F', "", firmware_report("AP", false), {"gyro_t::info_firmware() = 0"}}},
    {"FirmwareByItsOtherKey", {'q', "", firmware_report("AP", false), {"gyro_t::info_firmware() = 0"}}},
    {"InterruptControl", {'e', "", kInterruptControl, {"gyro_t::info_irq_ctrl() = 0"}}},
    {"InterruptStatus", {'E', "", kInterruptAfterReset, {"gyro_t::info_irq() = 0"}}},
    {"Boot", {'b', "", "", {"gyro_t::boot() = 0"}}},
    {"InstallCallbacks", {'B', "", "", {"gyro_t::install_callbacks() = 0"}}},
    {"StartAgain", {'n', "", firmware_report("AP", true) + "\n\n\n\n\n", kStartCalls}},
    {"Hold", {'t', "", "", {"gyro_t::irq_callback_hold(true) = 0"}}},
    {"DeadReadFifos", {'r', "", "", {}}},
};

INSTANTIATE_TEST_SUITE_P(, GyroMenuKeyTest, testing::ValuesIn(kKeys), [](auto const& key) { return key.param.name; });

class GyroMenuFailureTest : public testing::TestWithParam<KeyCase> {};

TEST_P(GyroMenuFailureTest, FailingCallLeavesTheMenuGoing) {
    // Each operation of the start has been called once, and passes.
    expect_run(
        kGyro, {GetParam().step},
        with_scenario(
            {"fault add gyro_t::boot skip 1 status 3", "fault add gyro_t::install_callbacks skip 1 status -1",
             "fault add gyro_t::info_firmware skip 1 status -1", "fault add gyro_t::activate_vsensor skip 1 status -1",
             "fault add gyro_t::irq_callback_hold skip 1 status -1", "fault add gyro_t::info_vsensor* status -1",
             "fault add gyro_t::info_psensor* status -1", "fault add gyro_t::info_irq* status -1",
             "fault add gyro_t::upload_firmware status -1", "fault add gyro_t::get_* status -1"}));
}

KeyCase const kFailingKeys[] = {
    {"Activate", {'a', "", activating("0", "50", "100"), {"gyro_t::activate_vsensor(0, 50, 100) = -1"}}},
    {"ActivateAsking",
     {'A',
      "37\n12.5\n30\n",
      activation_prompts("0", "50", "100") + activating("37", "12.5", "30"),
      {"gyro_t::activate_vsensor(37, 12.5, 30) = -1"}}},
    {"VirtualSensors", {'w', "", "", {"gyro_t::info_vsensor_list() = -1"}}},
    {"PhysicalSensors", {'W', "", "", {"gyro_t::info_psensor_list() = -1"}}},
    {"Configuration", {'s', "", "", {"gyro_t::info_vsensor_cfg(0) = -1"}}},
    {"Sensor", {'S', "", "", {"gyro_t::info_vsensor(0) = -1"}}},
    {"PhysicalSensors1And3", {'P', "", "", {"gyro_t::info_psensor(1) = -1", "gyro_t::info_psensor(3) = -1"}}},
    {"Upload", {'f', "", "", {"gyro_t::upload_firmware(\"./Bosch.fw\") = -1"}}},
    {"Firmware", {'F', "", "", {"gyro_t::info_firmware() = -1"}}},
    {"FirmwareByItsOtherKey", {'q', "", "", {"gyro_t::info_firmware() = -1"}}},
    {"InterruptControl", {'e', "", "", {"gyro_t::info_irq_ctrl() = -1"}}},
    {"InterruptStatus", {'E', "", "", {"gyro_t::info_irq() = -1"}}},
    {"Boot", {'b', "", "booting failed\n", {"gyro_t::boot() = 3"}}},
    {"InstallCallbacks", {'B', "", "", {"gyro_t::install_callbacks() = -1"}}},
    {"StartAgain",
     {'n',
      "",
      "\n\n\n\n\n",
      {"gyro_t::boot() = 3", "gyro_t::install_callbacks() = -1", "gyro_t::info_firmware() = -1",
       "gyro_t::activate_vsensor(37, 5, 1) = -1"}}},
    {"Hold", {'t', "", "", {"gyro_t::irq_callback_hold(true) = -1"}}},
    {"Status", {'1', "", "Status of the Module: \t", {"gyro_t::get_status() = -1"}, kInformationError}},
    {"Revision", {'2', "", "Revision of the Module: \t", {"gyro_t::get_revision() = -1"}, kInformationError}},
};

INSTANTIATE_TEST_SUITE_P(, GyroMenuFailureTest, testing::ValuesIn(kFailingKeys),
                         [](auto const& key) { return key.param.name; });

TEST(GyroMenuTest, RevisionHasNoDriverName) {
    expect_run(kGyro,
               {{'2',
                 "",
                 "Revision of the Module: \t\nMajor \t1,\nMinor \t6,\nWeek \t14,\nYear \t22,\nNum \t2,\nPatch \t0,\n "
                 "Done!\n",
                 {"gyro_t::get_revision() = 0 [{1, 6, 0, 2, 22, 14}]"}}},
               with_scenario({"fault add gyro_t::get_revision value 1,6,0,2,22,14"}));
}

TEST(GyroMenuTest, RestOfALineBehindANumberThatIsTooLargeAnswersNothing) {
    expect_run(kGyro, {{'A',
                        "4294967296 38\n1e99 12.5\n-4294967296 30\n",
                        activation_prompts("0", "50", "100") + activating("0", "50", "100"),
                        {"gyro_t::activate_vsensor(0, 50, 100) = -1"}}});
}

TEST(GyroMenuTest, KeysWithoutAnEntryShowTheMenuAgain) {
    expect_run(kGyro, ignored("456789cgGhHiIjJkKlLmMNoOpQRTuUvVyYzZCX?-;"));
}

Step const kActivateUnset{'a', "", activating("0", "50", "100"), {"gyro_t::activate_vsensor(0, 50, 100) = -1"}};

// Key 'd', which echoes the sensor that it makes the default.
Step default_sensor(std::string const& typed, std::string const& taken) {
    return {'d', typed + "\n", "Please enter sensor id: Your Option = " + taken + "\n", {}};
}

TEST(GyroMenuTest, InformationIsOfTheDefaultSensor) {
    expect_run(kGyro, {default_sensor("5", "5"),
                       {'s', "", kVirtualSensor5Configuration, {"gyro_t::info_vsensor_cfg(5) = 0"}},
                       {'S', "", kVirtualSensor5, {"gyro_t::info_vsensor(5) = 0"}}});
}

TEST(GyroMenuTest, ActivationKeepsTheSensorOfItsFirstUse) {
    expect_run(kGyro, {kActivateUnset,
                       default_sensor("5", "5"),
                       kActivateUnset,
                       {'s', "", kVirtualSensor5Configuration, {"gyro_t::info_vsensor_cfg(5) = 0"}},
                       {'D', "9\n20\n3\n", default_prompts("5", "0", "0"), {}},
                       {'s', "", "Virtual sensor 9 is not present\n", {"gyro_t::info_vsensor_cfg(9) = -1"}},
                       kActivateUnset});
}

TEST(GyroMenuTest, ActivationTakesTheDefaultSensorAtItsFirstUse) {
    expect_run(kGyro, {default_sensor("38", "38"),
                       {'a', "", activating("38", "50", "100"), {"gyro_t::activate_vsensor(38, 50, 100) = 0"}}});
}

TEST(GyroMenuTest, DefaultsKeepTheirFirstAnswerAsTheSensor) {
    std::string const configuration =
        "Configuration of virtual sensor 7: Accelerometer uncalibrated wake up\n"
        "  sample rate         0 Hz\n  latency             0 ms\n  sensitivity         0\n  range               16\n";
    expect_run(kGyro, {{'D', "7\n20\n3\n", default_prompts("0", "0", "0"), {}},
                       {'s', "", configuration, {"gyro_t::info_vsensor_cfg(7) = 0"}},
                       {'a', "", activating("7", "50", "100"), {"gyro_t::activate_vsensor(7, 50, 100) = 0"}},
                       {'D', "8\n1\n2\n", default_prompts("7", "20", "3"), {}}});
}

TEST(GyroMenuTest, ActivationShowsItsLastValues) {
    expect_run(kGyro, {{'A',
                        "37\n12.5\n30\n",
                        activation_prompts("0", "50", "100") + activating("37", "12.5", "30"),
                        {"gyro_t::activate_vsensor(37, 12.5, 30) = 0"}},
                       {'A',
                        "\n38\n400\n2\n",
                        activation_prompts("37", "12.5", "30") + activating("38", "400", "2"),
                        {"gyro_t::activate_vsensor(38, 400, 2) = 0"}}});
}

TEST(GyroMenuTest, ValuesOutliveTheMenu) {
    auto const run = run_console("gA37\n10\n5\nd3\nxgaD4\n5\n6\nxx", stepped());
    EXPECT_NE(run.output.find(gyro_menu('a') + activating("37", "10", "5")), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("Sensor id: 3\n"), std::string::npos) << run.output;
}

TEST(GyroMenuTest, MistypedNumbersKeepTheOldValues) {
    expect_run(kGyro, {default_sensor("abc", "0"),
                       {'D', "x1\nb\nc\n", default_prompts("0", "0", "0"), {}},
                       {'A',
                        "-\n+\nx\n",
                        activation_prompts("0", "50", "100") + activating("0", "50", "100"),
                        {"gyro_t::activate_vsensor(0, 50, 100) = -1"}}});
}

// Key 'A' with these answers; what it activates, and the status of that.
Step activation(std::string const& typed, std::string const& rate, std::string const& latency, int status) {
    return {'A',
            typed,
            activation_prompts("0", "50", "100") + activating("37", rate, latency),
            {"gyro_t::activate_vsensor(37, " + rate + ", " + latency + ") = " + std::to_string(status)}};
}

TEST(GyroMenuTest, FloatEndsWhereItCannotGoOn) {
    // What is left of the line answers the next prompt, and is no number there.
    for (auto const& [typed, rate, status] : {std::tuple("1.2.3", "1.2", 0),
                                              {"1e1.5", "10", 0},
                                              {"1e1-", "10", 0},
                                              {"1e5e3", "100000", -1},
                                              {"+.5E+1x", "5", 0}}) {
        SCOPED_TRACE(typed);
        expect_run(kGyro, {activation(std::string("37\n") + typed + "\n", rate, "100", status)});
    }
}

TEST(GyroMenuTest, FloatThatIsNoneKeepsTheOldValueAndItsLineIsDropped) {
    std::string const too_large(70, '1');
    std::string const too_long(1024, '0');
    for (std::string const typed : {"1e", ".e1", "-", "1e+", too_large.c_str(), too_long.c_str()}) {
        SCOPED_TRACE(typed);
        expect_run(kGyro, {activation("37\n" + typed + "\n10\n", "50", "10", 0)});
    }
    expect_run(kGyro, {activation("37\n" + std::string(70, '0') + "1\n10\n", "1", "10", 0)});
}

TEST(GyroMenuTest, SecondHoldKeyReleases) {
    expect_run(kGyro, {kHold, kRelease, kHold});
}

TEST(GyroMenuTest, StartingAgainLeavesTheHoldAsItIs) {
    expect_run(kGyro, {kHold, {'n', "", kGyro.start, kStartCalls}, kRelease});
}

TEST(GyroMenuTest, FailedBootAtTheStartIsNotReported) {
    Menu menu = kGyro;
    menu.start =
        "Sensor hub firmware\n"
        "  product id          0x89\n"
        "  image               none\n"
        "  ROM version         5166\n"
        "  kernel version      0\n"
        "  user version        0\n"
        "  boot status         0x90\n"
        "                      host interface ready: yes\n"
        "                      firmware verified: no\n"
        "                      firmware verify error: no\n"
        "                      idle: yes\n"
        "\n\n\n\n\n";
    menu.opening = {gyro_construction(),
                    "gyro_t::boot() = 7",
                    "gyro_t::install_callbacks() = -1",
                    "gyro_t::info_firmware() = 0",
                    "gyro_t::activate_vsensor(37, 5, 1) = -1",
                    "gyro_t::irq_callback_hold(false) = 0"};
    expect_run(menu, {}, with_scenario({"fault add gyro_t::boot status 7"}));
}

TEST(GyroMenuTest, BootWithoutTheFirmwareOrTheInterruptLineFails) {
    for (std::string const& path : {kFirmwareAp, std::string("/sys/class/gpio/gpio481/value")}) {
        SessionOptions options = stepped();
        options.without = {path};
        auto const run = run_console("gbxx", options);
        EXPECT_NE(run.output.find(gyro_menu('b') + "booting failed\n"), std::string::npos) << path;
    }
}

TEST(GyroMenuTest, FirmwareFollowsTheMainMenusChoice) {
    Menu const menu = with_old_firmware();
    support::expect_transcript(stepped(), "Ogxx",
                               kStart + main_menu('O') + main_menu('g') + menu.start + gyro_menu('x') + main_menu('x'),
                               calls_of_visit(menu, {}));
}

TEST(GyroMenuTest, FirmwareFollowsTheCommandWord) {
    Menu const menu = with_old_firmware();
    SessionOptions options = stepped();
    options.arguments = {"old_gyro_fw"};
    support::expect_transcript(options, "gxx",
                               kStart + "11\n" + main_menu('g') + menu.start + gyro_menu('x') + main_menu('x'),
                               calls_of_visit(menu, {}));
}

TEST(GyroMenuTest, NoOtherKeyChoosesTheFirmware) {
    Calls const calls = run_console("axAbxcxexExfxkxtxpx?gxx", stepped()).calls;
    EXPECT_EQ(std::count(calls.begin(), calls.end(), kGyro.opening.front()), 1);
}

TEST(GyroMenuTest, UploadTakesTheImageBesideTheConsole) {
    expect_run(kGyro,
               {{'f', "", "", {"gyro_t::upload_firmware(\"./Bosch.fw\") = 0"}},
                {'F', "", firmware_report("AB", true), {"gyro_t::info_firmware() = 0"}}},
               support::in_shell("cp " + kFirmwareAb + " Bosch.fw && \"$@\""));
}

TEST(GyroMenuTest, UploadOfWhatIsNoImageFails) {
    expect_run(kGyro, {{'f', "", "", {"gyro_t::upload_firmware(\"./Bosch.fw\") = -1"}}},
               support::in_shell("echo none > Bosch.fw && \"$@\""));
}

}  // namespace
