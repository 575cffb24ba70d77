// Transcripts of the image sensor menu.
#include "tests/menus/menu_run.h"
#include "tests/support/screens/imaging.h"

namespace {

using namespace menus;
using namespace screens;
using support::expect_transcript;
using support::run_console;

// The menu, where it opens this sensor.
Menu opening(Menu menu, std::string const& node) {
    menu.opening = {base_construction(node)};
    return menu;
}

support::SessionOptions without(std::vector<std::string> const& nodes) {
    support::SessionOptions options;
    options.without = nodes;
    return options;
}

std::vector<Step> const kWorking = {
    {'1', "", "Status of the Module: \tDone!\n", {"imx_t::get_status() = 0 [0]"}},
    {'2',
     "",
     "Revision of the Module: \tThe IMX296 driver: \n\nMajor \t1,\nMinor \t4,\nWeek \t6,\nYear \t22,\nNum \t1,\n"
     "Patch \t0,\n Done!\n",
     {"imx_t::get_revision() = 0 [{1, 4, 0, 1, 22, 6}]"}},
    {'3', "", "", {}},
    {'c', "", "sensor actual sensortype: 0\n", {"imx_t::get_sensortype() = 0 [0]"}},
    {'E', "33\n", "Enter a value for gain: sensor set  gain: 33\n", {"imx_t::set_gain(33) = 0"}},
    {'e', "", "sensor actual gain: 33\n", {"imx_t::get_gain() = 0 [33]"}},
    {'H', "1\n", "Enter a value for hscanmode: sensor set  hscanmode: 1\n", {"imx_t::set_hscanmode(1) = 0"}},
    {'h', "", "sensor actual hscanmode: 1\n", {"imx_t::get_hscanmode() = 0 [1]"}},
    {'i', "", "sensor actual 0\n", {"imx_t::get_framecount() = 0 [0]"}},
    {'I', "", "", {}},
    {'j', "", "set roi offset to: 20, 20\n", {"imx_t::set_roi_xyoffset(20, 20) = 0"}},
    {'J', "", "\t\tget roi offset to: 20, 20\n", {"imx_t::get_roi_xyoffset() = 0 [20, 20]"}},
};

TEST(ImageSensorMenuTest, EveryKeyDoesItsCommand) {
    expect_run(kImx296, kWorking);
}

TEST(ImageSensorMenuTest, SensorIsTheFittedOneWhateverTheKey) {
    expect_run(kImx567, kWorking, without({"/dev/imx567"}));
    expect_run(opening(kImx296, "/dev/imx567"),
               {{'h', "", "sensor actual hscanmode: 0\n", {"imx_t::get_hscanmode() = 0 [0]"}}},
               without({"/dev/imx296"}));
}

TEST(ImageSensorMenuTest, Imx296WinsWhereBothNodesAre) {
    expect_run(kImx567, {});
}

TEST(ImageSensorMenuTest, Imx567HasItsNameAndItsGrid) {
    expect_run(opening(kImx567, "/dev/imx567"),
               {
                   {'2',
                    "",
                    "Revision of the Module: \tThe IMX567 driver: \n\nMajor \t1,\nMinor \t1,\nWeek \t20,\nYear \t22,\n"
                    "Num \t3,\nPatch \t0,\n Done!\n",
                    {"imx_t::get_revision() = 0 [{1, 1, 0, 3, 22, 20}]"}},
                   {'j', "", "sensor error to set roi x,y offset\n", {"imx_t::set_roi_xyoffset(20, 20) = -1"}},
                   {'J', "", "\t\tget roi offset to: 0, 0\n", {"imx_t::get_roi_xyoffset() = 0 [0, 0]"}},
               },
               without({"/dev/imx296"}));
}

TEST(ImageSensorMenuTest, WithoutASensorTheMenuReturnsAtOnce) {
    for (char const key : {'e', 'E'}) {
        expect_transcript(without({"/dev/imx296", "/dev/imx567"}), std::string{key, 'x'}, visit(key, ""), {});
    }
}

std::vector<Step> failing_steps(std::string const& status) {
    std::string const failed = "() = " + status;
    return {
        {'c', "", "sensor error to get sensortype\n", {"imx_t::get_sensortype" + failed}},
        {'e', "", "sensor error to get gain\n", {"imx_t::get_gain" + failed}},
        {'E', "9\n", "Enter a value for gain: sensor error to set gain\n", {"imx_t::set_gain(9) = " + status}},
        {'h', "", "sensor error to get hscanmode\n", {"imx_t::get_hscanmode" + failed}},
        {'H',
         "2\n",
         "Enter a value for hscanmode: sensor error to set hscanmode\n",
         {"imx_t::set_hscanmode(2) = " + status}},
        {'i', "", "sensor actual 0\n", {"imx_t::get_framecount" + failed}},
        {'j', "", "sensor error to set roi x,y offset\n", {"imx_t::set_roi_xyoffset(20, 20) = " + status}},
        {'J', "", "\t\tsensor error to set roi x,y offset\n", {"imx_t::get_roi_xyoffset" + failed}},
    };
}

TEST(ImageSensorMenuTest, FailuresAreReportedButThatOfTheFrameCount) {
    std::vector<Step> steps = failing_steps("-1");
    steps.push_back({'1', "", "Status of the Module: \t", {"imx_t::get_status() = -1"}, kInformationError});
    steps.push_back({'2', "", "Revision of the Module: \t", {"imx_t::get_revision() = -1"}, kInformationError});
    expect_run(kImx296, steps, with_scenario({"fault add imx_t::*et_* status -1"}));
}

TEST(ImageSensorMenuTest, SensorThatCannotBeOpenedFailsEveryCommand) {
    std::vector<Step> steps = failing_steps("-1");
    steps.push_back({'1', "", "Status of the Module: \t", {"imx_t::get_status() = -1"}, kInformationError});
    steps.push_back({'2', "", "Revision of the Module: \t", {"imx_t::get_revision() = -1"}, kInformationError});
    expect_run(kImx296, steps, with_scenario({"fault add base_t::base_t status -1"}));
}

TEST(ImageSensorMenuTest, SensorThatIsTakenAwayFailsUntilItIsBack) {
    support::ConsoleSession session;
    session.type("ee");
    session.wait_for("sensor actual gain: 0\n");
    session.control("node remove /dev/imx296");
    session.type("e");
    session.wait_for("sensor error to get gain\n");
    session.control("node restore /dev/imx296");
    session.type("e");
    session.wait_for("sensor actual gain: 0\n");
    session.type("xx");
    EXPECT_EQ(session.wait_for_exit(), 0);
}

TEST(ImageSensorMenuTest, FramesAreThoseTheSensorTook) {
    support::SessionOptions options = with_scenario({"trigger 3 at 10", "1s trigger 1"});
    options.clock = "stepped";
    support::ConsoleSession session(options);
    session.type("ei");
    session.wait_for("sensor actual 1\n");
    session.control("step 1s");
    session.type("i");
    session.wait_for("sensor actual 4\n");
    session.type("xx");
    EXPECT_EQ(session.wait_for_exit(), 0);
}

TEST(ImageSensorMenuTest, MenuTellsWhetherThereWasASensor) {
    support::SessionOptions options;
    options.entry_point = "image_sensor";
    EXPECT_EQ(run_console("x", options).output, image_sensor_menu('x') + "returned 0\n");
    options.without = {"/dev/imx296", "/dev/imx567"};
    EXPECT_EQ(run_console("", options).output, "returned -1\n");
}

TEST(ImageSensorMenuTest, PositiveStatusIsAFailureButForTheInformation) {
    std::vector<Step> steps = failing_steps("3");
    steps.push_back({'1', "", "Status of the Module: \tDone!\n", {"imx_t::get_status() = 3"}});
    steps.push_back({'2',
                     "",
                     "Revision of the Module: \tThe IMX296 driver: \n\nMajor \t0,\nMinor \t0,\nWeek \t0,\nYear \t0,\n"
                     "Num \t0,\nPatch \t0,\n Done!\n",
                     {"imx_t::get_revision() = 3"}});
    expect_run(kImx296, steps, with_scenario({"fault add imx_t::*et_* status 3"}));
}

TEST(ImageSensorMenuTest, OtherKeysAreIgnored) {
    expect_run(kImx296, ignored("456789ABCDFGKXabdfgklmz?;I"));
}

TEST(ImageSensorMenuTest, RefusedValuesChangeNothing) {
    expect_run(kImx296,
               {
                   {'E', "481\n", "Enter a value for gain: sensor error to set gain\n", {"imx_t::set_gain(481) = -1"}},
                   {'e', "", "sensor actual gain: 0\n", {"imx_t::get_gain() = 0 [0]"}},
                   {'H',
                    "3\n",
                    "Enter a value for hscanmode: sensor error to set hscanmode\n",
                    {"imx_t::set_hscanmode(3) = -1"}},
                   {'h', "", "sensor actual hscanmode: 0\n", {"imx_t::get_hscanmode() = 0 [0]"}},
               });
}

TEST(ImageSensorMenuTest, CountsAndOffsetsAreUnsigned) {
    expect_run(
        kImx296,
        {
            {'i', "", "sensor actual 18446744073709551615\n", {"imx_t::get_framecount() = -1 [18446744073709551615]"}},
            {'J', "", "\t\tget roi offset to: 4294967295, 7\n", {"imx_t::get_roi_xyoffset() = 0 [4294967295, 7]"}},
        },
        with_scenario({"fault add imx_t::get_framecount status -1 value 18446744073709551615",
                       "fault add imx_t::get_roi_xyoffset value 4294967295,7"}));
}

TEST(ImageSensorMenuTest, ColourSensorIsVariantOne) {
    expect_run(kImx296, {{'c', "", "sensor actual sensortype: 1\n", {"imx_t::get_sensortype() = 0 [1]"}}},
               with_scenario({"set imx296.colour 1"}));
}

TEST(ImageSensorMenuTest, SettingsAreThoseOfTheCameraMenu) {
    auto const run = run_console("eE77\nxkexx");
    EXPECT_NE(run.output.find(camera_menu('e') + "sensor actual gain: 77\n"), std::string::npos) << run.output;
}

TEST(ImageSensorMenuTest, PaddedLinesHaveTheirLengths) {
    auto const output = run_console("exx").output;
    for (char const* key : {"h", "H", "i", "j", "J", "x"}) {
        auto const lines = lines_with(std::string("\t\t  ") + key + ":", output);
        ASSERT_EQ(lines.size(), 1U) << key;
        EXPECT_EQ(lines[0].size(), 27U) << lines[0];
    }
}

using ImageSensorClientTest = ClientTest;

TEST_F(ImageSensorClientTest, MenuReadsTheTerminalAndAnswersNothing) {
    client.send("e\nA\n");
    session.wait_for(kImx296.prompt());
    session.type("E50\neijJx\n");
    session.wait_for("sensor set  gain: 50\n");
    session.wait_for("\t\tget roi offset to: 20, 20\n");
    EXPECT_EQ(client.receive_reply(), "0;\\n");
    end();
}

}  // namespace
