// What the console prints and calls, in one sequence: the text before a call has left the console when it is made.
#include <ostream>
#include <string>
#include <vector>

#include "tests/menus/menu_run.h"

namespace {

using namespace menus;
using namespace screens;
using support::ConsoleSession;
using support::SessionOptions;

SessionOptions in_one_sequence(std::string const& entry_point = "") {
    SessionOptions options;
    options.one_sequence = true;
    options.clock = "stepped";
    options.entry_point = entry_point;
    return options;
}

// The pieces stand in the text, one behind the other.
void expect_in_order(std::vector<std::string> const& pieces, std::string const& text) {
    std::size_t at = 0;
    for (std::string const& piece : pieces) {
        std::size_t const found = text.find(piece, at);
        ASSERT_NE(found, std::string::npos) << "no \"" << piece << "\" in \"" << text.substr(at) << "\"";
        at = found + piece.size();
    }
}

struct MenuOrder {
    char const* name;
    std::string typed;                // from the console's start on
    std::vector<std::string> pieces;  // of the sequence
    char const* entry_point = "";
};

// A visit of the menu with these keys.
MenuOrder in(Menu const& menu, std::string const& keys, std::vector<std::string> const& pieces) {
    return {menu.name, menu.entry_keys() + keys + menu.exit_keys(), pieces};
}

void PrintTo(MenuOrder const& order, std::ostream* out) {
    *out << order.name;
}

class OutputOrderTest : public testing::TestWithParam<MenuOrder> {};

TEST_P(OutputOrderTest, TextLeavesBeforeTheNextCall) {
    auto const run = support::run_console(GetParam().typed, in_one_sequence(GetParam().entry_point));
    expect_in_order(GetParam().pieces, support::with_marked_calls(run.output));
    EXPECT_EQ(run.status, 0);
}

std::string const kRtuOpened = "<rtu_t::rtu_t(\"/dev/r47-rtu-driver\", 2)>";
std::string const kSwitchTrigger = "<rtu_t::set_trigger_mode(true) = 0><rtu_t::set_aquisition_fps(25) = 0>";

MenuOrder const kVisits[] = {
    in(kSystem, "hf3\n",
       {main_menu('l') + "<system_t::system_t(\"/dev/r47-rtu-driver\", 2)>" + kSystemStart,
        system_menu('h') + "<system_t::trigger_heartbeat() = 0>",
        system_menu('f') + "Enter device state: <system_t::set_device_status(3) = 0>", system_menu('x')}),
    in(kDio, "ph1\n1\n",
       {main_menu('a') + kRtuOpened + kDioStart,
        dio_menu('p') + "<rtu_t::get_all_pin_values() = 0 [000000]>All DIO status: 000000\n",
        dio_menu('h') + "Value for pin :1<rtu_t::set_pin_value(1, true) = 0>"}),
    in(kRtu, "Ea1\nt25\ne5000\n",
       {kRtuStart, rtu_menu('E') + "<rtu_t::get_exposure() = 0 [10000]>sensor actual exposure: 10000\n",
        rtu_menu('a') + "Enter a value for imager type: 1- imx296, 2- ix567 \n<rtu_t::set_imager_type(1) = 0>",
        rtu_menu('t') + "Enter a value for fps: " + kSwitchTrigger + "sensor set  fps: 25\n",
        rtu_menu('e') + "Enter a value for exposure: <rtu_t::set_exposure(5000) = 0>sensor set  exposure: 5000\n"}),
    in(kCamera, "mu25\nZ",
       {main_menu('k') + "<camera_t::determine_imxtype() = 1>", camera_menu('m') + "<camera_t::single_shot() = 0>",
        camera_menu('u') + "Enter a value for fps: <camera_t::set_aquisition_framerate(25) = 0>sensor set  fps: 25\n",
        camera_menu('Z') + "RESET MISSED TRIGGER COUNTER: \n<camera_t::reset_missed_trigger_counter() = 0>",
        camera_menu('x') + "<camera_t::~camera_t()>"}),
    in(kImx296, "cE20\n",
       {main_menu('e') + "<base_t::base_t(\"/dev/imx296\", 2)>",
        image_sensor_menu('c') + "<imx_t::get_sensortype() = 0 [0]>sensor actual sensortype: 0\n",
        image_sensor_menu('E') + "Enter a value for gain: <imx_t::set_gain(20) = 0>sensor set  gain: 20\n",
        image_sensor_menu('x') + "<base_t::~base_t()>"}),
    in(kIllumination, "is50\n",
       {main_menu('c') + "<base_t::base_t(\"/dev/r47-illumination-driver\", 2)>",
        illumination_menu('i') + "<illumination_t::set_write_protection(false) = 0>",
        illumination_menu('s') + "<illumination_t::get_brightness_limits_red() = 0 [0, 100, 1]>" +
            "Enter a value in range: 0 - 100\nNo valid inptut50\n<illumination_t::set_brightness_red(50) = 0>",
        illumination_menu('x') + "<base_t::~base_t()>"}),
    {"IlluminationSegments",
     "16\n",
     {"<illumination_t::get_segments_limits() = 0 [0, 15, 1]>",
      "Enter a value in range: 0 - 15(each bit is a segment)\nNo valid input 16\n"
      "<illumination_t::set_segments(16) = -1>Communication Failure\n"},
     "illumination_set_segments"},
    in(kAutofocus, "bA5000\n",
       {main_menu('f') + "<base_t::base_t(\"/dev/r47-autofocus-driver\", 2)>",
        autofocus_menu('b') + "<autofocus_t::reset() = 0>",
        autofocus_menu('A') + "AF new pos: \n<autofocus_t::set_position(5000) = -1>",
        autofocus_menu('x') + "<base_t::~base_t()>"}),
    in(kGyro, "aB",
       {main_menu('g') + "<gyro_t::gyro_t(",
        gyro_menu('a') + activating("0", "50", "100") + "<gyro_t::activate_vsensor(0, 50, 100) = -1>",
        gyro_menu('B') + "<gyro_t::install_callbacks() = 0>", gyro_menu('x') + "<gyro_t::~gyro_t()>"}),
    in(kAlarm, "a15\nt",
       {main_menu('G') + "int test_gyro_alarm()\n" + kRtuOpened,
        alarm_menu('a') + "Please enter angle<gyro_alarm_t::set_angle_limit(15) = 0>",
        alarm_menu('t') + "<gyro_t::irq_callback_hold(true) = 0>",
        alarm_menu('x') + "<gyro_alarm_t::~gyro_alarm_t()>"}),
    in(kDelegate, "t",
       {main_menu('h') + "<gyro_t::gyro_t(", delegate_menu('t') + "<gyro_t::irq_callback_hold(true) = 0>",
        delegate_menu('x') + "<gyro_delegate_t::~gyro_delegate_t()>"}),
    in(kDelegateAndAlarm, "t",
       {main_menu('H') + "int test_gyro_delegate_and_alarm()\n" + kRtuOpened,
        delegate_menu('t') + "<gyro_t::irq_callback_hold(true) = 0>",
        delegate_menu('x') + "<gyro_delegate_t::~gyro_delegate_t()>"}),
    in(kButton, "r",
       {main_menu('t') + "<button_t::button_t(",
        button_menu('r') + "Starting read: 0\n<button_t::irq_read() = 0 [false]>Irq status: 0\n",
        button_menu('x') + "<rtu_t::~rtu_t()>"}),
    in(kTof, "a64\ne80\n4\n700\nf",
       {main_menu('p') + "<tof_t::tof_t(\"/dev/r47-tof-driver\", 2)>",
        tof_menu('a') + "Enter resolution: <tof_t::get_resolution() = 0 [16]>Old resolution : 16\n" +
            "<tof_t::set_resolution(64) = 0><tof_t::get_resolution() = 0 [64]>New resolution : 64\n",
        tof_menu('e') + "Enter Reflectance percent: Old Reflectance percent : ",
        "\n<tof_t::set_calibration_reflectance_percent(80) = 0>New Reflectance percent : 80\n",
        "\n<tof_t::set_calibration_nb_samples(4) = 0>New Number Of Samples : 4\n",
        "\n<tof_t::set_calibration_distance(700) = 0>New Object Distance : 700\n",
        tof_menu('f') + "<tof_t::xtalk_calibration() = ", tof_menu('x') + unknown_command('x') + "<tof_t::~tof_t()>"}),
    {"LegacyAlarm",
     "tx",
     {"int test_alarm_old()\n" + kRtuOpened, legacy_alarm_menu('t') + "<gyro_t::irq_callback_hold(true) = 0>",
      legacy_alarm_menu('x') + "<button_t::~button_t()>"},
     "alarm_old_waits"},
};

INSTANTIATE_TEST_SUITE_P(Menus, OutputOrderTest, testing::ValuesIn(kVisits),
                         [](auto const& menu) { return std::string(menu.param.name); });

TEST(CallbackOrderTest, TraceOfAPressLeavesBeforeTheLightBarIsColoured) {
    ConsoleSession session(in_one_sequence());
    session.type("t");
    session.wait_for(kButtonMenu);
    session.control("press 2s");
    session.control("step 2s");
    session.type("xx");
    EXPECT_EQ(session.wait_for_exit(), 0);
    expect_in_order({"<callback button_t::press_records(1)>###   void testButtonp2() called \n"
                     "<rtu_t::set_lightbar_col({100, 0, 255, 255}) = 0>"},
                    support::with_marked_calls(session.output()));
}

TEST(CallbackOrderTest, TraceOfASampleLeavesBeforeTheDeviceStateIsSet) {
    ConsoleSession session(in_one_sequence("alarm_old_waits"));
    session.wait_for(kLegacyAlarmMenu);
    session.control("tilt 0 20 0");
    session.control("step 2s");
    session.type("x");
    EXPECT_EQ(session.wait_for_exit(), 0);
    expect_in_order({"<callback gyro_t::callback_records(0, 37)>" + kSampleTrace, "<rtu_t::set_device_status(5) = 0>"},
                    support::with_marked_calls(session.output()));
}

// Standard error in the same sequence.
TEST(ErrorOrderTest, ReportOfAFailureFollowsWhatWasPrinted) {
    SessionOptions options = support::in_shell("exec \"$@\" 2>&1");
    options.scenario = {"fault add rtu_t::get_status status -1"};
    EXPECT_EQ(support::run_console("b1xx", options).output,
              visit('b', kRtuStart + rtu_menu('1') + "Status of the Module: \t" + kInformationError + rtu_menu('x')));
}

TEST(ErrorOrderTest, ShellsThatPrepareTheLinesSpeakBehindTheirAnnouncement) {
    auto const run = support::run_console("x", support::in_shell("rm /sys/class/gpio/export; "
                                                                 "mkdir /sys/class/gpio/export; exec \"$@\" 2>&1"));
    expect_in_order({kStart, "/sys/class/gpio/export", main_menu('x')}, run.output);
}

}  // namespace
