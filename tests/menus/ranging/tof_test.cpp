// Transcripts of the ranging menu.
#include <cmath>
#include <sstream>

#include "tests/menus/menu_run.h"
#include "tests/support/screens/ranging.h"

namespace {

using namespace menus;
using screens::unknown_command;
using support::Calls;

// One of the five settings that show their old and their new value.
struct Setting {
    char key;
    std::string prompt;
    std::string name;
    std::string operation;
};
Setting const kResolution{'a', "Enter resolution: ", "resolution", "resolution"};
Setting const kFrequency{'b', "Enter value: ", "frequency", "frequency"};
Setting const kRangingMode{'c', "Enter value: ", "Ranginig Mode", "ranging_mode"};
Setting const kIntegrationTime{'d', "Enter value: ", "Integration Time", "integration_time"};
Setting const kPowerMode{'j', "Enter value: ", "Power Mode", "power_mode"};
Setting const kSettings[] = {kResolution, kFrequency, kRangingMode, kIntegrationTime, kPowerMode};

std::string old_and_new(std::string const& name, std::string const& old_value, std::string const& new_value) {
    return "Old " + name + " : " + old_value + "\nNew " + name + " : " + new_value + "\n";
}

Step change(Setting const& setting, std::string const& typed, std::string const& old_value, std::string const& passed,
            std::string const& status, std::string const& new_value) {
    return {setting.key,
            typed + "\n",
            setting.prompt + old_and_new(setting.name, old_value, new_value),
            {"tof_t::get_" + setting.operation + "() = 0 [" + old_value + "]",
             "tof_t::set_" + setting.operation + "(" + passed + ") = " + status,
             "tof_t::get_" + setting.operation + "() = 0 [" + new_value + "]"}};
}

TEST(TofTest, SettingsShowTheirOldAndTheirNewValue) {
    expect_run(
        kTof,
        {change(kResolution, "64", "16", "64", "0", "64"), change(kFrequency, "15", "1", "15", "0", "15"),
         change(kRangingMode, "1", "3", "1", "0", "1"), change(kIntegrationTime, "1000", "5", "1000", "0", "1000"),
         change(kPowerMode, "0", "1", "0", "0", "0"), change(kPowerMode, "1", "0", "1", "0", "1"),
         change(kResolution, "16", "64", "16", "0", "16"), change(kFrequency, "60", "15", "60", "0", "60")});
}

TEST(TofTest, RefusedSettingShowsTheOldValueTwice) {
    expect_run(
        kTof, {change(kResolution, "32", "16", "32", "127", "16"), change(kFrequency, "61", "1", "61", "127", "1"),
               change(kFrequency, "0", "1", "0", "127", "1"), change(kRangingMode, "2", "3", "2", "127", "3"),
               change(kIntegrationTime, "1", "5", "1", "127", "5"),
               change(kIntegrationTime, "1001", "5", "1001", "127", "5"), change(kPowerMode, "2", "1", "2", "127", "1"),
               change(kResolution, "64", "16", "64", "0", "64"), change(kFrequency, "16", "1", "16", "127", "1")});
}

TEST(TofTest, TypedNumbersAreNarrowedToTheirParameters) {
    expect_run(
        kTof,
        {change(kFrequency, "300", "1", "44", "0", "44"), change(kResolution, "272", "16", "16", "0", "16"),
         change(kResolution, "-192", "16", "64", "0", "64"), change(kRangingMode, "257", "3", "1", "0", "1"),
         change(kPowerMode, "256", "1", "0", "0", "0"), change(kIntegrationTime, "-1", "5", "4294967295", "127", "5")});
}

TEST(TofTest, MistypedNumberIsNought) {
    expect_run(kTof, {change(kFrequency, "fast", "1", "0", "127", "1"), change(kPowerMode, "off", "1", "0", "0", "0")});
}

TEST(TofTest, StatusesOfTheSettingsAreIgnored) {
    std::vector<Step> steps;
    for (Setting const& setting : kSettings) {
        steps.push_back({setting.key,
                         "7\n",
                         setting.prompt + old_and_new(setting.name, "0", "0"),
                         {"tof_t::get_" + setting.operation + "() = -1", "tof_t::set_" + setting.operation + "(7) = -1",
                          "tof_t::get_" + setting.operation + "() = -1"}});
    }
    expect_run(kTof, steps, with_scenario({"fault add tof_t::*et_* status -1"}));
    support::SessionOptions without_node;
    without_node.without = {"/dev/r47-tof-driver"};
    expect_run(kTof, steps, without_node);
}

TEST(TofTest, OldAndNewValueAreTwoReadings) {
    expect_run(
        kTof,
        {{'a',
          "16\n",
          kResolution.prompt + old_and_new("resolution", "200", "201"),
          {"tof_t::get_resolution() = 0 [200]", "tof_t::set_resolution(16) = 0", "tof_t::get_resolution() = 0 [201]"}},
         {'d',
          "9\n",
          kIntegrationTime.prompt + old_and_new("Integration Time", "4294967295", "9"),
          {"tof_t::get_integration_time() = 0 [4294967295]", "tof_t::set_integration_time(9) = 0",
           "tof_t::get_integration_time() = 0 [9]"}}},
        with_scenario({"fault add tof_t::get_resolution count 1 value 200",
                       "fault add tof_t::get_resolution count 1 value 201",
                       "fault add tof_t::get_integration_time count 1 value 4294967295"}));
}

std::string calibration_texts(std::string const& old_values, std::string const& new_values) {
    std::istringstream old_stream(old_values);
    std::istringstream new_stream(new_values);
    struct {
        std::string prompt;
        std::string name;
    } const parameters[] = {{"Enter Reflectance percent: ", "Reflectance percent"},
                            {"Enter Number Of Samples: ", "Number Of Samples"},
                            {"Enter Object Distance: ", "Object Distance"}};
    std::string text;
    for (auto const& parameter : parameters) {
        std::string old_value;
        std::string new_value;
        old_stream >> old_value;
        new_stream >> new_value;
        text += parameter.prompt + old_and_new(parameter.name, old_value, new_value);
    }
    return text;
}

Calls calibration_calls(std::string const& reflectance, std::string const& samples, std::string const& distance) {
    return {"tof_t::set_calibration_reflectance_percent(" + reflectance, "tof_t::set_calibration_nb_samples(" + samples,
            "tof_t::set_calibration_distance(" + distance};
}

TEST(TofTest, CalibrationParametersAreAskedInTheirOrder) {
    expect_run(kTof, {{'e', "50\n16\n3000\n", calibration_texts("3 4 600", "50 16 3000"),
                       calibration_calls("50) = 0", "16) = 0", "3000) = 0")},
                      {'e', "100\n17\n599\n", calibration_texts("50 16 3000", "50 16 3000"),
                       calibration_calls("100) = 127", "17) = 127", "599) = 127")},
                      {'e', "65537\n257\n66536\n", calibration_texts("50 16 3000", "1 1 1000"),
                       calibration_calls("1) = 0", "1) = 0", "1000) = 0")},
                      {'e', "much\nmany\nfar\n", calibration_texts("1 1 1000", "1 1 1000"),
                       calibration_calls("0) = 127", "0) = 127", "0) = 127")},
                      {'e', "50\nmany\n600\n", calibration_texts("1 1 1000", "50 1 600"),
                       calibration_calls("50) = 0", "0) = 127", "600) = 0")}});
}

TEST(TofTest, FailedCalibrationSettersShowTheOldFields) {
    expect_run(kTof,
               {{'e', "50\n16\n3000\n", calibration_texts("3 4 600", "3 4 600"),
                 calibration_calls("50) = -1", "16) = -1", "3000) = -1")}},
               with_scenario({"fault add tof_t::set_calibration_* status -1"}));
}

TEST(TofTest, CalibrationAndModuleTestPrintNothing) {
    support::SessionOptions options = with_scenario({"set ranging.scene \"plane 600 reflectance 3\""});
    options.clock = "stepped";
    expect_run(
        kTof,
        {{'f', "", "", {"tof_t::xtalk_calibration() = 0"}}, {'i', "", "", {"tof_t::illumination_module_test() = 0"}}},
        options);
    expect_run(
        kTof,
        {{'f', "", "", {"tof_t::xtalk_calibration() = 4"}}, {'i', "", "", {"tof_t::illumination_module_test() = 66"}}},
        with_scenario(
            {"fault add tof_t::xtalk_calibration status 4", "fault add tof_t::illumination_module_test status 66"}));
}

TEST(TofTest, NumberOfMeasurementsCallsNothing) {
    expect_run(kTof, {{'g', "12\n", "Enter number of measurements: ", {}},
                      {'g', "-1\n", "Enter number of measurements: ", {}},
                      {'g', "some\n", "Enter number of measurements: ", {}}});
}

// The grid of `side` x `side` distances, each of them made by `distance` of row and column.
template <typename Distance>
std::string grid(int side, Distance distance) {
    std::string text;
    for (int row = 0; row < side; ++row) {
        for (int column = 0; column < side; ++column) {
            std::string const number = std::to_string(distance(row, column));
            text += std::string(number.size() < 4 ? 4 - number.size() : 0, ' ') + number + "\t";
        }
        text += "\n";
    }
    return text + "\n\n";
}

support::SessionOptions exact(std::string const& scene) {
    support::SessionOptions options =
        with_scenario({"set ranging.noise 0", "set ranging.crosstalk.pull 0", "set ranging.scene \"" + scene + "\""});
    options.clock = "stepped";
    return options;
}

// What a visit with these keys prints between the echo of the last one, which is the shot, and the exit.
std::string shot_of(std::string const& typed, support::SessionOptions const& options) {
    auto const run = support::run_console("p" + typed + "xx", options);
    EXPECT_EQ(run.status, 0);
    std::string const echo = "Your option = h\n";
    std::size_t const start = run.output.rfind(echo) + echo.size();
    std::size_t const end = run.output.find(screens::tof_menu('x'), start);
    EXPECT_NE(end, std::string::npos);
    return run.output.substr(start, end - start);
}

TEST(TofTest, ShotPrintsASquareAndTwoEmptyLines) {
    EXPECT_EQ(shot_of("h", exact("plane 750")), grid(4, [](int, int) { return 750; }));
    EXPECT_EQ(shot_of("a64\nh", exact("plane 2750")), grid(8, [](int, int) { return 2750; }));
    EXPECT_EQ(shot_of("h", exact("none")), grid(4, [](int, int) { return 0; }));
}

TEST(TofTest, ShotOfATiltedPlaneShowsTheTilt) {
    double const slope = std::tan(31.5 * M_PI / 180) / std::sqrt(2.0);
    EXPECT_EQ(shot_of("a64\nh", exact("tilted 1000 20")), grid(8, [&](int, int column) {
                  double const right = ((column + 0.5) / 4 - 1) * slope;
                  return std::lround(1000 / (1 - right * std::tan(20 * M_PI / 180)));
              }));
    EXPECT_EQ(shot_of("a64\nh", exact("tilted 1000 0 -30")), grid(8, [&](int row, int) {
                  double const down = ((row + 0.5) / 4 - 1) * slope;
                  return std::lround(1000 / (1 + down * std::tan(30 * M_PI / 180)));
              }));
}

TEST(TofTest, ShotOfAStepAndOfAHole) {
    EXPECT_EQ(shot_of("h", exact("step 500 900")), grid(4, [](int, int column) { return column < 2 ? 500 : 900; }));
    EXPECT_EQ(shot_of("a64\nh", exact("hole 600 1200")),
              grid(8, [](int row, int column) { return row > 2 && row < 5 && column > 2 && column < 5 ? 1200 : 600; }));
}

TEST(TofTest, DistancesAreRightAlignedSigned) {
    // The record before the distances: temperature, 64 each of ambient, targets, SPADs, signal, sigma.
    std::string values = "0";
    for (int i = 0; i < 5 * 64; ++i) {
        values += ",0";
    }
    for (int const distance : {-1, 0, 7, 12345, -32768, 999, 1000, -999}) {
        values += "," + std::to_string(distance);
    }
    EXPECT_EQ(
        shot_of("h", with_scenario({"fault add tof_t::shot value " + values})),
        "  -1\t   0\t   7\t12345\t\n-32768\t 999\t1000\t-999\t\n   0\t   0\t   0\t   0\t\n   0\t   0\t   0\t   0\t\n"
        "\n\n");
}

TEST(TofTest, SideIsTheRootOfTheResolution) {
    struct {
        std::string resolution;
        std::string printed;
    } const shots[] = {
        {"0", "\n\n"},
        {"1", "   0\t\n\n"},
        {"2", "   0\t   0\t\n\n\n"},
        {"5", "   0\t   0\t\n   0\t   0\t\n   0\t\n\n"},
        {"255", grid(8, [](int, int) { return 0; })},  // the record holds 64 zones
    };
    for (auto const& shot : shots) {
        SCOPED_TRACE(shot.resolution);
        EXPECT_EQ(shot_of("h", with_scenario({"fault add tof_t::shot value 0",
                                              "fault add tof_t::get_resolution value " + shot.resolution})),
                  shot.printed);
    }
}

TEST(TofTest, FailedShotOrResolutionPrintsNothing) {
    for (std::string const status : {"-1", "255"}) {
        expect_run(kTof, {{'h', "", "", {"tof_t::shot() = " + status}}},
                   with_scenario({"fault add tof_t::shot status " + status}));
        support::SessionOptions options = exact("none");
        options.scenario.push_back("fault add tof_t::get_resolution status " + status);
        EXPECT_EQ(shot_of("h", options), "");
    }
}

TEST(TofTest, SleepingSensorDoesNotShoot) {
    expect_run(kTof, {change(kPowerMode, "0", "1", "0", "0", "0"),
                      {'h', "", "", {"tof_t::shot() = 255"}},
                      {'f', "", "", {"tof_t::xtalk_calibration() = 255"}},
                      {'i', "", "", {"tof_t::illumination_module_test() = 255"}}});
}

TEST(TofTest, ModuleTestFailsWithoutTheIllumination) {
    support::SessionOptions options = with_scenario({"set illumination.present false"});
    options.clock = "stepped";
    expect_run(kTof, {{'i', "", "", {"tof_t::illumination_module_test() = 255"}}}, options);
}

TEST(TofTest, BlockingOperationsTakeTheirTime) {
    support::SessionOptions options = exact("plane 600 reflectance 3");
    support::ConsoleSession session(options);
    auto const time = [&] {
        std::string const shown = session.control("show clock.time");
        return std::stod(shown.substr(std::string("clock.time").size()));
    };
    session.type("p");
    session.wait_for(kTof.prompt());
    struct {
        std::string typed;
        char blocking_key;
        double seconds;
    } const operations[] = {{"h", 'h', 1.0}, {"g3\nh", 'h', 3.0},        {"gmany\nh", 'h', 1.0},
                            {"f", 'f', 2.5}, {"e3 16 600\nf", 'f', 8.5}, {"b10\ng1\nh", 'h', 0.1},
                            {"i", 'i', 0.1}};
    for (auto const& operation : operations) {
        SCOPED_TRACE(operation.typed);
        double const start = time();
        session.type(operation.typed);
        session.wait_for(std::string("Your option = ") + operation.blocking_key + "\n");
        session.wait_for(kTof.prompt());
        EXPECT_NEAR(time() - start, operation.seconds, 0.002);
    }
    session.type("xx");
    EXPECT_EQ(session.wait_for_exit(), 0);
}

TEST(TofTest, UnknownKeysAreAnnounced) {
    std::vector<Step> steps;
    for (char const key : std::string("klmnopqrstuvwyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789!?\x7f\xff")) {
        steps.push_back({key, "", unknown_command(key), {}});
    }
    expect_run(kTof, steps);
}

class TofClientTest : public ClientTest {};

TEST_F(TofClientTest, AllNumbersAreTypedAtTheTerminal) {
    expect_as_at_the_terminal(kTof, "a64\nb9\nc3\nd20\ne50\n16\n3000\ng2\nj0\nj1\n");
    expect_waiting("");
    end();
}

TEST_F(TofClientTest, TerminalDrivesTheMenuAndTheClientGetsNothing) {
    client.send("p\n");
    session.wait_for(kTof.prompt());
    session.type("b");
    session.wait_for("Your option = b\nEnter value: ");
    session.type("9\n");
    session.wait_for("Old frequency : 1\nNew frequency : 9\n");
    session.wait_for(kTof.prompt());
    session.type("x");
    session.wait_for("unknown command x\n");
    expect_waiting("");
    end();
}

}  // namespace
