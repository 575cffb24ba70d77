// Transcripts of the real-time unit menu.
#include "tests/menus/menu_run.h"
#include "tests/support/screens/imaging.h"

namespace {

using namespace menus;
using namespace screens;
using support::Calls;
using support::expect_transcript;
using support::run_console;

std::string const kImagerPrompt = "Enter a value for imager type: 1- imx296, 2- ix567 \n";

TEST(RtuTest, EveryKeyDoesItsCommand) {
    expect_run(
        kRtu,
        {
            {'1', "", "Status of the Module: \tDone!\n", {"rtu_t::get_status() = 0 [0]"}},
            {'2',
             "",
             "Revision of the Module: \tThe RTU driver: \n\nMajor \t1,\nMinor \t6,\nWeek \t14,\nYear \t22,\nNum \t2,\n"
             "Patch \t0,\n Done!\n",
             {"rtu_t::get_revision() = 0 [{1, 6, 0, 2, 22, 14}]"}},
            {'3', "", "", {}},
            {'a', "2\n", kImagerPrompt, {"rtu_t::set_imager_type(2) = 0"}},
            {'A', "", "imager type: 2\n", {"rtu_t::get_imager_type() = 0 [2]"}},
            {'b',
             "4294967295\n",
             "Enter a value for trigger_prohibited_time: sensor set  trigger_prohibited_time: 4294967295\n",
             {"rtu_t::set_trigger_prohibited_time(4294967295) = 0"}},
            {'B',
             "",
             "sensor actual trigger_prohibited_time: 4294967295\n",
             {"rtu_t::get_trigger_prohibited_time() = 0 [4294967295]"}},
            {'c',
             "150\n",
             "Enter a value for exposure_offset: sensor set  exposure_offset: 150\n",
             {"rtu_t::set_exposure_offset(150) = 0"}},
            {'C', "", "sensor actual exposure_offset: 150\n", {"rtu_t::get_exposure_offset() = 0 [150]"}},
            {'e',
             "5000\n",
             "Enter a value for exposure: sensor set  exposure: 5000\n",
             {"rtu_t::set_exposure(5000) = 0"}},
            {'E', "", "sensor actual exposure: 5000\n", {"rtu_t::get_exposure() = 0 [5000]"}},
            {'m', "", "", {"rtu_t::single_shot(true) = 0"}},
            {'t',
             "25\n",
             "Enter a value for fps: sensor set  fps: 25\n",
             {"rtu_t::set_trigger_mode(true) = 0", "rtu_t::set_aquisition_fps(25) = 0"}},
            {'T', "", "", {"rtu_t::set_trigger_mode(false) = 0"}},
            {'p', "", "24V power source detected, DIO available \n", {"rtu_t::dio_available() = 0 [true]"}},
        });
}

// Every key while every call fails, with what the module information says of it.
std::vector<Step> failing_steps(std::string const& information_error) {
    return {
        {'1', "", "Status of the Module: \t", {"rtu_t::get_status() = -1"}, information_error},
        {'2', "", "Revision of the Module: \t", {"rtu_t::get_revision() = -1"}, information_error},
        {'3', "", "", {}},
        {'a', "1\n", kImagerPrompt, {"rtu_t::set_imager_type(1) = -1"}},
        {'A', "", "imager type: 0\n", {"rtu_t::get_imager_type() = -1"}},
        {'b',
         "1\n",
         "Enter a value for trigger_prohibited_time: sensor error to set trigger_prohibited_time\n",
         {"rtu_t::set_trigger_prohibited_time(1) = -1"}},
        {'B', "", "sensor error to get trigger_prohibited_time\n", {"rtu_t::get_trigger_prohibited_time() = -1"}},
        {'c',
         "1\n",
         "Enter a value for exposure_offset: sensor error to set exposure_offset\n",
         {"rtu_t::set_exposure_offset(1) = -1"}},
        {'C', "", "sensor error to get exposure_offset\n", {"rtu_t::get_exposure_offset() = -1"}},
        {'e', "1\n", "Enter a value for exposure: sensor error to set exposure\n", {"rtu_t::set_exposure(1) = -1"}},
        {'E', "", "sensor error to get exposure\n", {"rtu_t::get_exposure() = -1"}},
        {'m', "", "", {"rtu_t::single_shot(true) = -1"}},
        {'t',
         "25\n",
         "Enter a value for fps: sensor error to set fps\n",
         {"rtu_t::set_trigger_mode(true) = -1", "rtu_t::set_aquisition_fps(25) = -1"}},
        {'T', "", "", {"rtu_t::set_trigger_mode(false) = -1"}},
        {'p', "", "", {"rtu_t::dio_available() = -1"}},
    };
}

TEST(RtuTest, FailuresAreReportedOnlyWhereTheCommandTells) {
    expect_run(kRtu, failing_steps(kInformationError),
               with_scenario({"fault add rtu_t::*et_* status -1", "fault add rtu_t::single_shot status -1",
                              "fault add rtu_t::dio_available status -1"}));
}

TEST(RtuTest, PositiveStatusFailsSettingsButNeitherInformationNorSupply) {
    expect_run(
        kRtu,
        {
            {'1', "", "Status of the Module: \tDone!\n", {"rtu_t::get_status() = 3"}},
            {'2',
             "",
             "Revision of the Module: \tThe RTU driver: \n\nMajor \t0,\nMinor \t0,\nWeek \t0,\nYear \t0,\nNum \t0,\n"
             "Patch \t0,\n Done!\n",
             {"rtu_t::get_revision() = 3"}},
            {'E', "", "sensor error to get exposure\n", {"rtu_t::get_exposure() = 3"}},
            {'e',
             "50\n",
             "Enter a value for exposure: sensor error to set exposure\n",
             {"rtu_t::set_exposure(50) = 3"}},
            {'t',
             "25\n",
             "Enter a value for fps: sensor error to set fps\n",
             {"rtu_t::set_trigger_mode(true) = 3", "rtu_t::set_aquisition_fps(25) = 3"}},
            {'p', "", "24V power source detected, DIO available \n", {"rtu_t::dio_available() = 3 [true]"}},
            {'p', "", "POE detected, DIO NOT available \n", {"rtu_t::dio_available() = -2"}},
        },
        with_scenario({"fault add rtu_t::*et_* status 3", "fault add rtu_t::dio_available count 1 status 3 value true",
                       "fault add rtu_t::dio_available status -2"}));
}

TEST(RtuTest, FailedImagerReadPrintsTheLastType) {
    expect_run(kRtu,
               {
                   {'a', "2\n", kImagerPrompt, {"rtu_t::set_imager_type(2) = 0"}},
                   {'A', "", "imager type: 2\n", {"rtu_t::get_imager_type() = 0 [2]"}},
                   {'A', "", "imager type: 2\n", {"rtu_t::get_imager_type() = -1"}},
               },
               with_scenario({"fault add rtu_t::get_imager_type skip 1 status -1"}));
}

TEST(RtuTest, UnknownImagerGoesToTheLibraryUnchangedAndIsNotReported) {
    expect_run(kRtu, {
                         {'a', "-7\n", kImagerPrompt, {"rtu_t::set_imager_type(-7) = -1"}},
                         {'A', "", "imager type: 0\n", {"rtu_t::get_imager_type() = 0 [0]"}},
                     });
}

TEST(RtuTest, UnknownImagerIsPrintedAsTheLibraryGivesIt) {
    expect_run(kRtu, {{'A', "", "imager type: -7\n", {"rtu_t::get_imager_type() = 0 [-7]"}}},
               with_scenario({"fault add rtu_t::get_imager_type value -7"}));
}

TEST(RtuTest, RefusedTriggerModeIsIgnored) {
    expect_run(kRtu,
               {{'t',
                 "25\n",
                 "Enter a value for fps: sensor set  fps: 25\n",
                 {"rtu_t::set_trigger_mode(true) = -1", "rtu_t::set_aquisition_fps(25) = 0"}}},
               with_scenario({"fault add rtu_t::set_trigger_mode status -1"}));
}

TEST(RtuTest, OtherKeysAreIgnored) {
    expect_run(kRtu, ignored("456789:@DFGHZdfghz?;"));
}

TEST(RtuTest, RefusedRateLeavesTriggerContinuous) {
    support::ConsoleSession session;
    session.type("bt100000\n");
    session.wait_for("Enter a value for fps: sensor error to set fps\n");
    session.wait_for(rtu_menu('t').substr(0, 100));
    EXPECT_NE(session.control("show rtu.trigger.continuous").find("true"), std::string::npos);
    session.type("xx");
    EXPECT_EQ(session.wait_for_exit(), 0);
    EXPECT_EQ(session.calls(), (Calls{"rtu_t::set_trigger_mode(true) = 0", "rtu_t::set_aquisition_fps(100000) = -1"}));
}

TEST(RtuTest, NegativeRateIsPrintedAsALargeNumber) {
    expect_run(kRtu,
               {{'t',
                 "-1\n",
                 "Enter a value for fps: sensor set  fps: 4294967295\n",
                 {"rtu_t::set_trigger_mode(true) = 0", "rtu_t::set_aquisition_fps(4294967295) = 0"}}},
               with_scenario({"fault add rtu_t::set_aquisition_fps status 0"}));
}

TEST(RtuTest, EntryThatDoesNotConvertKeepsTheLastNumber) {
    expect_run(kRtu, {
                         {'t',
                          "abc\n",
                          "Enter a value for fps: sensor error to set fps\n",
                          {"rtu_t::set_trigger_mode(true) = 0", "rtu_t::set_aquisition_fps(0) = -1"}},
                         {'t',
                          "30\n",
                          "Enter a value for fps: sensor set  fps: 30\n",
                          {"rtu_t::set_trigger_mode(true) = 0", "rtu_t::set_aquisition_fps(30) = 0"}},
                         {'t',
                          "fast\n",
                          "Enter a value for fps: sensor set  fps: 30\n",
                          {"rtu_t::set_trigger_mode(true) = 0", "rtu_t::set_aquisition_fps(30) = 0"}},
                         {'a', "none\n", kImagerPrompt, {"rtu_t::set_imager_type(30) = -1"}},
                         {'e',
                          "long\n",
                          "Enter a value for exposure: sensor error to set exposure\n",
                          {"rtu_t::set_exposure(0) = -1"}},
                     });
}

TEST(RtuTest, SettingsPersistWhenTheMenuIsLeft) {
    expect_transcript({}, "bc77\nxbCxx",
                      output_before(kRtu) + rtu_menu('c') +
                          "Enter a value for exposure_offset: sensor set  exposure_offset: 77\n" + rtu_menu('x') +
                          main_menu('b') + kRtuStart + rtu_menu('C') + "sensor actual exposure_offset: 77\n" +
                          rtu_menu('x') + main_menu('x'),
                      {"rtu_t::set_exposure_offset(77) = 0", "rtu_t::get_exposure_offset() = 0 [77]"});
}

TEST(RtuTest, ExposureSetHereIsReadInTheCameraMenu) {
    auto const run = run_console("be2500\nxkfxx");
    EXPECT_NE(run.output.find(camera_menu('f') + "sensor actual exposure: 2500\n"), std::string::npos) << run.output;
}

TEST(RtuTest, PoweredOverEthernetHasNoDio) {
    expect_run(kRtu, {{'p', "", "POE detected, DIO NOT available \n", {"rtu_t::dio_available() = 0 [false]"}}},
               with_scenario({"power poe"}));
}

TEST(RtuTest, MissingNodeFailsEveryCall) {
    support::SessionOptions options;
    options.without = {"/dev/r47-rtu-driver"};
    expect_run(kRtu, failing_steps("Failed read rev\n: No such file or directory\n"), options);
}

// Objects and functions that no menu tells apart or reaches.

TEST(RtuTest, UnitIsOpenedBeforeMain) {
    support::SessionOptions options;
    options.entry_point = "nothing";
    support::ConsoleSession session(options);
    EXPECT_EQ(session.wait_for_exit(), 0);
    auto const journal = session.journal();
    ASSERT_EQ(journal.size(), 2U);
    EXPECT_EQ(support::numbered_call_of(journal[0]), R"(1 rtu_t::rtu_t("/dev/r47-rtu-driver", 2))");
    EXPECT_EQ(support::numbered_call_of(journal[1]), "1 rtu_t::~rtu_t()");
}

TEST(RtuTest, VersionIsTheLibrarysAnswer) {
    support::SessionOptions options;
    options.entry_point = "rtu_version";
    options.scenario = {"fault add rtu_t::get_revision skip 1 status -5"};
    expect_transcript(options, "", "returned 0: 1 6 0 2 22 14\nreturned -5: 1 6 0 2 22 14\n",
                      {"rtu_t::get_revision() = 0 [{1, 6, 0, 2, 22, 14}]", "rtu_t::get_revision() = -5"});
}

TEST(RtuTest, DelegateIsAskedInOrderWhateverItAnswers) {
    for (std::string const status : {"0", "-1"}) {
        support::SessionOptions options;
        options.entry_point = "rtu_delegate";
        if (status == "-1") {
            options.scenario = {"fault add rtu_delegate_t::get_* status -1"};
        }
        Calls expected{R"(rtu_delegate_t::rtu_delegate_t("/dev/r47-rtu-driver", 2))"};
        for (auto const& [operation, answer] : {std::pair("get_status", "0"),
                                                {"get_revision", "{1, 6, 0, 2, 22, 14}"},
                                                {"get_heartbeat_timeout", "1000"}}) {
            expected.push_back(std::string("rtu_delegate_t::") + operation + "() = " + status +
                               (status == "0" ? std::string(" [") + answer + "]" : ""));
        }
        expected.push_back("rtu_delegate_t::~rtu_delegate_t()");
        expect_transcript(options, "", "returned 0\n", expected);
    }
}

// A client: its options come from the terminal, imager type and rate from the client.
class RtuClientTest : public ClientTest {
protected:
    RtuClientTest() {
        client.send("b\n");
        wait_for_menu();
    }

    void wait_for_menu() { session.wait_for(kRtu.prompt()); }
};

TEST_F(RtuClientTest, RateComesFromTheClientAndItsStatusWaits) {
    session.type("t\n");
    session.wait_for("Enter a value for fps: ");
    client.send("25\n");
    EXPECT_EQ(client.receive(2), "25");
    wait_for_menu();
    session.type("t\n");
    session.wait_for("Enter a value for fps: ");
    client.send("abc\n");
    EXPECT_EQ(client.receive(3), "abc");
    session.wait_for("sensor set  fps: 25\n");
    wait_for_menu();
    session.type("t\n");
    session.wait_for("Enter a value for fps: ");
    client.send("-1\n");
    EXPECT_EQ(client.receive(2), "-1");
    wait_for_menu();
    session.type("x\n");
    expect_waiting("0;0;-1;");
    EXPECT_EQ(end(), (Calls{"rtu_t::set_trigger_mode(true) = 0", "rtu_t::set_aquisition_fps(25) = 0",
                            "rtu_t::set_trigger_mode(true) = 0", "rtu_t::set_aquisition_fps(25) = 0",
                            "rtu_t::set_trigger_mode(true) = 0", "rtu_t::set_aquisition_fps(4294967295) = -1"}));
}

TEST_F(RtuClientTest, WhatTheOperatorTypesWhileTheClientIsAskedWaitsForTheMenu) {
    session.type("tx\n");  // the second key in the line of the first, the third in a line of its own
    session.wait_for("Enter a value for fps: ");
    session.type("x\n");
    client.send("25\n");
    EXPECT_EQ(client.receive(2), "25");
    session.wait_for("Your Option = x\n");
    session.wait_for("\t\t Your Option = x\n");  // the second 'x' is the local menu's
    EXPECT_EQ(session.wait_for_exit(), 0);
    EXPECT_EQ(session.calls(), (Calls{"rtu_t::set_trigger_mode(true) = 0", "rtu_t::set_aquisition_fps(25) = 0"}));
}

// A terminal, where the menu reads ahead.
TEST(RtuTerminalTest, WhatIsTypedBeforeControlDWaitsForTheMenu) {
    support::SessionOptions options;
    options.arguments = {"socket"};
    options.terminal = true;
    support::ConsoleSession session(options);
    support::StationClient client;
    session.wait_for("x. Exit (also 0)");
    client.send("b\n");
    session.wait_for("x: Return to main");
    session.wait_for("Please enter your option: ");
    session.type("tA\n");
    session.wait_for("Enter a value for fps: ");
    session.type("E\n\x04");
    session.wait_for("imager type: 0\r\n");
    session.wait_for("sensor actual exposure: 10000\r\n");
    session.wait_for("Please enter your option: ");
    session.type("a\n");
    session.wait_for("Enter a value for imager type: 1- imx296, 2- ix567 \r\n");
    session.type("x\n");  // stays the menu's
    client.send("2\n");
    EXPECT_EQ(client.receive(1), "2");
    client.send("A\nx\n");
    EXPECT_EQ(client.receive_reply(), "0;\\n");
    session.wait_for("Entered Option = x");
    session.type("x\n");
    EXPECT_EQ(session.wait_for_exit(), 0);
    EXPECT_EQ(session.calls(), (Calls{"rtu_t::get_imager_type() = 0 [0]", "rtu_t::get_exposure() = 0 [10000]",
                                      "rtu_t::set_imager_type(2) = 0"}));
}

TEST_F(RtuClientTest, StatusThatWaitsIsThatOfTheRateAlone) {
    session.control("fault add rtu_t::set_trigger_mode status -1");
    session.control("fault add rtu_t::set_aquisition_fps skip 1 status 3");
    for (int i = 0; i < 2; ++i) {
        session.type("t\n");
        session.wait_for("Enter a value for fps: ");
        client.send("25\n");
        wait_for_menu();
    }
    session.type("x\n");
    EXPECT_EQ(client.receive(4), "2525");
    expect_waiting("0;3;");
    end();
}

TEST_F(RtuClientTest, ImagerTypeThatIsNoNumberIsTheLastNumber) {
    session.type("a\n");
    session.wait_for(kImagerPrompt);
    client.send("1\n");
    wait_for_menu();
    session.type("a\n");
    session.wait_for(kImagerPrompt);
    client.send("none\n");
    wait_for_menu();
    session.type("x\n");
    EXPECT_EQ(client.receive(5), "1none");
    EXPECT_EQ(end(), (Calls{"rtu_t::set_imager_type(1) = 0", "rtu_t::set_imager_type(1) = 0"}));
}

TEST_F(RtuClientTest, ImagerTypeComesFromTheClientAndIsNotAnswered) {
    session.type("a\n");
    session.wait_for(kImagerPrompt);
    client.send("2\n");
    EXPECT_EQ(client.receive(1), "2");
    wait_for_menu();
    session.type("A\n");
    session.wait_for("imager type: 2\n");
    wait_for_menu();
    session.type("x\n");
    expect_waiting("");
    end();
}

TEST_F(RtuClientTest, TimingValuesComeFromTheTerminalAndAreNotSent) {
    session.type("e1234\nEb5\npx\n");
    session.wait_for("sensor set  exposure: 1234\n");
    session.wait_for("sensor actual exposure: 1234\n");
    session.wait_for("sensor set  trigger_prohibited_time: 5\n");
    session.wait_for("24V power source detected, DIO available \n");
    expect_waiting("");
    end();
}

}  // namespace
