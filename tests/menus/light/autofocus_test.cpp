// Transcripts of the autofocus menu.
#include <algorithm>

#include "tests/menus/light/stepped_menu.h"
#include "tests/menus/menu_run.h"
#include "tests/support/screens/light.h"

namespace {

using namespace menus;
using support::Calls;

std::string const kPositionPrompt = "AF new pos: \n";
std::string const kTypePrompt = "enter device type: 1: R47XXXX1 2: R47XXXX2 3: R47XXXX3\n";
std::string const kDoePrompt = "AF doe mode: 0 = doe is disabled, 1 = doe is enabled and off by trigger \n";
std::string const kForcePrompt = "AF doe led: 0 = doe follows doe mode, 1 = doe is forced to active\n";
std::string const kMaintenancePrompt = "set AF maintenance mode: 0 = disabled, 1 = enabled\n";

std::vector<std::string> const kErrorLabels = {
    "communication_error", "initialization_error", "miror_failure",      "motor_stuck",
    "no_mirror",           "no_valid_frequency",   "target_unreachable", "empty_calibration_table"};

// The lines of key 'e', those of the labels in `set` TRUE.
std::string errors(std::vector<std::string> const& set) {
    std::string lines;
    for (std::string const& label : kErrorLabels) {
        bool const flag = std::find(set.begin(), set.end(), label) != set.end();
        lines += label + (flag ? ": TRUE \n" : ": FALSE \n");
    }
    return lines;
}

TEST(AutofocusMenuTest, CommandsShowAndMoveTheModule) {
    expect_run(
        kAutofocus,
        {
            {'1', "", "Status of the Module: \tDone!\n", {"autofocus_t::get_status() = 0 [0]"}},
            {'2',
             "",
             "Revision of the Module: \t\nMajor \t1,\nMinor \t2,\nWeek \t47,\nYear \t21,\nNum \t4,\nPatch \t0,\n "
             "Done!\n",
             {"autofocus_t::get_revision() = 0 [{1, 2, 0, 4, 21, 47}]"}},
            {'3', "", "", {}},
            {'a', "", "\t\t get position : 100\n", {"autofocus_t::get_position() = 0 [100]"}},
            {'A', "100\n", kPositionPrompt, {"autofocus_t::set_position(100) = 0"}},
            {'d', "", "", {"autofocus_t::get_calibration_frequency() = -1"}},
            {'e',
             "",
             errors({"no_valid_frequency"}),
             {"autofocus_t::read_error() = 0 [{false, true, false, false, false, false, false, false, false}]"}},
            {'f', "", "Autofocus AVAILABLE\n", {"autofocus_t::is_present() = true"}},
            {'g', "", "\t\t min pos: 100, max pos: 2900\n", {"autofocus_t::get_position_limits() = 0 [100, 2900]"}},
            {'h', "1\n", kDoePrompt, {"autofocus_t::set_doe_mode(1) = 0"}},
            {'i', "1\n", kForcePrompt, {"autofocus_t::set_doe_force_active(true) = 0"}},
            {'l',
             "R47XXXX1\n",
             kTypePrompt + "\t\t min pos: 65, max pos: 1000\n",
             {"autofocus_t::get_position_limits_mm(\"R47XXXX1\") = 0 [65, 1000]"}},
            {'l',
             "R47XXXX2\n",
             kTypePrompt + "\t\t min pos: 110, max pos: 1500\n",
             {"autofocus_t::get_position_limits_mm(\"R47XXXX2\") = 0 [110, 1500]"}},
            {'m', "", "\t\t get position mm : 1000\n", {"autofocus_t::get_position_mm() = 0 [1000]"}},
            {'M', "1000\n", kPositionPrompt, {"autofocus_t::set_position_mm(1000) = 0"}},
            {'n', "1\n", kMaintenancePrompt, {"autofocus_t::set_maintenance_mode(true) = 0"}},
            {'g', "", "\t\t min pos: 0, max pos: 3000\n", {"autofocus_t::get_position_limits() = 0 [0, 3000]"}},
            {'b', "", "", {"autofocus_t::reset() = 0"}},
        });
}

TEST(AutofocusMenuTest, FailedReadsPrintNothingAndFailedWritesTheirLine) {
    for (std::string const status : {"-1", "6"}) {
        SCOPED_TRACE(status);
        std::string const end = "() = " + status;
        expect_run(
            kAutofocus,
            {
                {'a', "", "", {"autofocus_t::get_position" + end}},
                {'A',
                 "500\n",
                 kPositionPrompt + "\t\t error setting posisiton 500\n",
                 {"autofocus_t::set_position(500) = " + status}},
                {'b', "", "", {"autofocus_t::reset" + end}},
                {'c', "", "", {"autofocus_t::calibrate" + end}},
                {'d', "", "", {"autofocus_t::get_calibration_frequency" + end}},
                {'e', "", "", {"autofocus_t::read_error" + end}},
                {'g', "", "", {"autofocus_t::get_position_limits" + end}},
                {'h',
                 "1\n",
                 kDoePrompt + "\t\t error setting set_doe_mode 1\n",
                 {"autofocus_t::set_doe_mode(1) = " + status}},
                {'i',
                 "7\n",
                 kForcePrompt + "\t\t error setting set_doe_force_active 7\n",
                 {"autofocus_t::set_doe_force_active(true) = " + status}},
                {'l', "R47XXXX1\n", kTypePrompt, {"autofocus_t::get_position_limits_mm(\"R47XXXX1\") = " + status}},
                {'m', "", "", {"autofocus_t::get_position_mm" + end}},
                {'M',
                 "-70\n",
                 kPositionPrompt + "\t\t error setting position mm -70\n",
                 {"autofocus_t::set_position_mm(4294967226) = " + status}},
                {'n',
                 "1\n",
                 kMaintenancePrompt + "\t\t error setting maintenance mode \n",
                 {"autofocus_t::set_maintenance_mode(true) = " + status}},
            },
            with_scenario({"fault add autofocus_t::get_* status " + status,
                           "fault add autofocus_t::set_position* status " + status,
                           "fault add autofocus_t::set_doe* status " + status,
                           "fault add autofocus_t::set_maintenance_mode status " + status,
                           "fault add autofocus_t::re* status " + status,
                           "fault add autofocus_t::calibrate status " + status}));
    }
}

TEST(AutofocusMenuTest, InformationFailsOnNegativeResultsOnly) {
    expect_run(
        kAutofocus,
        {{'1', "", "Status of the Module: \t", {"autofocus_t::get_status() = -1"}, kInformationError},
         {'2', "", "Revision of the Module: \t", {"autofocus_t::get_revision() = -1"}, kInformationError},
         {'1', "", "Status of the Module: \tDone!\n", {"autofocus_t::get_status() = 2"}}},
        with_scenario({"fault add autofocus_t::get_status count 1 status -1",
                       "fault add autofocus_t::get_status status 2", "fault add autofocus_t::get_revision status -1"}));
}

TEST(AutofocusMenuTest, TypedWordIsTheDeviceType) {
    expect_run(kAutofocus,
               {{'l',
                 "2\n",
                 kTypePrompt + "\t\t min pos: 110, max pos: 1500\n",
                 {"autofocus_t::get_position_limits_mm(\"2\") = 0 [110, 1500]"}},
                {'l',
                 " \n R47XXXX3 \n",
                 kTypePrompt + "\t\t min pos: 270, max pos: 3000\n",
                 {"autofocus_t::get_position_limits_mm(\"R47XXXX3\") = 0 [270, 3000]"}},
                {'l', "r47-\"x\n", kTypePrompt, {"autofocus_t::get_position_limits_mm(\"r47-\\\"x\") = -1"}},
                {'l',
                 "any\n",
                 kTypePrompt + "\t\t min pos: 1, max pos: 65535\n",
                 {"autofocus_t::get_position_limits_mm(\"any\") = 0 [1, 65535]"}}},
               with_scenario({"fault add autofocus_t::get_position_limits_mm skip 3 value 1,65535"}));
}

TEST(AutofocusMenuTest, ErrorsPrintInTheirOwnOrderAndTheFirstFlagNever) {
    // Each flag of the record alone; the first one has no line.
    std::vector<std::string> const stored = {"",
                                             "no_valid_frequency",
                                             "initialization_error",
                                             "motor_stuck",
                                             "target_unreachable",
                                             "miror_failure",
                                             "no_mirror",
                                             "communication_error",
                                             "empty_calibration_table"};
    std::vector<Step> steps;
    std::vector<std::string> scenario;
    for (std::size_t flag = 0; flag < stored.size(); ++flag) {
        std::string values;
        std::string record;
        for (std::size_t i = 0; i < stored.size(); ++i) {
            values += (i == 0 ? "" : ",") + std::to_string(i == flag);
            record += std::string(i == 0 ? "" : ", ") + (i == flag ? "true" : "false");
        }
        scenario.push_back("fault add autofocus_t::read_error count 1 value " + values);
        steps.push_back({'e', "", errors({stored[flag]}), {"autofocus_t::read_error() = 0 [{" + record + "}]"}});
    }
    expect_run(kAutofocus, steps, with_scenario(scenario));
}

TEST(AutofocusMenuTest, AnyByteButZeroIsATrueFlag) {
    expect_run(kAutofocus,
               {{'e',
                 "",
                 errors({"no_valid_frequency", "motor_stuck"}),
                 {"autofocus_t::read_error() = 0 [{false, true, false, true, false, false, false, false, false}]"}}},
               with_scenario({"fault add autofocus_t::read_error value 0,2,0,255"}));
}

TEST(AutofocusMenuTest, NegativePositionIsPrintedAsItWasTyped) {
    expect_run(
        kAutofocus,
        {{'A',
          "-5\n",
          kPositionPrompt + "\t\t error setting posisiton -5\n",
          {"autofocus_t::set_position(4294967291) = -1"}},
         {'h', "-2\n", kDoePrompt + "\t\t error setting set_doe_mode -2\n", {"autofocus_t::set_doe_mode(-2) = -1"}}});
}

TEST(AutofocusMenuTest, AnyNumberButNoughtIsTrue) {
    expect_run(kAutofocus, {{'i', "7\n", kForcePrompt, {"autofocus_t::set_doe_force_active(true) = 0"}},
                            {'i', "0\n", kForcePrompt, {"autofocus_t::set_doe_force_active(false) = 0"}},
                            {'i', "-1\n", kForcePrompt, {"autofocus_t::set_doe_force_active(true) = 0"}},
                            {'n', "2\n", kMaintenancePrompt, {"autofocus_t::set_maintenance_mode(true) = 0"}},
                            {'n', "0\n", kMaintenancePrompt, {"autofocus_t::set_maintenance_mode(false) = 0"}},
                            {'n', "yes\n", kMaintenancePrompt, {"autofocus_t::set_maintenance_mode(false) = 0"}}});
}

TEST(AutofocusMenuTest, MistypedPositionIsNought) {
    expect_run(kAutofocus, {{'A',
                             "far away\n",
                             kPositionPrompt + "\t\t error setting posisiton 0\n",
                             {"autofocus_t::set_position(0) = -1"}}});
}

TEST(AutofocusMenuTest, PresenceIsTheOneOfTheConstruction) {
    // The module comes back after the menu has opened it.
    Menu missing = kAutofocus;
    missing.opening.back() = "autofocus_t::set_present() = false";
    expect_run(missing,
               {{'f', "", "Autofocus MISSING\n", {"autofocus_t::is_present() = false"}},
                {'a', "", "\t\t get position : 100\n", {"autofocus_t::get_position() = 0 [100]"}},
                {'f', "", "Autofocus MISSING\n", {"autofocus_t::is_present() = false"}}},
               with_scenario({"fault add autofocus_t::set_present value false"}));
    expect_run(kAutofocus,
               {{'f', "", "Autofocus MISSING\n", {"autofocus_t::is_present() = false"}},
                {'f', "", "Autofocus AVAILABLE\n", {"autofocus_t::is_present() = true"}}},
               with_scenario({"fault add autofocus_t::is_present count 1 value false"}));
}

TEST(AutofocusMenuTest, MissingModuleOrNodeFailsTheCommands) {
    Menu missing = kAutofocus;
    missing.opening.back() = "autofocus_t::set_present() = false";
    std::vector<Step> const steps = {{'f', "", "Autofocus MISSING\n", {"autofocus_t::is_present() = false"}},
                                     {'a', "", "", {"autofocus_t::get_position() = -1"}},
                                     {'e', "", "", {"autofocus_t::read_error() = -1"}}};
    expect_run(missing, steps, with_scenario({"set autofocus.present false"}));
    support::SessionOptions without_node;
    without_node.without = {"/dev/r47-autofocus-driver"};
    expect_run(missing, steps, without_node);
}

TEST(AutofocusMenuTest, KeysWithoutACommandShowTheMenuAgain) {
    expect_run(kAutofocus, ignored("BCDEFGHIJKLNOPQRSTUVWXYZjkopqrstuvwyz456789:;<=>?@[\\]^_`!/{|}~\x7f\xff"));
}

TEST(AutofocusMenuTest, CommandLinesAreFilledUp) {
    auto const run = support::run_console("fxx");
    for (char const key : std::string("aAbcdefghilmMn")) {
        auto const lines = lines_with(std::string("\t\t  ") + key + ": ", run.output);
        ASSERT_EQ(lines.size(), 1U) << key;
        EXPECT_EQ(lines[0].size(), 53U) << lines[0];
    }
}

class AutofocusClientTest : public ClientTest {};

TEST_F(AutofocusClientTest, TerminalDrivesTheMenuAndTheClientGetsNothing) {
    client.send("f\n");
    session.wait_for("n: AF set maintenance mode");
    session.wait_for("Please enter your option: ");
    session.type("a");
    session.wait_for("Your Option = a\n\t\t get position : 100\n");
    session.wait_for("Please enter your option: ");
    session.type("x");
    session.wait_for("Your Option = x\n");
    expect_waiting("");
    end();
}

TEST_F(AutofocusClientTest, AllNumbersAreTypedAtTheTerminal) {
    expect_as_at_the_terminal(kAutofocus, "123aA100\nabdefgh1\ni0\nlR47\nmM200\nn1\nn0\n");
    expect_waiting("");
    end();
}

class MovingAutofocusTest : public light::SteppedMenuTest {
protected:
    MovingAutofocusTest() : SteppedMenuTest(kAutofocus) {}
};

TEST_F(MovingAutofocusTest, MotorIsOnItsWayAtOnceAndThereLater) {
    expect('A', "1100\n", kPositionPrompt);
    expect('a', "", "\t\t get position : 100\n");
    session.control("step 400ms");
    expect('a', "", "\t\t get position : 500\n");
    session.control("step 600ms");
    expect('a', "", "\t\t get position : 1100\n");
    session.control("step 5s");
    expect('a', "", "\t\t get position : 1100\n");
    expect('m', "", "\t\t get position mm : 220\n");  // between 250 mm at 895 and 120 mm at 1795
}

TEST_F(MovingAutofocusTest, CalibrationYieldsItsFrequencyWhenItIsDone) {
    expect('c', "", "");
    session.control("step 1999ms");
    expect('d', "", "");
    expect('A', "500\n", kPositionPrompt + "\t\t error setting posisiton 500\n");
    session.control("step 1ms");
    expect('d', "", "\t\t get freq: 183hz\n");
    auto const calls = session.calls();
    EXPECT_NE(std::find(calls.begin(), calls.end(), "autofocus_t::calibrate() = 0"), calls.end());
    expect('e', "", errors({}));
    expect('A', "500\n", kPositionPrompt);
}

TEST_F(MovingAutofocusTest, UnreachableTargetAndStuckMotorAreFlaggedUntilTheReset) {
    expect('A', "2901\n", kPositionPrompt + "\t\t error setting posisiton 2901\n");
    expect('e', "", errors({"no_valid_frequency", "target_unreachable"}));
    session.control("set autofocus.motor.free false");
    expect('A', "2900\n", kPositionPrompt);
    expect('e', "", errors({"no_valid_frequency"}));
    session.control("step 500ms");
    expect('e', "", errors({"motor_stuck", "no_valid_frequency"}));
    session.control("set autofocus.motor.free true");
    expect('b', "", "");
    expect('e', "", errors({"no_valid_frequency"}));
}

TEST_F(MovingAutofocusTest, FaultyPartsRaiseTheirFlags) {
    session.control("set autofocus.mirror.healthy false");
    expect('c', "", "");
    session.control("step 2s");
    session.control("set autofocus.table.filled false");
    expect('e', "", errors({"miror_failure", "no_valid_frequency", "empty_calibration_table"}));
    expect('m', "", "");
    expect('M', "500\n", kPositionPrompt + "\t\t error setting position mm 500\n");
    expect('l', "R47XXXX1\n", kTypePrompt);
    session.control("set autofocus.mirror.fitted false");
    session.control("set autofocus.link false");
    expect('e', "", "");
    session.control("set autofocus.link true");
    expect(
        'e', "",
        errors({"communication_error", "miror_failure", "no_mirror", "no_valid_frequency", "empty_calibration_table"}));
}

TEST_F(MovingAutofocusTest, MillimetresFollowTheFittedDeviceType) {
    session.control("set autofocus.device_type R47XXXX3");
    expect('m', "", "\t\t get position mm : 3000\n");
    expect('M', "270\n", kPositionPrompt);
    session.control("step 2800ms");
    expect('m', "", "\t\t get position mm : 270\n");
    expect('a', "", "\t\t get position : 2900\n");
    expect('M', "3001\n", kPositionPrompt + "\t\t error setting position mm 3001\n");
}

}  // namespace
