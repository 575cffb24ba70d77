// Transcripts of the camera menu.
#include <algorithm>

#include "tests/menus/menu_run.h"
#include "tests/support/screens/imaging.h"

namespace {

using namespace menus;
using namespace screens;
using support::Calls;
using support::expect_transcript;
using support::run_console;

// The menu, where the sensor is of this type.
Menu camera_of(std::string const& type) {
    Menu menu = kCamera;
    menu.opening = {"camera_t::determine_imxtype() = " + type,
                    "camera_t::camera_t(" + type + ", null, \"/dev/r47-rtu-driver\", 2)"};
    return menu;
}

// The time stands, so that the unit's own triggers take no frames.
support::SessionOptions stepped() {
    support::SessionOptions options;
    options.clock = "stepped";
    return options;
}

std::string const kScanModePrompt = "Enter a value for hscanmode: 0-NORMAL_ROI, 1-SUBSAMPLDING, 2-BINNING:";
std::string const kOffsetPrompts = "Enter a value for x_offset:Enter a value for y_offset:";

TEST(CameraTest, EveryKeyDoesItsCommand) {
    expect_run(
        kCamera,
        {
            {'m', "", "", {"camera_t::single_shot() = 0"}},
            {'W', "", "sensor get current trigger: MANUAL\n", {"camera_t::get_trigger_mode() = 0 [0]"}},
            {'t', "", "", {"camera_t::set_trigger_mode(1) = 0"}},
            {'W', "", "sensor get current trigger: CONTINUOUS\n", {"camera_t::get_trigger_mode() = 0 [1]"}},
            {'T', "", "", {"camera_t::set_trigger_mode(0) = 0"}},
            {'u',
             "60\n",
             "Enter a value for fps: sensor set  fps: 60\n",
             {"camera_t::set_aquisition_framerate(60) = 0"}},
            {'U', "", "sensor get  fps: 60\n", {"camera_t::get_aquisition_framerate() = 0 [60]"}},
            {'L',
             "",
             "sensor get  fps limits:\n  min:1\n  max:60\n  step:1\n",
             {"camera_t::get_aquisition_framerate_limits() = 0 [1, 60, 1]"}},
            {'v', "", "", {"camera_t::start_acquisition() = 0"}},
            {'V', "", "", {"camera_t::stop_acquisition() = 0"}},
            {'E', "480\n", "Enter a value for gain: sensor set  gain: 480\n", {"camera_t::set_gain(480) = 0"}},
            {'e', "", "sensor actual gain: 480\n", {"camera_t::get_gain() = 0 [480]"}},
            {'F', "30\n", "Enter a value for exposure: sensor set  exposure: 30\n", {"camera_t::set_exposure(30) = 0"}},
            {'f', "", "sensor actual exposure: 30\n", {"camera_t::get_exposure() = 0 [30]"}},
            {'w',
             "",
             "sensor get  exposure limits:\n  min:30\n  max:15500000\n  step:1\n",
             {"camera_t::get_exposure_limits() = 0 [30, 15500000, 1]"}},
            {'i', "", "sensor actual 1\n", {"camera_t::get_framecount() = 0 [1]"}},
            {'j',
             "8\n12\n",
             kOffsetPrompts + "\t\t set roi offset x,y : 8,12\n",
             {"camera_t::set_roi_xyoffset(8, 12) = 0"}},
            {'J', "", "\t\tget roi offset x,y : 8,12\n", {"camera_t::get_roi_xyoffset() = 0 [8, 12]"}},
            {'k', "", "\t\t imager 296 \n", {"camera_t::get_imxtype() = 1"}},
            {'S', "2\n", kScanModePrompt, {"camera_t::set_hscanmode(2) = 0"}},
            {'s', "", "Scanmode = 2\n", {"camera_t::get_hscanmode() = 0 [2]"}},
            {'z',
             "",
             "READ MISSED TRIGGER COUNTER: 0 FRAME ID: 0\n",
             {"camera_t::get_missed_trigger_counter() = 0 [0, 0]"}},
            {'Z', "", "RESET MISSED TRIGGER COUNTER: \n", {"camera_t::reset_missed_trigger_counter() = 0"}},
        },
        stepped());
}

// Every command but 'k', which cannot fail, after a failure of the library with `status`.
std::vector<Step> failing_steps(std::string const& status) {
    std::string const failed = "() = " + status;
    return {
        {'m', "", "", {"camera_t::single_shot" + failed}},
        {'t', "", "", {"camera_t::set_trigger_mode(1) = " + status}},
        {'T', "", "", {"camera_t::set_trigger_mode(0) = " + status}},
        {'W', "", "sensor error to get current trigger\n", {"camera_t::get_trigger_mode" + failed}},
        {'u',
         "30\n",
         "Enter a value for fps: sensor error to set fps\n",
         {"camera_t::set_aquisition_framerate(30) = " + status}},
        {'U', "", "sensor error to get fps\n", {"camera_t::get_aquisition_framerate" + failed}},
        {'L', "", "sensor error to get fps limits\n", {"camera_t::get_aquisition_framerate_limits" + failed}},
        {'v', "", "", {"camera_t::start_acquisition" + failed}},
        {'V', "", "", {"camera_t::stop_acquisition" + failed}},
        {'e', "", "sensor error to get gain\n", {"camera_t::get_gain" + failed}},
        {'E', "1\n", "Enter a value for gain: sensor error to set gain\n", {"camera_t::set_gain(1) = " + status}},
        {'f', "", "sensor error to get exposure\n", {"camera_t::get_exposure" + failed}},
        {'F',
         "100\n",
         "Enter a value for exposure: sensor error to set exposure\n",
         {"camera_t::set_exposure(100) = " + status}},
        {'w', "", "sensor error to get exposure limits\n", {"camera_t::get_exposure_limits" + failed}},
        {'i', "", "sensor actual 0\n", {"camera_t::get_framecount" + failed}},
        {'j',
         "4\n8\n",
         kOffsetPrompts + "\t\t sensor error to set roi x,y offset\n",
         {"camera_t::set_roi_xyoffset(4, 8) = " + status}},
        {'J', "", "\t\tsensor error to set roi x,y offset\n", {"camera_t::get_roi_xyoffset" + failed}},
        {'s', "", "Scanmode = 0\n", {"camera_t::get_hscanmode" + failed}},
        {'S', "1\n", kScanModePrompt, {"camera_t::set_hscanmode(1) = " + status}},
        {'z', "", "READ MISSED TRIGGER COUNTER: 0 FRAME ID: 0\n", {"camera_t::get_missed_trigger_counter" + failed}},
        {'Z', "", "RESET MISSED TRIGGER COUNTER: \n", {"camera_t::reset_missed_trigger_counter" + failed}},
    };
}

TEST(CameraTest, FailuresAreReportedOnlyWhereTheCommandTells) {
    for (std::string const status : {"-1", "3"}) {
        SCOPED_TRACE(status);
        expect_run(kCamera, failing_steps(status),
                   with_scenario({"fault add camera_t::*et_* status " + status,
                                  "fault add camera_t::single_shot status " + status,
                                  "fault add camera_t::*_acquisition status " + status}));
    }
}

TEST(CameraTest, WithoutASensorEveryOtherCommandFails) {
    support::SessionOptions options;
    options.without = {"/dev/imx296", "/dev/imx567"};
    std::vector<Step> steps = failing_steps("-1");
    steps.push_back({'k', "", "\t\t no imager  \n", {"camera_t::get_imxtype() = 0"}});
    expect_run(camera_of("0"), steps, options);
}

TEST(CameraTest, WithoutTheRealTimeUnitEveryOtherCommandFails) {
    support::SessionOptions options;
    options.without = {"/dev/r47-rtu-driver"};
    std::vector<Step> steps = failing_steps("-1");
    steps.push_back({'k', "", "\t\t imager 296 \n", {"camera_t::get_imxtype() = 1"}});
    expect_run(kCamera, steps, options);
}

TEST(CameraTest, CameraThatCannotBeOpenedFailsEveryOtherCommand) {
    std::vector<Step> steps = failing_steps("-1");
    steps.push_back({'k', "", "\t\t imager 296 \n", {"camera_t::get_imxtype() = 1"}});
    expect_run(kCamera, steps, with_scenario({"fault add camera_t::camera_t status -1"}));
}

TEST(CameraTest, SensorIsTheOneThatIsFitted) {
    support::SessionOptions options;
    options.without = {"/dev/imx296"};
    expect_run(camera_of("2"),
               {
                   {'k', "", "\t\t imager 567 \n", {"camera_t::get_imxtype() = 2"}},
                   {'L',
                    "",
                    "sensor get  fps limits:\n  min:1\n  max:96\n  step:1\n",
                    {"camera_t::get_aquisition_framerate_limits() = 0 [1, 96, 1]"}},
                   {'w',
                    "",
                    "sensor get  exposure limits:\n  min:1\n  max:100000000\n  step:1\n",
                    {"camera_t::get_exposure_limits() = 0 [1, 100000000, 1]"}},
               },
               options);
}

TEST(CameraTest, UnknownSensorIsNoImager) {
    expect_run(camera_of("7"), {{'k', "", "\t\t no imager  \n", {"camera_t::get_imxtype() = 7"}}},
               with_scenario({"fault add camera_t::determine_imxtype value 7"}));
}

TEST(CameraTest, OtherKeysAreIgnored) {
    expect_run(kCamera, ignored("0123456789abcdghlnopqrABCDGHIKMNOPQRXyY?;-"));
}

TEST(CameraTest, CameraIsOpenedAnewOnEachEntry) {
    expect_transcript({}, "kxkxx",
                      kStart + main_menu('k') + camera_menu('x') + main_menu('k') + camera_menu('x') + main_menu('x'),
                      calls_of_visit(kCamera, {}) + calls_of_visit(kCamera, {}));
}

TEST(CameraTest, ValuesOutOfTheSensorsLimitsChangeNothing) {
    expect_run(
        kCamera,
        {
            {'u',
             "61\n",
             "Enter a value for fps: sensor error to set fps\n",
             {"camera_t::set_aquisition_framerate(61) = -1"}},
            {'U', "", "sensor get  fps: 10\n", {"camera_t::get_aquisition_framerate() = 0 [10]"}},
            {'E', "481\n", "Enter a value for gain: sensor error to set gain\n", {"camera_t::set_gain(481) = -1"}},
            {'e', "", "sensor actual gain: 0\n", {"camera_t::get_gain() = 0 [0]"}},
            {'F',
             "29\n",
             "Enter a value for exposure: sensor error to set exposure\n",
             {"camera_t::set_exposure(29) = -1"}},
            {'f', "", "sensor actual exposure: 10000\n", {"camera_t::get_exposure() = 0 [10000]"}},
            {'j',
             "21\n-4\n",
             kOffsetPrompts + "\t\t sensor error to set roi x,y offset\n",
             {"camera_t::set_roi_xyoffset(21, 4294967292) = -1"}},
            {'J', "", "\t\tget roi offset x,y : 0,0\n", {"camera_t::get_roi_xyoffset() = 0 [0, 0]"}},
            {'S', "3\n", kScanModePrompt, {"camera_t::set_hscanmode(3) = -1"}},
            {'s', "", "Scanmode = 0\n", {"camera_t::get_hscanmode() = 0 [0]"}},
        });
}

TEST(CameraTest, SettingsGoToTheLimitsOfTheSensor) {
    struct Sensor {
        std::string type;
        std::vector<std::string> missing;
        std::vector<std::pair<char, long>> accepted;
        std::vector<std::pair<char, long>> refused;
    } const sensors[] = {
        {"1",
         {},
         {{'u', 1}, {'u', 60}, {'E', 0}, {'E', 480}, {'F', 30}, {'F', 15'500'000}},
         {{'u', 0}, {'u', 61}, {'E', 481}, {'F', 29}, {'F', 15'500'001}}},
        {"2",
         {"/dev/imx296"},
         {{'u', 1}, {'u', 96}, {'E', 0}, {'E', 480}, {'F', 1}, {'F', 100'000'000}},
         {{'u', 0}, {'u', 97}, {'E', 481}, {'F', 0}, {'F', 100'000'001}}},
    };
    auto const step = [](std::pair<char, long> const& setting, int status) {
        auto const [key, value] = setting;
        std::string const name = key == 'u' ? "fps" : key == 'E' ? "gain" : "exposure";
        std::string const operation = key == 'u' ? "aquisition_framerate" : name;
        std::string const number = std::to_string(value);
        return Step{key,
                    number + "\n",
                    "Enter a value for " + name + ": " +
                        (status == 0 ? "sensor set  " + name + ": " + number : "sensor error to set " + name) + "\n",
                    {"camera_t::set_" + operation + "(" + number + ") = " + std::to_string(status)}};
    };
    for (Sensor const& sensor : sensors) {
        SCOPED_TRACE(sensor.type);
        std::vector<Step> steps;
        for (auto const& setting : sensor.accepted) {
            steps.push_back(step(setting, 0));
        }
        for (auto const& setting : sensor.refused) {
            steps.push_back(step(setting, -1));
        }
        support::SessionOptions options;
        options.without = sensor.missing;
        expect_run(camera_of(sensor.type), steps, options);
    }
}

TEST(CameraTest, OffsetsOfTheImx567LieOnItsOwnGrid) {
    support::SessionOptions options;
    options.without = {"/dev/imx296"};
    expect_run(camera_of("2"),
               {
                   {'j',
                    "20\n20\n",
                    kOffsetPrompts + "\t\t sensor error to set roi x,y offset\n",
                    {"camera_t::set_roi_xyoffset(20, 20) = -1"}},
                   {'j',
                    "24\n16\n",
                    kOffsetPrompts + "\t\t set roi offset x,y : 24,16\n",
                    {"camera_t::set_roi_xyoffset(24, 16) = 0"}},
               },
               options);
}

TEST(CameraTest, OffsetThatIsNoNumberIsTwenty) {
    expect_run(kCamera, {
                            {'j',
                             "left\n8\n",
                             kOffsetPrompts + "\t\t set roi offset x,y : 20,8\n",
                             {"camera_t::set_roi_xyoffset(20, 8) = 0"}},
                            {'j',
                             "4\nup\n",
                             kOffsetPrompts + "\t\t set roi offset x,y : 4,20\n",
                             {"camera_t::set_roi_xyoffset(4, 20) = 0"}},
                            {'j',
                             "?\n?\n",
                             kOffsetPrompts + "\t\t set roi offset x,y : 20,20\n",
                             {"camera_t::set_roi_xyoffset(20, 20) = 0"}},
                        });
}

TEST(CameraTest, NegativeOffsetsAreAcceptedAndPrintedAsTheyAreTyped) {
    expect_run(kCamera,
               {{'j',
                 "-1\n-2\n",
                 kOffsetPrompts + "\t\t set roi offset x,y : -1,-2\n",
                 {"camera_t::set_roi_xyoffset(4294967295, 4294967294) = 0"}}},
               with_scenario({"fault add camera_t::set_roi_xyoffset status 0"}));
}

TEST(CameraTest, OffsetsThatAreReadArePrintedUnsigned) {
    expect_run(kCamera,
               {{'J',
                 "",
                 "\t\tget roi offset x,y : 4294967295,4294967294\n",
                 {"camera_t::get_roi_xyoffset() = 0 [4294967295, 4294967294]"}}},
               with_scenario({"fault add camera_t::get_roi_xyoffset value 4294967295,4294967294"}));
}

TEST(CameraTest, NegativeRateIsPassedAndPrintedAsALargeNumber) {
    expect_run(kCamera,
               {{'u',
                 "-1\n",
                 "Enter a value for fps: sensor set  fps: 4294967295\n",
                 {"camera_t::set_aquisition_framerate(4294967295) = 0"}}},
               with_scenario({"fault add camera_t::set_aquisition_framerate status 0"}));
}

TEST(CameraTest, RateThatIsNoNumberIsTheLastOne) {
    expect_run(kCamera, {
                            {'u',
                             "fast\n",
                             "Enter a value for fps: sensor error to set fps\n",
                             {"camera_t::set_aquisition_framerate(0) = -1"}},
                            {'u',
                             "30\n",
                             "Enter a value for fps: sensor set  fps: 30\n",
                             {"camera_t::set_aquisition_framerate(30) = 0"}},
                            {'u',
                             "fast\n",
                             "Enter a value for fps: sensor set  fps: 30\n",
                             {"camera_t::set_aquisition_framerate(30) = 0"}},
                        });
}

TEST(CameraTest, ScanModeThatIsNoNumberIsNormal) {
    expect_run(kCamera, {
                            {'S', "2\n", kScanModePrompt, {"camera_t::set_hscanmode(2) = 0"}},
                            {'S', "binning\n", kScanModePrompt, {"camera_t::set_hscanmode(0) = 0"}},
                            {'S', "-3\n", kScanModePrompt, {"camera_t::set_hscanmode(-3) = -1"}},
                        });
}

TEST(CameraTest, AnswersAreShownAsTheLibraryGivesThem) {
    expect_run(
        kCamera,
        {
            {'W', "", "sensor get current trigger: MANUAL\n", {"camera_t::get_trigger_mode() = 0 [2]"}},
            {'s', "", "Scanmode = 4294967295\n", {"camera_t::get_hscanmode() = -1 [-1]"}},
            {'i',
             "",
             "sensor actual 18446744073709551615\n",
             {"camera_t::get_framecount() = -1 [18446744073709551615]"}},
            {'z',
             "",
             "READ MISSED TRIGGER COUNTER: -5 FRAME ID: 18446744073709551615\n",
             {"camera_t::get_missed_trigger_counter() = -1 [18446744073709551615, -5]"}},
        },
        with_scenario({"fault add camera_t::get_trigger_mode value 2",
                       "fault add camera_t::get_hscanmode status -1 value -1",
                       "fault add camera_t::get_framecount status -1 value 18446744073709551615",
                       "fault add camera_t::get_missed_trigger_counter status -1 value 18446744073709551615,-5"}));
}

TEST(CameraTest, PaddedLinesHaveTheirLengths) {
    auto const output = run_console("kxx").output;
    auto const expect_length = [&](std::size_t length, std::initializer_list<char const*> keys) {
        for (char const* key : keys) {
            auto const lines = lines_with(std::string("\t\t  ") + key + ":", output);
            ASSERT_EQ(lines.size(), 1U) << key;
            EXPECT_EQ(lines[0].size(), length) << lines[0];
        }
    };
    expect_length(41, {"m", "t", "T", "W", "u", "U", "L"});
    expect_length(73, {"e", "E", "f", "F", "i"});
    expect_length(53, {"J", "k", "s", "S"});
}

// The camera in time: the clock stands but for the steps.
class CameraScenarioTest : public testing::Test {
protected:
    // Types the keys of the camera menu and waits until the last one has been carried out.
    void keys(std::string const& typed) {
        session.type(typed);
        session.wait_for(std::string("\t\tYour option = ") + typed.back() + "\n");
        session.wait_for("Please enter your option: ");
    }

    void enter(std::string const& before = "") {
        session.type(before + "k");
        session.wait_for("Camera Control\n");
        session.wait_for("Please enter your option: ");
    }

    void leave() {
        session.type("xx");
        EXPECT_EQ(session.wait_for_exit(), 0);
    }

    support::ConsoleSession session{stepped()};
};

TEST_F(CameraScenarioTest, TenFramesASecondForThreeSecondsAreThirtyFrames) {
    enter();
    keys("u10\nt");
    session.control("step 3s");
    session.type("iz");
    session.wait_for("\t\tYour option = i\nsensor actual 30\n");
    session.wait_for("READ MISSED TRIGGER COUNTER: 0 FRAME ID: 0\n");
    leave();
}

TEST_F(CameraScenarioTest, ManualTriggerStopsTheFrames) {
    enter();
    keys("u10\nt");
    session.control("step 1s");
    keys("T");
    session.control("step 5s");
    session.type("i");
    session.wait_for("sensor actual 10\n");
    leave();
}

TEST_F(CameraScenarioTest, ProhibitedTimeMissesTriggersUntilTheCounterIsReset) {
    enter("bb150000\nx");
    keys("u10\nt");
    session.control("step 3s");
    session.type("izZz");
    session.wait_for("sensor actual 15\n");
    session.wait_for("READ MISSED TRIGGER COUNTER: 15 FRAME ID: 15\n");
    session.wait_for("RESET MISSED TRIGGER COUNTER: \n");
    session.wait_for("READ MISSED TRIGGER COUNTER: 0 FRAME ID: 0\n");
    leave();
}

TEST_F(CameraScenarioTest, ExposureLongerThanThePeriodMissesTriggers) {
    enter();
    keys("F250000\nu10\nt");
    session.control("step 3s");
    session.type("iz");
    session.wait_for("sensor actual 10\n");
    session.wait_for("READ MISSED TRIGGER COUNTER: 20 FRAME ID: 10\n");
    leave();
}

TEST_F(CameraScenarioTest, TriggersFromOutsideAreCounted) {
    enter();
    session.control("trigger 5 at 10");
    session.control("step 1s");
    session.control("trigger 3");
    session.type("iz");
    session.wait_for("sensor actual 6\n");
    session.wait_for("READ MISSED TRIGGER COUNTER: 2 FRAME ID: 6\n");
    leave();
}

TEST_F(CameraScenarioTest, FramesTriggeredByTheRealTimeUnitMenuAreCounted) {
    session.type("bt20\n");
    session.wait_for("sensor set  fps: 20\n");
    session.control("step 2s");
    session.type("x");
    enter();
    session.type("iW");
    session.wait_for("sensor actual 40\n");
    session.wait_for("sensor get current trigger: CONTINUOUS\n");
    leave();
}

TEST_F(CameraScenarioTest, FittingAnotherSensorTakesEffectOnTheNextEntry) {
    enter();
    session.control("fit imx567");
    session.type("e");
    session.wait_for("sensor error to get gain\n");
    session.type("xkk");
    session.wait_for("\t\t imager 567 \n");
    session.control("fit none");
    session.type("xkk");
    session.wait_for("\t\t no imager  \n");
    leave();
}

// A client: its options and most numbers come from it, gain and exposure from the terminal.
class CameraClientTest : public ClientTest {
protected:
    CameraClientTest() {
        client.send("k\n");
        session.wait_for("Camera Control\n");
    }
};

TEST_F(CameraClientTest, NumbersAreEchoedAndOnlyOffsetAndScanModeAnswer) {
    client.send("u\n25\nj\n8\nabc\nS\n2\ns\nj\n3\n3\n");
    EXPECT_EQ(client.receive(9), "258abc233");
    for (char const key : std::string("WULwiJkzZmTvVef")) {
        client.send(std::string{key, '\n'});
        session.wait_for(std::string("\t\tYour option = ") + key + "\n");
    }
    client.send("x\n");
    expect_waiting("0;0;-1;");
    Calls expected = kCamera.opening;
    for (char const* call : {
             "set_aquisition_framerate(25) = 0",
             "set_roi_xyoffset(8, 20) = 0",
             "set_hscanmode(2) = 0",
             "get_hscanmode() = 0 [2]",
             "set_roi_xyoffset(3, 3) = -1",
             "get_trigger_mode() = 0 [0]",
             "get_aquisition_framerate() = 0 [25]",
             "get_aquisition_framerate_limits() = 0 [1, 60, 1]",
             "get_exposure_limits() = 0 [30, 15500000, 1]",
             "get_framecount() = 0 [0]",
             "get_roi_xyoffset() = 0 [8, 20]",
             "get_imxtype() = 1",
             "get_missed_trigger_counter() = 0 [0, 0]",
             "reset_missed_trigger_counter() = 0",
             "single_shot() = 0",
             "set_trigger_mode(0) = 0",
             "start_acquisition() = 0",
             "stop_acquisition() = 0",
             "get_gain() = 0 [0]",
             "get_exposure() = 0 [10000]",
             "~camera_t()",
         }) {
        expected.push_back(std::string("camera_t::") + call);
    }
    EXPECT_EQ(end(), expected);
}

TEST_F(CameraClientTest, LinesThatAreNoNumbersKeepWhatWasThere) {
    client.send("u\n25\nu\nfast\nj\nleft\n8\nS\nbinning\nx\n");
    std::string const echoed = "25fastleft8binning";
    EXPECT_EQ(client.receive(echoed.size()), echoed);
    expect_waiting("0;");
    Calls expected = kCamera.opening;
    for (char const* call : {"set_aquisition_framerate(25) = 0", "set_aquisition_framerate(25) = 0",
                             "set_roi_xyoffset(20, 8) = 0", "set_hscanmode(0) = 0", "~camera_t()"}) {
        expected.push_back(std::string("camera_t::") + call);
    }
    EXPECT_EQ(end(), expected);
}

TEST_F(CameraClientTest, RefusedScanModeIsNotReported) {
    client.send("S\n3\nx\n");
    EXPECT_EQ(client.receive(1), "3");
    expect_waiting("");
    EXPECT_EQ(end(), calls_of_visit(kCamera, {"camera_t::set_hscanmode(3) = -1"}));
    EXPECT_NE(session.output().find(kScanModePrompt + "ReadLine: 3\n" + kCamera.prompt()), std::string::npos);
}

TEST_F(CameraClientTest, StatusOfAFailedScanModeReadWaits) {
    session.control("fault add camera_t::get_hscanmode status -4");
    client.send("s\nx\n");
    expect_waiting("-4;");
    end();
}

TEST_F(CameraClientTest, GainAndExposureComeFromTheTerminal) {
    client.send("E\n");
    session.wait_for("Enter a value for gain: ");
    session.type("120\n");
    session.wait_for("sensor set  gain: 120\n");
    client.send("F\n");
    session.wait_for("Enter a value for exposure: ");
    session.type("40\n");
    session.wait_for("sensor set  exposure: 40\n");
    client.send("x\n");
    expect_waiting("");
    EXPECT_EQ(end(), calls_of_visit(kCamera, {"camera_t::set_gain(120) = 0", "camera_t::set_exposure(40) = 0"}));
}

}  // namespace
