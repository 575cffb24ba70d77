// Transcripts of the illumination menu and of its simple commands.
#include "tests/menus/light/illumination_run.h"

namespace {

using namespace light;
using support::Calls;

TEST(IlluminationMenuTest, SimpleCommandsShowAndChangeTheModule) {
    expect_run(
        kIllumination,
        {
            {'1', "", "Status of the Module: \tDone!\n", {"illumination_t::get_status() = 0 [0]"}},
            {'2',
             "",
             "Revision of the Module: \tThe Illumination driver: \n\nMajor \t2,\nMinor \t3,\nWeek \t9,\nYear \t22,\n"
             "Num \t1,\nPatch \t1,\n Done!\n",
             {"illumination_t::get_revision() = 0 [{2, 3, 1, 1, 22, 9}]"}},
            {'3', "", "", {}},
            {'a', "", "\t\t get pattern: 0\n", {"illumination_t::get_pattern() = 0 [0]"}},
            {'A', "0\n", kPatternPrompt, {"illumination_t::set_pattern(65535) = 0"}},
            {'a', "", "\t\t get pattern: 65535\n", {"illumination_t::get_pattern() = 0 [65535]"}},
            {'b', "", "sensor actual segments: 15\n", {"illumination_t::get_segments() = 0 [15]"}},
            {'B',
             "9\n",
             "Enter a value for segments: sensor set  segments: 9\n",
             {"illumination_t::set_segments(9) = 0"}},
            {'b', "", "sensor actual segments: 9\n", {"illumination_t::get_segments() = 0 [9]"}},
            {'c', "", "sensor actual brightness: 0\n", {"illumination_t::get_brightness() = 0 [0]"}},
            {'C',
             "5\n",
             "Enter a value for brightness: sensor set  brightness: 5\n",
             {"illumination_t::set_brightness(5) = 0"}},
            {'c', "", "sensor actual brightness: 5\n", {"illumination_t::get_brightness() = 0 [5]"}},
            {'i', "", "", {"illumination_t::set_write_protection(false) = 0"}},
            {'l', "", "DC BRIGHTNESS LIMIT: 14\n", {"illumination_t::get_dc_brightness_limit() = 0 [14]"}},
            {'L', "6\n", "set_dc_brightness_limit\n", {"illumination_t::set_dc_brightness_limit(6) = 0"}},
            {'l', "", "DC BRIGHTNESS LIMIT: 6\n", {"illumination_t::get_dc_brightness_limit() = 0 [6]"}},
            {'m', "", "FLASH BRIGHTNESS LIMIT: 14\n", {"illumination_t::get_flash_brightness_limit() = 0 [14]"}},
            {'M', "7\n", "set_flash_brightness_limit\n", {"illumination_t::set_flash_brightness_limit(7) = 0"}},
            {'m', "", "FLASH BRIGHTNESS LIMIT: 7\n", {"illumination_t::get_flash_brightness_limit() = 0 [7]"}},
            {'n', "", "ACTIVE\n", {"illumination_t::get_mode() = 0 [1]"}},
            {'N', "0\n", "mode 0:INACTIVE 1:ACTIVE \n", {"illumination_t::set_mode(0) = 0"}},
            {'n', "", "INACTIVE \n", {"illumination_t::get_mode() = 0 [0]"}},
            {'p', "", "OT LIMIT temp: 85\n", {"illumination_t::get_ot_off_limit() = 0 [85]"}},
            {'P', "70\n", " SET OT OFF LIMIT: \n", {"illumination_t::set_ot_off_limit(70) = 0"}},
            {'p', "", "OT LIMIT temp: 70\n", {"illumination_t::get_ot_off_limit() = 0 [70]"}},
            {'r', "5\n", " SET OT DECREASE LIMIT: \n", {"illumination_t::set_limit_ot_decrease(5) = 0"}},
            {'h', "", "", {"illumination_t::set_write_protection(true) = 0"}},
            {'v', "", "Illumination AVAILABLE\n", {"illumination_t::is_present() = 0 [true]"}},
            {'k', "", "RED ENABLED: FALSE \n", {"illumination_t::get_red_led() = 0 [false]"}},
            {'K', "1\n", "set led state: \n RED: 0 - disable 1 - enable\n", {"illumination_t::set_red_led(true) = 0"}},
            {'k', "", "RED ENABLED: TRUE \n", {"illumination_t::get_red_led() = 0 [true]"}},
            {'z', "", "GREEN ENABLED: FALSE \n", {"illumination_t::get_green_led() = 0 [false]"}},
            {'Z',
             "1\n",
             "set led state: \n GREEN: 0 - disable 1 - enable\n",
             {"illumination_t::set_green_led(true) = 0"}},
            {'z', "", "GREEN ENABLED: TRUE \n", {"illumination_t::get_green_led() = 0 [true]"}},
            {'y', "", "ALTER ENABLED: FALSE \n", {"illumination_t::get_alter_led() = 0 [false]"}},
            {'Y',
             "1\n",
             "set led state: \n ALTER: 0 - disable 1 - enable\n",
             {"illumination_t::set_alter_led(true) = 0"}},
            {'y', "", "ALTER ENABLED: TRUE \n", {"illumination_t::get_alter_led() = 0 [true]"}},
        });
}

// What the simple commands print and call when the library answers -1.
std::vector<Step> failing_steps() {
    return {
        {'a', "", kFailure, {"illumination_t::get_pattern() = -1"}},
        {'A', "1\n", kPatternPrompt + kFailure, {"illumination_t::set_pattern(0) = -1"}},
        {'b', "", "sensor error to get segments\n", {"illumination_t::get_segments() = -1"}},
        {'B',
         "9\n",
         "Enter a value for segments: sensor error to set segments\n",
         {"illumination_t::set_segments(9) = -1"}},
        {'c', "", "sensor error to get brightness\n", {"illumination_t::get_brightness() = -1"}},
        {'C',
         "5\n",
         "Enter a value for brightness: sensor error to set brightness\n",
         {"illumination_t::set_brightness(5) = -1"}},
        {'h', "", kFailure, {"illumination_t::set_write_protection(true) = -1"}},
        {'i', "", kFailure, {"illumination_t::set_write_protection(false) = -1"}},
        {'l', "", kFailure + "DC BRIGHTNESS LIMIT: 0\n", {"illumination_t::get_dc_brightness_limit() = -1"}},
        {'L', "6\n", "set_dc_brightness_limit\n" + kFailure, {"illumination_t::set_dc_brightness_limit(6) = -1"}},
        {'m', "", kFailure + "FLASH BRIGHTNESS LIMIT: 0\n", {"illumination_t::get_flash_brightness_limit() = -1"}},
        {'M', "7\n", "set_flash_brightness_limit\n" + kFailure, {"illumination_t::set_flash_brightness_limit(7) = -1"}},
        {'n', "", kFailure + "INACTIVE \n", {"illumination_t::get_mode() = -1"}},
        {'N', "1\n", "mode 0:INACTIVE 1:ACTIVE \n" + kFailure, {"illumination_t::set_mode(1) = -1"}},
        {'p', "", kFailure + "OT LIMIT temp: 0\n", {"illumination_t::get_ot_off_limit() = -1"}},
        {'P', "70\n", " SET OT OFF LIMIT: \n" + kFailure, {"illumination_t::set_ot_off_limit(70) = -1"}},
        {'r', "5\n", " SET OT DECREASE LIMIT: \n" + kFailure, {"illumination_t::set_limit_ot_decrease(5) = -1"}},
        {'k', "", kFailure + "RED ENABLED: FALSE \n", {"illumination_t::get_red_led() = -1"}},
        {'K',
         "1\n",
         "set led state: \n RED: 0 - disable 1 - enable\n" + kFailure,
         {"illumination_t::set_red_led(true) = -1"}},
        {'z', "", kFailure + "GREEN ENABLED: FALSE \n", {"illumination_t::get_green_led() = -1"}},
        {'Z',
         "1\n",
         "set led state: \n GREEN: 0 - disable 1 - enable\n" + kFailure,
         {"illumination_t::set_green_led(true) = -1"}},
        {'y', "", kFailure + "ALTER ENABLED: FALSE \n", {"illumination_t::get_alter_led() = -1"}},
        {'Y',
         "1\n",
         "set led state: \n ALTER: 0 - disable 1 - enable\n" + kFailure,
         {"illumination_t::set_alter_led(true) = -1"}},
        {'s',
         "50\n",
         "Enter a value in range: 0 - 0\n",
         {"illumination_t::get_brightness_limits_red() = -1", "illumination_t::set_brightness_red(50) = -1"}},
        {'S',
         "",
         "\t\t get brightness red: 0min: 0, max:0 ,step size: 0\n",
         {"illumination_t::get_brightness_red() = -1", "illumination_t::get_brightness_limits_red() = -1"}},
        {'t',
         "50\n",
         "Enter a value in range: 0 - 0\n",
         {"illumination_t::get_brightness_limits_green() = -1", "illumination_t::set_brightness_green(50) = -1"}},
        {'T',
         "",
         "\t\t get brightness green: 0min: 0, max:0 ,step size: 0\n",
         {"illumination_t::get_brightness_green() = -1", "illumination_t::get_brightness_limits_green() = -1"}},
        {'u',
         "50\n",
         "Enter a value in range: 0 - 0\n",
         {"illumination_t::get_brightness_limits_blue() = -1", "illumination_t::set_brightness_blue(50) = -1"}},
        {'U',
         "",
         "\t\t get brightness blue: 0min: 0, max:0 ,step size: 0\n",
         {"illumination_t::get_brightness_blue() = -1", "illumination_t::get_brightness_limits_blue() = -1"}},
    };
}

TEST(IlluminationMenuTest, FailuresAreReportedAndReadoutsFollowAllTheSame) {
    std::vector<Step> steps = failing_steps();
    steps.push_back({'1', "", "Status of the Module: \t", {"illumination_t::get_status() = -1"}, kInformationError});
    steps.push_back(
        {'2', "", "Revision of the Module: \t", {"illumination_t::get_revision() = -1"}, kInformationError});
    steps.push_back({'3', "", "", {}});
    steps.push_back({'v', "", "Illumination MISSING\n", {"illumination_t::is_present() = -1"}});
    expect_run(
        kIllumination, steps,
        with_scenario({"fault add illumination_t::*et_* status -1", "fault add illumination_t::is_present status -1"}));
}

TEST(IlluminationMenuTest, PositiveStatusIsAFailureTooButNotOfThePresence) {
    std::vector<Step> steps = failing_steps();
    for (Step& step : steps) {
        for (std::string& call : step.calls) {
            call.replace(call.rfind("-1"), 2, "4");
        }
    }
    steps.push_back({'1', "", "Status of the Module: \tDone!\n", {"illumination_t::get_status() = 4"}});
    steps.push_back({'v', "", "Illumination AVAILABLE\n", {"illumination_t::is_present() = 4"}});
    expect_run(
        kIllumination, steps,
        with_scenario({"fault add illumination_t::*et_* status 4", "fault add illumination_t::is_present status 4"}));
}

TEST(IlluminationMenuTest, MissingNodeFailsEveryCommand) {
    support::SessionOptions options;
    options.without = {"/dev/r47-illumination-driver"};
    std::vector<Step> steps = failing_steps();
    steps.push_back({'v', "", "Illumination MISSING\n", {"illumination_t::is_present() = -1"}});
    expect_run(kIllumination, steps, options);
}

TEST(IlluminationMenuTest, ModuleThatIsNotFittedIsMissing) {
    expect_run(kIllumination,
               {{'v', "", "Illumination MISSING\n", {"illumination_t::is_present() = -1"}},
                {'a', "", kFailure, {"illumination_t::get_pattern() = -1"}}},
               with_scenario({"set illumination.present false"}));
}

TEST(IlluminationMenuTest, PresenceIsDecidedByTheStatusAlone) {
    expect_run(kIllumination, {{'v', "", "Illumination AVAILABLE\n", {"illumination_t::is_present() = 0 [false]"}}},
               with_scenario({"fault add illumination_t::is_present value false"}));
}

TEST(IlluminationMenuTest, OnlyPatternOneIsContinuous) {
    std::vector<Step> steps;
    for (std::string const typed : {"0", "2", "7", "-1", "text"}) {
        steps.push_back({'A', typed + "\n", kPatternPrompt, {"illumination_t::set_pattern(65535) = 0"}});
    }
    steps.push_back({'A', "1\n", kPatternPrompt, {"illumination_t::set_pattern(0) = 0"}});
    expect_run(kIllumination, steps);
}

struct Colour {
    char set_key;
    char get_key;
    std::string name;
};
Colour const kColours[] = {{'s', 'S', "red"}, {'t', 'T', "green"}, {'u', 'U', "blue"}};

TEST(IlluminationMenuTest, ColourWarnsInsideTheRangeAndIsSilentAboveIt) {
    std::vector<Step> steps;
    for (Colour const& colour : kColours) {
        std::string const limits = "illumination_t::get_brightness_limits_" + colour.name + "() = 0 [0, 100, 1]";
        std::string const set = "illumination_t::set_brightness_" + colour.name;
        std::string const range = "Enter a value in range: 0 - 100\n";
        std::string const label = "\t\t get brightness " + colour.name + ": ";
        std::string const get = "illumination_t::get_brightness_" + colour.name + "() = 0 ";
        steps.push_back({colour.set_key, "50\n", range + "No valid inptut50\n", {limits, set + "(50) = 0"}});
        steps.push_back({colour.get_key, "", label + "50min: 0, max:100 ,step size: 1\n", {get + "[50]", limits}});
        steps.push_back({colour.set_key, "100\n", range + "No valid inptut100\n", {limits, set + "(100) = 0"}});
        steps.push_back({colour.set_key, "101\n", range, {limits, set + "(101) = -1"}});
        steps.push_back({colour.set_key, "150\n", range, {limits, set + "(150) = -1"}});
        steps.push_back({colour.set_key, "-1\n", range, {limits, set + "(4294967295) = -1"}});
        steps.push_back({colour.get_key, "", label + "100min: 0, max:100 ,step size: 1\n", {get + "[100]", limits}});
        steps.push_back({colour.set_key, "much\n", range + "No valid inptut0\n", {limits, set + "(0) = 0"}});
    }
    expect_run(kIllumination, steps);
}

TEST(IlluminationMenuTest, ColourTakesItsLimitsFromTheLibrary) {
    std::vector<Step> steps;
    std::vector<std::string> scenario;
    for (Colour const& colour : kColours) {
        std::string const operation = "illumination_t::get_brightness_limits_" + colour.name;
        scenario.push_back("fault add " + operation + " value 10,4000000000,5");
        std::string const limits = operation + "() = 0 [10, 4000000000, 5]";
        std::string const set = "illumination_t::set_brightness_" + colour.name;
        std::string const range = "Enter a value in range: 10 - 4000000000\n";
        steps.push_back({colour.set_key, "3\n", range + "No valid inptut3\n", {limits, set + "(3) = 0"}});
        steps.push_back({colour.get_key,
                         "",
                         "\t\t get brightness " + colour.name + ": 3min: 10, max:4000000000 ,step size: 5\n",
                         {"illumination_t::get_brightness_" + colour.name + "() = 0 [3]", limits}});
    }
    expect_run(kIllumination, steps, with_scenario(scenario));
}

TEST(IlluminationMenuTest, AnyNumberButNoughtSwitchesALedOn) {
    struct {
        char key;
        std::string name;
        std::string operation;
    } const leds[] = {{'K', "RED", "red"}, {'Z', "GREEN", "green"}, {'Y', "ALTER", "alter"}};
    std::vector<Step> steps;
    for (auto const& led : leds) {
        std::string const prompt = "set led state: \n " + led.name + ": 0 - disable 1 - enable\n";
        std::string const set = "illumination_t::set_" + led.operation + "_led";
        steps.push_back({led.key, "5\n", prompt, {set + "(true) = 0"}});
        steps.push_back({led.key, "0\n", prompt, {set + "(false) = 0"}});
        steps.push_back({led.key, "-1\n", prompt, {set + "(true) = 0"}});
        steps.push_back({led.key, "on\n", prompt, {set + "(false) = 0"}});
    }
    expect_run(kIllumination, steps);
}

TEST(IlluminationMenuTest, ModeGoesThroughUnchangedAndOnlyOneIsActive) {
    std::string const prompt = "mode 0:INACTIVE 1:ACTIVE \n";
    expect_run(kIllumination,
               {{'N', "2\n", prompt + kFailure, {"illumination_t::set_mode(2) = -1"}},
                {'N', "-3\n", prompt + kFailure, {"illumination_t::set_mode(-3) = -1"}},
                {'N', "0\n", prompt, {"illumination_t::set_mode(0) = 0"}},
                {'n', "", "INACTIVE \n", {"illumination_t::get_mode() = 0 [2]"}},
                {'n', "", "INACTIVE \n", {"illumination_t::get_mode() = 0 [-1]"}},
                {'n', "", "ACTIVE\n", {"illumination_t::get_mode() = 0 [1]"}}},
               with_scenario({"fault add illumination_t::get_mode count 1 value 2",
                              "fault add illumination_t::get_mode count 1 value -1",
                              "fault add illumination_t::get_mode value 1"}));
}

TEST(IlluminationMenuTest, NumbersReachTheLibraryUnsigned) {
    expect_run(
        kIllumination,
        {{'L',
          "-1\n",
          "set_dc_brightness_limit\n" + kFailure,
          {"illumination_t::set_dc_brightness_limit(4294967295) = -1"}},
         {'M',
          "-2\n",
          "set_flash_brightness_limit\n" + kFailure,
          {"illumination_t::set_flash_brightness_limit(4294967294) = -1"}},
         {'P', "-3\n", " SET OT OFF LIMIT: \n" + kFailure, {"illumination_t::set_ot_off_limit(4294967293) = -1"}},
         {'r',
          "4000000000\n",
          " SET OT DECREASE LIMIT: \n" + kFailure,
          {"illumination_t::set_limit_ot_decrease(4000000000) = -1"}},
         {'p', "", "OT LIMIT temp: 4294967295\n", {"illumination_t::get_ot_off_limit() = 0 [4294967295]"}}},
        with_scenario({"fault add illumination_t::get_ot_off_limit value 4294967295"}));
}

TEST(IlluminationMenuTest, MistypedNumberIsNoughtAndTakesItsLineAlong) {
    expect_run(
        kIllumination,
        {{'L', "many x\n", "set_dc_brightness_limit\n" + kFailure, {"illumination_t::set_dc_brightness_limit(0) = -1"}},
         {'b', "", "sensor actual segments: 15\n", {"illumination_t::get_segments() = 0 [15]"}}});
}

TEST(IlluminationMenuTest, RestOfALineIsTheNextOptions) {
    expect_run(kIllumination, {{'A', " 1 ", kPatternPrompt, {"illumination_t::set_pattern(0) = 0"}},
                               {'a', " \n", "\t\t get pattern: 0\n", {"illumination_t::get_pattern() = 0 [0]"}}});
}

TEST(IlluminationMenuTest, KeysWithoutACommandShowTheMenuAgain) {
    expect_run(kIllumination, ignored("DEFGHIRVWXw456789:;<=>?@[\\]^_`!/{|}~\x7f\xff"));
}

TEST(IlluminationMenuTest, ColourLinesAreFilledUp) {
    auto const run = support::run_console("cxx");
    for (char const key : std::string("sStTuUv")) {
        auto const lines = lines_with(std::string("\t\t  ") + key + ": ", run.output);
        ASSERT_EQ(lines.size(), 1U) << key;
        EXPECT_EQ(lines[0].size(), 41U) << lines[0];
    }
}

// The four commands that no key calls, each run by itself.
struct UnboundRun {
    std::string entry_point;
    std::string typed;
    std::vector<std::string> scenario;
    std::string printed;
    Calls calls;
};

void expect_unbound(UnboundRun const& expected) {
    SCOPED_TRACE(expected.entry_point + " " + expected.typed);
    support::SessionOptions options = with_scenario(expected.scenario);
    options.entry_point = expected.entry_point;
    support::expect_transcript(options, expected.typed, expected.printed,
                               calls_of_visit(kIllumination, expected.calls));
}

TEST(IlluminationUnboundTest, SegmentsArePrintedWithTheirLimitsUnlessTheseFail) {
    expect_unbound(
        {"illumination_get_segments",
         "",
         {},
         "\t\t get segments: 15 ,min: 0, max: 15\n",
         {"illumination_t::get_segments() = 0 [15]", "illumination_t::get_segments_limits() = 0 [0, 15, 1]"}});
    expect_unbound({"illumination_get_segments",
                    "",
                    {"fault add illumination_t::get_segments status -1"},
                    "\t\t get segments: 0 ,min: 0, max: 15\n",
                    {"illumination_t::get_segments() = -1", "illumination_t::get_segments_limits() = 0 [0, 15, 1]"}});
    expect_unbound({"illumination_get_segments",
                    "",
                    {"fault add illumination_t::get_segments_limits status 2"},
                    kFailure,
                    {"illumination_t::get_segments() = 0 [15]", "illumination_t::get_segments_limits() = 2"}});
}

TEST(IlluminationUnboundTest, BrightnessIsPrintedBeforeTheFailureOfItsLimits) {
    expect_unbound(
        {"illumination_get_brightness",
         "",
         {},
         "\t\t get brightness: 0 ,min: 0, max: 14\n",
         {"illumination_t::get_brightness() = 0 [0]", "illumination_t::get_brightness_limits() = 0 [0, 14, 1]"}});
    expect_unbound({"illumination_get_brightness",
                    "",
                    {"fault add illumination_t::get_brightness value 9",
                     "fault add illumination_t::get_brightness_limits status -1"},
                    "\t\t get brightness: 9 ,min: 0, max: 0\n" + kFailure,
                    {"illumination_t::get_brightness() = 0 [9]", "illumination_t::get_brightness_limits() = -1"}});
    expect_unbound(
        {"illumination_get_brightness",
         "",
         {"fault add illumination_t::get_brightness status -1"},
         "\t\t get brightness: 0 ,min: 0, max: 14\n",
         {"illumination_t::get_brightness() = -1", "illumination_t::get_brightness_limits() = 0 [0, 14, 1]"}});
}

TEST(IlluminationUnboundTest, SegmentsAboveFifteenAreWarnedAboutAndWritten) {
    std::string const range = "Enter a value in range: 0 - 15(each bit is a segment)\n";
    std::string const limits = "illumination_t::get_segments_limits() = 0 [0, 15, 1]";
    expect_unbound({"illumination_set_segments", "15\n", {}, range, {limits, "illumination_t::set_segments(15) = 0"}});
    expect_unbound({"illumination_set_segments",
                    "16\n",
                    {},
                    range + "No valid input 16\n" + kFailure,
                    {limits, "illumination_t::set_segments(16) = -1"}});
    expect_unbound({"illumination_set_segments",
                    "-1\n",
                    {"fault add illumination_t::set_segments status 0"},
                    range + "No valid input 4294967295\n",
                    {limits, "illumination_t::set_segments(4294967295) = 0"}});
    expect_unbound({"illumination_set_segments",
                    "1\n",
                    {"fault add illumination_t::get_segments_limits status -1"},
                    "Enter a value in range: 0 - 0(each bit is a segment)\n",
                    {"illumination_t::get_segments_limits() = -1", "illumination_t::set_segments(1) = 0"}});
}

TEST(IlluminationUnboundTest, BrightnessAboveFourteenIsWarnedAboutAndWritten) {
    std::string const range = "Enter a value in range: 0 - 14\n";
    std::string const limits = "illumination_t::get_brightness_limits() = 0 [0, 14, 1]";
    expect_unbound(
        {"illumination_set_brightness", "14\n", {}, range, {limits, "illumination_t::set_brightness(14) = 0"}});
    expect_unbound({"illumination_set_brightness",
                    "15\n",
                    {},
                    range + "No valid input 15\n" + kFailure,
                    {limits, "illumination_t::set_brightness(15) = -1"}});
    expect_unbound({"illumination_set_brightness",
                    "3\n",
                    {"fault add illumination_t::set_brightness status 9"},
                    range + kFailure,
                    {limits, "illumination_t::set_brightness(3) = 9"}});
    expect_unbound({"illumination_set_brightness",
                    "3\n",
                    {"fault add illumination_t::get_brightness_limits status -1"},
                    "Enter a value in range: 0 - 0\n",
                    {"illumination_t::get_brightness_limits() = -1", "illumination_t::set_brightness(3) = 0"}});
}

TEST(IlluminationUnboundTest, ClientSendsTheNumbersAndGetsEchoesAndStatuses) {
    support::SessionOptions options =
        with_scenario({"fault add illumination_t::get_brightness_limits skip 1 status -7"});
    options.entry_point = "illumination_client";
    support::ConsoleSession session(options);
    support::StationClient client;
    client.send("9\n");
    EXPECT_EQ(client.receive(1), "9");
    client.send("20\n");
    EXPECT_EQ(client.receive(2), "20");
    // Segments written and read, brightness (refused) written and read.
    EXPECT_EQ(client.receive_reply(), "0;0;-1;-7;\\n");
    EXPECT_EQ(session.wait_for_exit(), 0);
    EXPECT_EQ(session.output(),
              "Enter a value in range: 0 - 15(each bit is a segment)\n"
              "ReadLine: 9\n"
              "\t\t get segments: 9 ,min: 0, max: 15\n"
              "Enter a value in range: 0 - 14\n"
              "ReadLine: 20\n"
              "No valid input 20\n" +
                  kFailure + "\t\t get brightness: 0 ,min: 0, max: 0\n" + kFailure);
}

TEST(IlluminationUnboundTest, TextOfTheClientThatIsNoNumberIsZero) {
    support::SessionOptions options;
    options.entry_point = "illumination_client";
    support::ConsoleSession session(options);
    support::StationClient client;
    client.send("all\n3\n");
    EXPECT_EQ(client.receive_reply(), "all30;0;0;0;\\n");
    EXPECT_EQ(session.wait_for_exit(), 0);
    EXPECT_NE(session.output().find("\t\t get segments: 0 ,min: 0, max: 15\n"), std::string::npos);
}

TEST(IlluminationUnboundTest, QuestionWithoutAnAnswerEndsTheCommand) {
    support::SessionOptions options;
    options.entry_point = "illumination_set_brightness";
    support::ConsoleSession session(options);
    session.end_input();
    EXPECT_EQ(session.wait_for_exit(), 0);
    EXPECT_EQ(session.output(), "Enter a value in range: 0 - 14\n");
    EXPECT_EQ(session.calls(),
              (Calls{kIllumination.opening[0], "illumination_t::get_brightness_limits() = 0 [0, 14, 1]",
                     kIllumination.closing[0]}));
}

TEST(IlluminationUnboundTest, ClientThatGoesEndsTheCommandThatAsks) {
    support::SessionOptions options;
    options.entry_point = "illumination_client";
    support::ConsoleSession session(options);
    support::StationClient client;
    client.send("9\n");
    client.finish();
    EXPECT_EQ(session.wait_for_exit(), 0);
    EXPECT_EQ(session.output(),
              "Enter a value in range: 0 - 15(each bit is a segment)\n"
              "ReadLine: 9\n"
              "\t\t get segments: 9 ,min: 0, max: 15\n"
              "Enter a value in range: 0 - 14\n");
    EXPECT_EQ(client.receive(1), "9");
    EXPECT_TRUE(client.ended());
    Calls const calls = session.calls();
    EXPECT_EQ(calls[calls.size() - 2], "illumination_t::get_brightness_limits() = 0 [0, 14, 1]");
}

class IlluminationClientTest : public ClientTest {};

TEST(IlluminationUnboundTest, ClientGetsTheStatusOfTheLastCallAlone) {
    support::SessionOptions options = with_scenario(
        {"fault add illumination_t::get_segments status -1", "fault add illumination_t::get_brightness status -2",
         "fault add illumination_t::set_segments status 5",
         "fault add illumination_t::get_segments_limits count 1 status 6",
         "fault add illumination_t::get_brightness_limits count 1 status 7"});
    options.entry_point = "illumination_client";
    support::ConsoleSession session(options);
    support::StationClient client;
    client.send("9\n3\n");
    EXPECT_EQ(client.receive_reply(), "935;0;0;0;\\n");
    EXPECT_EQ(session.wait_for_exit(), 0);
}

// The menu is the operator's: the client only opens it, and only the pattern's statuses wait for it.
TEST_F(IlluminationClientTest, TerminalDrivesTheMenuAndTheStatusesWait) {
    client.send("c\n");
    session.wait_for("Entered Option = c\n");
    for (Step const& step : std::vector<Step>{{'a', "", "\t\t get pattern: 0\n", {}},
                                              {'A', "0\n", kPatternPrompt, {}},
                                              {'b', "", "sensor actual segments: 15\n", {}},
                                              {'g', "", "ERROR CODE: 0\n", {}},
                                              {'k', "", "RED ENABLED: FALSE \n", {}},
                                              {'v', "", "Illumination AVAILABLE\n", {}}}) {
        session.wait_for("LED STATE  \nPlease enter your option: ");
        session.type(step.key + step.typed);
        session.wait_for(std::string("Your Option = ") + step.key + "\n" + step.printed);
    }
    session.type("x");
    session.wait_for("Your Option = x\n");
    expect_waiting("0;0;");
    end();
}

TEST_F(IlluminationClientTest, StatusesOfARefusedPatternWaitToo) {
    session.control("fault add illumination_t::get_pattern status 3");
    session.control("fault add illumination_t::set_pattern status -4");
    client.send("c\n");
    session.wait_for("LED STATE  \nPlease enter your option: ");
    session.type("aA1\nx");
    session.wait_for("Your Option = x\n");
    expect_waiting("3;-4;");
    end();
}

TEST_F(IlluminationClientTest, AllNumbersAreTypedAtTheTerminal) {
    expect_as_at_the_terminal(kIllumination,
                              "123hijJ2\n100\njJ1\nL9\nlM9\nmN1\nnP70\npQ1\n1\n0\n1\nqr60\ns5\nSt6\nTu7\nU"
                              "K1\nkZ1\nzY1\nyB3\nbC4\ncdefvi");
    expect_waiting("");
    end();
}

}  // namespace
