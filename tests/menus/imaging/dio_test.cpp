// Transcripts of the digital I/O menu.
#include <sstream>

#include "hal/dio_pin_config.h"
#include "tests/menus/menu_run.h"
#include "tests/support/screens/imaging.h"

namespace {

using namespace menus;
using namespace screens;
using support::Calls;
using support::expect_transcript;
using support::run_console;

std::string const kConfigPrompts =
    "Setup DIO config: \n"
    "DIO Pin:"
    "DIO type 0-npn 1-pnp 2-pupu:"
    "DIO func 0-Out 1-OutIll 2-In 3-InTrigIm 4-InQuadrA 5-InQuadrB:"
    "DIO config 0-NO 1-NC :"
    "DIO invert 0-NO 1-INV:"
    "DIO off_del active:"
    "DIO off_del time:"
    "DIO on_del active:"
    "DIO on_del time:"
    "DIO pulse active:"
    "DIO pulse time:";

// What key 'F' prints of a pin, its eleven values given in the order of the printout.
std::string config_printout(std::vector<std::string> const& values) {
    char const* const labels[] = {"\n\nDIO Pin: ",
                                  "DIO type 0-npn 1-pnp 2-pupu: ",
                                  "DIO func 0-Out 1-OutIll 2-In 3-InTrigIm 4-InQuadrA 5-InQuadrB : ",
                                  "DIO config 0-NO 1-NC : ",
                                  "DIO invert 0-NO 1-INV: ",
                                  "DIO off_del active: ",
                                  "DIO off_del time: ",
                                  "DIO on_del active: ",
                                  "DIO on_del time: ",
                                  "DIO pulse active: ",
                                  "DIO pulse time: "};
    std::string text = "DIO Pin:";
    for (std::size_t i = 0; i < values.size(); ++i) {
        text += labels[i] + values[i] + "\n";
    }
    return text;
}

// A record as the journal has it: its fields in their own order, then the lines of the pins.
std::string record(std::string const& fields) {
    return "{" + fields + ", {0: 46, 1: 48, 2: 18, 3: 17, 4: 19, 5: 20}}";
}

std::string const kNewRecord = record("0, 0, 0, false, false, false, false, 0, 0, 0");

std::string set_config(std::string const& pin, std::string const& fields, std::string const& status) {
    return "rtu_t::set_io_pin_config(" + pin + ", " + record(fields) + ") = " + status;
}

TEST(DioTest, EveryKeyDoesItsCommand) {
    expect_run(
        kDio,
        {
            {'1', "", "Status of the Module: \tDone!\n", {"rtu_t::get_status() = 0 [0]"}},
            {'2',
             "",
             "Revision of the Module: \tThe RTU driver: \n\nMajor \t1,\nMinor \t6,\nWeek \t14,\nYear \t22,\nNum \t2,\n"
             "Patch \t0,\n Done!\n",
             {"rtu_t::get_revision() = 0 [{1, 6, 0, 2, 22, 14}]"}},
            {'3', "", "", {}},
            {'f',
             "4\n1\n5\n7\n-1\n0\n30\n2\n40\n0\n50\n",
             kConfigPrompts,
             {set_config("4", "1, 5, 1, true, true, false, false, 40, 30, 50", "0")}},
            {'F',
             "4\n",
             config_printout({"4", "1", "5", "1", "1", "0", "30", "1", "40", "0", "50"}),
             {"rtu_t::get_io_pin_config(4) = 0 [" + record("1, 5, 1, true, true, false, false, 40, 30, 50") + "]"}},
            {'h', "1\n1\n", "Value for pin :1", {"rtu_t::set_pin_value(1, true) = 0"}},
            {'H', "1\n", "DIO Pin:Value: 1\n", {"rtu_t::get_pin_value(1) = 0 [true]"}},
            {'p', "", "All DIO status: 000010\n", {"rtu_t::get_all_pin_values() = 0 [000010]"}},
            {'o', "", "", {"rtu_t::set_lightbar_col({100, 255, 0, 0}) = 0"}},
            {'O', "", "", {"rtu_t::set_lightbar_col({100, 0, 255, 255}) = 0"}},
        });
}

TEST(DioTest, FailuresShowDefaultsAndAreNotReported) {
    for (std::string const status : {"-1", "3"}) {
        SCOPED_TRACE(status);
        expect_run(kDio,
                   {
                       {'f',
                        "1\n0\n0\n0\n0\n0\n0\n0\n0\n0\n0\n",
                        kConfigPrompts,
                        {set_config("1", "0, 0, 0, false, false, false, false, 0, 0, 0", status)}},
                       {'F',
                        "3\n",
                        config_printout({"3", "0", "0", "0", "0", "0", "0", "0", "0", "0", "0"}),
                        {"rtu_t::get_io_pin_config(3) = " + status}},
                       {'h', "1\n1\n", "Value for pin :1", {"rtu_t::set_pin_value(1, true) = " + status}},
                       {'H', "1\n", "DIO Pin:Value: 0\n", {"rtu_t::get_pin_value(1) = " + status}},
                       {'p', "", "All DIO status: 000000\n", {"rtu_t::get_all_pin_values() = " + status}},
                       {'o', "", "", {"rtu_t::set_lightbar_col({100, 255, 0, 0}) = " + status}},
                       {'O', "", "", {"rtu_t::set_lightbar_col({100, 0, 255, 255}) = " + status}},
                   },
                   with_scenario({"fault add rtu_t::*et_* status " + status}));
    }
}

TEST(DioTest, FailedInformationIsReported) {
    expect_run(kDio,
               {
                   {'1', "", "Status of the Module: \t", {"rtu_t::get_status() = -1"}, kInformationError},
                   {'2', "", "Revision of the Module: \t", {"rtu_t::get_revision() = -1"}, kInformationError},
                   {'3', "", "", {}},
               },
               with_scenario({"fault add rtu_t::get_* status -1"}));
}

TEST(DioTest, DeadAndUnknownKeysAreNotValid) {
    std::vector<Step> steps;
    for (char const key : std::string("GjklmnACPXZ456789acegiqz?;")) {
        steps.push_back({key, "", std::string("Enter Valid option = ") + key, {}});
    }
    expect_run(kDio, steps);
}

TEST(DioTest, PinsZeroAndFiveHighReadThirtyThree) {
    expect_run(kDio, {
                         {'h', "0\n1\n", "Value for pin :0", {"rtu_t::set_pin_value(0, true) = 0"}},
                         {'h', "5\n1\n", "Value for pin :5", {"rtu_t::set_pin_value(5, true) = 0"}},
                         {'p', "", "All DIO status: 100001\n", {"rtu_t::get_all_pin_values() = 0 [100001]"}},
                     });
}

TEST(DioTest, OnlyPositiveValuesDriveThePinHigh) {
    std::vector<Step> steps;
    for (auto const& [typed, driven] :
         {std::pair("2", "true"), {"0", "false"}, {"2147483647", "true"}, {"-1", "false"}, {"high", "false"}}) {
        steps.push_back({'h',
                         std::string("3\n") + typed + "\n",
                         "Value for pin :3",
                         {std::string("rtu_t::set_pin_value(3, ") + driven + ") = 0"}});
    }
    expect_run(kDio, steps);
}

TEST(DioTest, LibrarySeesTheLowEightBitsOfThePin) {
    expect_run(kDio, {
                         {'h', "256\n1\n", "Value for pin :256", {"rtu_t::set_pin_value(0, true) = 0"}},
                         {'H', "256\n", "DIO Pin:Value: 1\n", {"rtu_t::get_pin_value(0) = 0 [true]"}},
                         {'H', "-256\n", "DIO Pin:Value: 1\n", {"rtu_t::get_pin_value(0) = 0 [true]"}},
                         {'F',
                          "257\n",
                          config_printout({"257", "0", "0", "0", "0", "0", "0", "0", "0", "0", "0"}),
                          {"rtu_t::get_io_pin_config(1) = 0 [" + kNewRecord + "]"}},
                         {'f',
                          "258\n0\n2\n0\n0\n0\n0\n0\n0\n0\n0\n",
                          kConfigPrompts,
                          {set_config("2", "0, 2, 0, false, false, false, false, 0, 0, 0", "0")}},
                     });
}

TEST(DioTest, PinsAboveFiveAreRefused) {
    expect_run(kDio, {
                         {'h', "6\n1\n", "Value for pin :6", {"rtu_t::set_pin_value(6, true) = -1"}},
                         {'H', "-1\n", "DIO Pin:Value: 0\n", {"rtu_t::get_pin_value(255) = -1"}},
                         {'F',
                          "6\n",
                          config_printout({"6", "0", "0", "0", "0", "0", "0", "0", "0", "0", "0"}),
                          {"rtu_t::get_io_pin_config(6) = -1"}},
                     });
}

TEST(DioTest, FieldThatIsNoNumberRepeatsTheFieldBefore) {
    expect_run(kDio, {
                         {'f',
                          "2\nx\n3\ny\n0\n1\nz\n0\n25\n?\n7\n",
                          kConfigPrompts,
                          {set_config("2", "2, 3, 1, false, false, true, true, 25, 1, 7", "0")}},
                         {'f',
                          "a\nb\nc\nd\ne\nf\ng\nh\ni\nj\nk\n",
                          kConfigPrompts,
                          {set_config("0", "0, 0, 0, false, false, false, false, 0, 0, 0", "0")}},
                     });
}

TEST(DioTest, CodesGoToTheLibraryUnchanged) {
    expect_run(kDio, {{'f',
                       "2\n-9\n77\n0\n0\n0\n-30\n0\n-40\n0\n-50\n",
                       kConfigPrompts,
                       {set_config("2", "-9, 77, 0, false, false, false, false, -40, -30, -50", "-1")}}});
}

TEST(DioTest, AnswersAreShownAsTheLibraryGivesThem) {
    expect_run(
        kDio,
        {
            {'F',
             "2\n",
             config_printout({"2", "-1", "9", "5", "1", "1", "-3", "0", "-2", "1", "-4"}),
             {"rtu_t::get_io_pin_config(2) = 0 [{-1, 9, 5, true, false, true, true, -2, -3, -4, {0: 0, 1: 0, 2: 0, "
              "3: 0, 4: 0, 5: 0}}]"}},
            {'p', "", "All DIO status: 111111\n", {"rtu_t::get_all_pin_values() = -1 [111111]"}},
            {'H', "0\n", "DIO Pin:Value: 1\n", {"rtu_t::get_pin_value(0) = -1 [true]"}},
        },
        with_scenario({"fault add rtu_t::get_io_pin_config value -1,9,5,1,0,1,1,-2,-3,-4",
                       "fault add rtu_t::get_all_pin_values status -1 value 63",
                       "fault add rtu_t::get_pin_value status -1 value true"}));
}

TEST(DioTest, PinNumberThatIsNoNumberIsZero) {
    expect_run(kDio, {
                         {'H', "five\n", "DIO Pin:Value: 0\n", {"rtu_t::get_pin_value(0) = 0 [false]"}},
                         {'h', "x\ny\n", "Value for pin :0", {"rtu_t::set_pin_value(0, false) = 0"}},
                     });
}

TEST(DioTest, ItsUnitIsOpenedOnTheFirstEntryAndKept) {
    std::string const visited = main_menu('a') + kDioStart + dio_menu('p') + "All DIO status: 000000\n" + dio_menu('x');
    std::string const read = "rtu_t::get_all_pin_values() = 0 [000000]";
    expect_transcript({}, "apxapxx", kStart + visited + visited + main_menu('x'), calls_of_visit(kDio, {read, read}));
}

TEST(DioTest, ItsUnitIsClosedBeforeThatOfTheRealTimeUnitMenu) {
    support::ConsoleSession session;
    session.type("axx");
    EXPECT_EQ(session.wait_for_exit(), 0);
    auto const journal = session.journal();
    ASSERT_EQ(journal.size(), 4U);
    EXPECT_EQ(support::numbered_call_of(journal[0]), R"(1 rtu_t::rtu_t("/dev/r47-rtu-driver", 2))");
    EXPECT_EQ(support::numbered_call_of(journal[1]), R"(2 rtu_t::rtu_t("/dev/r47-rtu-driver", 2))");
    EXPECT_EQ(support::numbered_call_of(journal[2]), "2 rtu_t::~rtu_t()");
    EXPECT_EQ(support::numbered_call_of(journal[3]), "1 rtu_t::~rtu_t()");
}

TEST(DioTest, PaddedLinesHaveTheirLengths) {
    auto const lines = lines_with("\t\t ", run_console("axx").output);
    std::size_t padded_lines = 0;
    for (char const key : std::string("fFGhHjklmnopx")) {
        for (std::string const& line : lines) {
            std::string const text = line.substr(3);
            if (text[0] == key && text[1] == '.' && text != "x. Exit (also 0)            \n" &&
                text.find("Menu") == std::string::npos && text.find("Test") == std::string::npos) {
                EXPECT_EQ(line.size(), key == 'p' ? 28U : 29U) << line;
                ++padded_lines;
            }
        }
    }
    EXPECT_EQ(padded_lines, 13U);
}

TEST(DioTest, LightBarTakesTheColoursAsTheyAreStated) {
    support::ConsoleSession session;
    for (auto const& [key, colour] : {std::pair('o', "100 255 0 0"), {'O', "100 0 255 255"}}) {
        session.type(std::string{'a', key, 'x'});
        session.wait_for(dio_menu(key));
        session.wait_for(dio_menu('x'));
        std::istringstream expected(colour);
        for (char const* name : {"brightness", "red", "green", "blue"}) {
            std::string value;
            expected >> value;
            std::string const shown = session.control(std::string("show --json rtu.lightbar.") + name);
            EXPECT_NE(shown.find("{\"value\":" + value + ","), std::string::npos) << shown;
        }
    }
    session.type("x");
    EXPECT_EQ(session.wait_for_exit(), 0);
}

// Delays and inputs in time: the clock stands but for the steps.
TEST(DioTest, InputFollowsItsWireAfterItsDelays) {
    support::SessionOptions options;
    options.clock = "stepped";
    support::ConsoleSession session(options);
    // Pin 2 an npn input, active while its wire is low, that falls back 30 ms late and rises 20 ms late.
    session.type("af2\n0\n2\n0\n0\n1\n30\n1\n20\n0\n0\n");
    session.wait_for("DIO pulse time:");
    session.wait_for(" Enter your option = ");
    auto const expect_value = [&session](char const* value) {
        session.type("H2\n");
        session.wait_for(std::string("Value: ") + value + "\n");
    };
    session.control("drive 2 low");
    expect_value("0");
    session.control("step 19ms");
    expect_value("0");
    session.control("step 1ms");
    expect_value("1");
    session.control("drive 2 high");
    session.control("step 29ms");
    expect_value("1");
    session.control("step 1ms");
    expect_value("0");
    session.type("xx");
    EXPECT_EQ(session.wait_for_exit(), 0);
}

TEST(DioTest, WithoutTheSupplyEveryPinReadsLow) {
    expect_run(kDio,
               {
                   {'h', "1\n1\n", "Value for pin :1", {"rtu_t::set_pin_value(1, true) = 0"}},
                   {'p', "", "All DIO status: 000000\n", {"rtu_t::get_all_pin_values() = 0 [000000]"}},
               },
               with_scenario({"power poe"}));
}

TEST(DioTest, ReadConfigRunsWithoutTheMenu) {
    support::SessionOptions options;
    options.entry_point = "read_dio_config";
    expect_transcript(options, "5\n", config_printout({"5", "0", "0", "0", "0", "0", "0", "0", "0", "0", "0"}),
                      calls_of_visit(kDio, {"rtu_t::get_io_pin_config(5) = 0 [" + kNewRecord + "]"}));
}

TEST(DioTest, ReadConfigWithoutAPinReadsNothing) {
    support::SessionOptions options;
    options.entry_point = "read_dio_config";
    support::ConsoleSession session(options);
    session.end_input();
    EXPECT_EQ(session.wait_for_exit(), 0);
    EXPECT_EQ(session.output(), "DIO Pin:");
    EXPECT_EQ(session.calls(), Calls{});
}

TEST(DioTest, TablesOfThePinsPairTheirDefaultLines) {
    using config_t = hal::dio_pin_config_t;
    auto const& pins = hal::registered_enum::enum_traits<config_t::ioctl_pins>::values;
    auto const& lines = hal::registered_enum::enum_traits<config_t::gpiod_lines>::values;
    int const expected_lines[] = {46, 48, 18, 17, 19, 20};
    config_t const config;
    ASSERT_EQ(pins.size(), 6U);
    ASSERT_EQ(lines.size(), 6U);
    ASSERT_EQ(config.pin_lines.size(), 6U);
    for (int i = 0; i < 6; ++i) {
        auto const at = static_cast<std::size_t>(i);
        EXPECT_EQ(static_cast<int>(pins[at]), i);
        EXPECT_EQ(static_cast<int>(lines[at]), expected_lines[i]);
        EXPECT_EQ(config.pin_lines.at(i), expected_lines[i]);
    }
}

// A client: everything comes from it, and every command with a result answers.
class DioClientTest : public ClientTest {
protected:
    DioClientTest() {
        client.send("a\n");
        session.wait_for("Started test program for dio kernel driver\n");
    }
};

TEST_F(DioClientTest, StationConfiguresReadsDrivesAndReadsAPin) {
    client.send("f\n2\n1\n3\n0\n0\n0\n0\n0\n0\n0\n0\n");
    EXPECT_EQ(client.receive(11), "21300000000");
    EXPECT_EQ(client.receive_reply(), "0;\\n");
    client.send("F\n2\n");
    EXPECT_EQ(client.receive_reply(), "22;1;3;0;0;0;0;0;0;0;0;\\n");
    client.send("p\n");
    EXPECT_EQ(client.receive_reply(), "0;\\n");
    session.control("drive 2 high");
    client.send("p\n");
    EXPECT_EQ(client.receive_reply(), "4;\\n");
    session.wait_for("All DIO status: 000100\n");
    client.send("H\n2\n");
    EXPECT_EQ(client.receive_reply(), "21;1;\\n");
    session.control("drive 2 low");
    client.send("p\n");
    EXPECT_EQ(client.receive_reply(), "0;\\n");
    client.send("x\nk\ni\nx\n");
    session.wait_for("sensor actual 1\n");  // the edge triggered a frame
    end();
}

TEST_F(DioClientTest, ValuesOfTheRecordAreSentInTheOrderOfThePrintout) {
    client.send("f\n4\n1\n5\n7\n-1\n0\n30\n2\n40\n0\n50\n");
    EXPECT_EQ(client.receive(15), "4157-1030240050");
    EXPECT_EQ(client.receive_reply(), "0;\\n");
    client.send("F\n4\n");
    EXPECT_EQ(client.receive_reply(), "44;1;5;1;1;0;30;1;40;0;50;\\n");
    client.send("x\n");
    end();
}

TEST_F(DioClientTest, StatusOfARefusedRecordIsTheAnswer) {
    client.send("f\n0\n9\n0\n0\n0\n0\n0\n0\n0\n0\n0\n");
    EXPECT_EQ(client.receive_reply(), "09000000000-1;\\n");
    client.send("f\n6\n0\n0\n0\n0\n0\n0\n0\n0\n0\n0\n");
    EXPECT_EQ(client.receive_reply(), "60000000000-1;\\n");
    session.control("fault add rtu_t::set_io_pin_config status 3");
    client.send("f\n0\n0\n0\n0\n0\n0\n0\n0\n0\n0\n0\n");
    EXPECT_EQ(client.receive_reply(), "000000000003;\\n");
    client.send("x\n");
    end();
}

TEST_F(DioClientTest, FailedReadsAnswerTheDefaults) {
    client.send("F\n6\n");
    EXPECT_EQ(client.receive_reply(), "66;0;0;0;0;0;0;0;0;0;0;\\n");
    client.send("H\n6\n");
    EXPECT_EQ(client.receive_reply(), "60;0;\\n");
    client.send("h\n0\n1\np\n");
    EXPECT_EQ(client.receive_reply(), "010;\\n");
    EXPECT_EQ(client.receive_reply(), "1;\\n");
    session.control("fault add rtu_t::get_all_pin_values status -1");
    client.send("p\n");
    EXPECT_EQ(client.receive_reply(), "0;\\n");
    client.send("x\n");
    end();
}

TEST_F(DioClientTest, PinIsDrivenHighByPositiveNumbersAlone) {
    for (auto const& [typed, echoed, value] : {std::tuple("1", "51", "1"),
                                               {"0", "50", "0"},
                                               {"2", "52", "1"},
                                               {"-1", "5-1", "0"},
                                               {"3", "53", "1"},
                                               {"high", "5high", "0"}}) {
        client.send("h\n5\n");
        session.wait_for("Value for pin :5");
        client.send(std::string(typed) + "\n");
        EXPECT_EQ(client.receive_reply(), std::string(echoed) + "0;\\n");
        client.send("H\n5\n");
        EXPECT_EQ(client.receive_reply(), "5" + std::string(value) + ";" + value + ";\\n");
    }
    client.send("x\n");
    end();
}

TEST_F(DioClientTest, PinCommandsEchoAndAnswer) {
    client.send("h\n0\n1\nh\n5\n9\np\n");
    EXPECT_EQ(client.receive(5), "010;\\");
    EXPECT_EQ(client.receive_reply(), "n590;\\n");
    EXPECT_EQ(client.receive_reply(), "33;\\n");
    client.send("h\n6\n1\n");
    EXPECT_EQ(client.receive_reply(), "61-1;\\n");
    client.send("H\n5\n");
    EXPECT_EQ(client.receive_reply(), "51;1;\\n");
    client.send("H\nnone\n");
    EXPECT_EQ(client.receive_reply(), "none1;1;\\n");
    client.send("F\n256\n");
    EXPECT_EQ(client.receive_reply(), "256256;0;0;0;0;0;0;0;0;0;0;\\n");
    client.send("F\nnone\n");
    EXPECT_EQ(client.receive_reply(), "none0;0;0;0;0;0;0;0;0;0;0;\\n");
    client.send("x\n");
    end();
}

TEST_F(DioClientTest, StatusOfTheLightBarWaitsForTheNextReply) {
    session.control("fault add rtu_t::set_lightbar_col skip 1 count 1 status -3");
    client.send("o\nO\no\np\n");
    EXPECT_EQ(client.receive_reply(), "0;-3;0;0;\\n");
    client.send("O\nx\n");
    expect_waiting("0;");
    end();
}

TEST_F(DioClientTest, KeysWithoutACommandSendNothing) {
    client.send("G\nj\n1\n2\n3\nx\n");
    session.wait_for("Enter Valid option = G");
    expect_waiting("");
    end();
}

}  // namespace
