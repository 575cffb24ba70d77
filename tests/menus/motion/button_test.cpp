// Transcripts of the button test, at the terminal and for a client, and what presses do in it.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/menus/motion/motion_run.h"
#include "tests/support/screens/motion.h"

namespace {

using namespace motion;
using namespace screens;
using support::Calls;
using support::ConsoleSession;
using support::run_console;
using support::SessionOptions;
using support::StationClient;

Calls start_calls(int line = 82) {
    return {button_construction(line), kRtuConstruction, "button_t::irq_callback_hold(false) = 0"};
}

Calls const kEndCalls = {"rtu_t::~rtu_t()", "button_t::~button_t()"};

std::string transcript(std::string const& of_keys) {
    return visit('t', "Detected device R47" + of_keys + button_menu('x'));
}

std::string interrupt(char status) {
    return std::string("Starting read: 0\nIrq status: ") + status + "\n";
}

TEST(ButtonMenuTest, StartsAndLeaves) {
    auto const run = run_console("txx", stepped());
    EXPECT_EQ(run.output, transcript(""));
    EXPECT_EQ(run.calls, start_calls() + kEndCalls);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 0);
}

TEST(ButtonMenuTest, InterruptLineIsRead) {
    auto const run = run_console("trxx", stepped());
    EXPECT_EQ(run.output, transcript(button_menu('r') + interrupt('0')));
    EXPECT_EQ(run.calls, start_calls() + Calls{"button_t::irq_read() = 0 [false]"} + kEndCalls);
}

TEST(ButtonMenuTest, PressedButtonReadsOne) {
    auto const run = run_console("trxx", stepped({"button down"}));
    EXPECT_EQ(run.output, transcript(button_menu('r') + interrupt('1')));
}

TEST(ButtonMenuTest, FailedReadShowsZero) {
    auto const run = run_console("trxx", stepped({"button down", "fault add button_t::irq_read status -1",
                                                  "fault add button_t::irq_callback_hold status -1"}));
    EXPECT_EQ(run.output, transcript(button_menu('r') + interrupt('0')));
    Calls const expected{button_construction(82), kRtuConstruction, "button_t::irq_callback_hold(false) = -1",
                         "button_t::irq_read() = -1"};
    EXPECT_EQ(run.calls, expected + kEndCalls);
    EXPECT_EQ(run.errors, "");
}

TEST(ButtonMenuTest, AllOtherKeysShowTheMenuAgain) {
    std::string const keys = "abcdefghijklmnopqstuvwyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789;-";
    std::string shown;
    for (char const key : keys) {
        shown += button_menu(key);
    }
    auto const run = run_console("t" + keys + "xx", stepped());
    EXPECT_EQ(run.output, transcript(shown));
    EXPECT_EQ(run.calls, start_calls() + kEndCalls);
}

TEST(ButtonMenuTest, OtherVariantHasItsButtonOnLine44) {
    SessionOptions options = stepped({"button down"});
    options.without = {"/dev/r47-rtu-driver", "/dev/r47-autofocus-driver", "/dev/r47-illumination-driver"};
    auto const run = run_console("trxx", options);
    EXPECT_EQ(run.output, visit('t', button_menu('r') + interrupt('1') + button_menu('x')));
    EXPECT_EQ(run.calls, start_calls(44) + Calls{"button_t::irq_read() = 0 [true]"} + kEndCalls);
}

TEST(ButtonMenuTest, EndOfInputLeavesTheMenu) {
    ConsoleSession session(stepped());
    session.type("t");
    session.end_input();
    session.wait_for(button_menu('x') + main_menu());
    EXPECT_EQ(session.calls().back(), "button_t::~button_t()");
}

TEST(ButtonMenuTest, ClientGetsTheInterruptStatusAsAReply) {
    SessionOptions options = stepped();
    options.arguments = {"socket"};
    ConsoleSession session(options);
    StationClient client;
    client.send("t\nr\n");
    EXPECT_EQ(client.receive_reply(), "0;\\n");
    session.control("button down");
    client.send("r\n");
    EXPECT_EQ(client.receive_reply(), "1;\\n");
    client.send("q\nx\nx\n");
    session.wait_for("Irq status: 1\n");
    session.wait_for("\t\tYour option = q\n");
    session.wait_for("\t\tYour option = x\n");
    session.wait_for("Entered Option = x\n");
    session.type("x\n");
    EXPECT_EQ(session.wait_for_exit(), 0);
}

TEST(ButtonMenuTest, LostClientLeavesTheMenu) {
    SessionOptions options = stepped();
    options.arguments = {"socket"};
    ConsoleSession session(options);
    StationClient client;
    client.send("t\n");
    session.wait_for(kButtonMenu);
    client.close();
    session.wait_for("\t\tYour option = x\n");
    session.type("x\n");
    EXPECT_EQ(session.wait_for_exit(), 0);
    auto const calls = session.calls();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "button_t::~button_t()"), 1);
}

std::string called(std::string const& action) {
    return "###   void " + action + "() called \n";
}

// The button test at its prompt; the button is pressed by the device's control.
class ButtonScenarioTest : public testing::Test {
protected:
    ButtonScenarioTest() {
        session.type("t");
        session.wait_for(kButtonMenu);
    }

    // What a press of this length prints.
    std::string press(std::string const& length) {
        session.control("press " + length);
        session.control("step " + length);
        session.control("step 10s");
        session.type("q");
        std::size_t const before = printed;
        session.wait_for(button_menu('q').substr(kButtonMenu.size()) + kButtonMenu);
        printed = session.output().size();
        std::string const text = session.output().substr(before);
        return text.substr(0, text.find("\t\tYour option"));
    }

    Calls later_calls() { return calls_from(start_calls().size(), session.calls()); }

    ConsoleSession session{stepped()};
    std::size_t printed = session.output().size();
};

TEST_F(ButtonScenarioTest, LengthOfThePressDecidesWhatIsCalled) {
    session.type("q");
    session.wait_for(kButtonMenu);
    printed = session.output().size();
    EXPECT_EQ(press("49ms"), "");
    EXPECT_EQ(press("1249ms"), "");
    EXPECT_EQ(press("1250ms"), called("testButtonRelease2"));
    EXPECT_EQ(press("2s"), called("testButtonp2") + called("testButtonRelease2"));
    EXPECT_EQ(press("2250ms"), called("testButtonp2") + called("testButtonRelease3"));
    EXPECT_EQ(press("4s"), called("testButtonp2") + called("testButtonp4") + called("testButtonRelease3"));
    EXPECT_EQ(press("4250ms"), called("testButtonp2") + called("testButtonp4") + called("testButtonRelease5"));
    EXPECT_EQ(press("60s"), called("testButtonp2") + called("testButtonp4") + called("testButtonRelease5"));
}

TEST_F(ButtonScenarioTest, PressesColourTheLightBar) {
    session.control("press 2s");
    session.control("step 2s");
    Calls const cyan{"callback button_t::press_records(1)", "rtu_t::set_lightbar_col({100, 0, 255, 255}) = 0",
                     "callback button_t::release_records(1)"};
    EXPECT_EQ(later_calls(), cyan);
    session.control("button down");
    session.control("step 4s");
    Calls const blue{"callback button_t::press_records(1)", "rtu_t::set_lightbar_col({100, 0, 255, 255}) = 0",
                     "callback button_t::press_records(3)", "rtu_t::set_lightbar_col({100, 0, 0, 255}) = 0"};
    EXPECT_EQ(later_calls(), cyan + blue);
    session.control("button up");
    session.control("step 0s");
    EXPECT_EQ(later_calls(), cyan + blue + Calls{"callback button_t::release_records(2)"});
}

TEST_F(ButtonScenarioTest, RefusedColourIsIgnored) {
    session.control("fault add rtu_t::set_lightbar_col status -1");
    session.control("press 2s");
    session.control("step 2s");
    EXPECT_EQ(later_calls(),
              (Calls{"callback button_t::press_records(1)", "rtu_t::set_lightbar_col({100, 0, 255, 255}) = -1",
                     "callback button_t::release_records(1)"}));
    session.type("xx");
    EXPECT_EQ(session.wait_for_exit(), 0);
    EXPECT_NE(session.output().find(called("testButtonp2")), std::string::npos);
    EXPECT_EQ(session.errors(), "");
}

TEST_F(ButtonScenarioTest, SecondEntryColoursThroughItsOwnUnit) {
    session.type("xt");
    session.wait_for(kButtonMenu);
    session.control("press 2s");
    session.control("step 2s");
    session.type("xx");
    EXPECT_EQ(session.wait_for_exit(), 0);
    int object = 0;
    for (std::string const& line : session.journal()) {
        if (line.find("set_lightbar_col") != std::string::npos) {
            object = support::object_of(line);
        }
    }
    EXPECT_EQ(object, 5);  // 1 before main, then button and unit twice
}

TEST_F(ButtonScenarioTest, NothingHappensAfterTheMenu) {
    session.control("button down");
    session.type("x");
    session.wait_for(main_menu());
    std::size_t const calls = session.calls().size();
    session.control("step 10s");
    session.control("button up");
    session.control("step 10s");
    EXPECT_EQ(session.calls().size(), calls);
    session.type("x");
    EXPECT_EQ(session.wait_for_exit(), 0);
}

// The real-time unit's destruction takes so long that the press comes to its record in it.
TEST(LeaveWhileHeldTest, UnitThatGoesIsNotColoured) {
    ConsoleSession session(stepped({"fault add rtu_t::~rtu_t count 1 delay 3000"}));
    session.type("t");
    session.wait_for(kButtonMenu);
    session.control("press 10s");
    session.type("xx");
    EXPECT_EQ(session.wait_for_exit(), 0);
    EXPECT_NE(session.output().find(called("testButtonp2")), std::string::npos);
    EXPECT_EQ(session.calls(), start_calls() + Calls{"callback button_t::press_records(1)"} + kEndCalls);
}

// All four colours, through r47-entry-points: no record has p1 and p3.
TEST(LightBarActionsTest, EachPressActionHasItsColour) {
    SessionOptions options = stepped();
    options.entry_point = "lightbar_actions";
    auto const run = run_console("", options);
    EXPECT_EQ(run.output, called("testButtonp1") + called("testButtonp2") + called("testButtonp3") +
                              called("testButtonp4") + called("testButtonp1"));
    EXPECT_EQ(run.calls,
              (Calls{kRtuConstruction, "rtu_t::set_lightbar_col({100, 255, 0, 0}) = 0",
                     "rtu_t::set_lightbar_col({100, 0, 255, 255}) = 0", "rtu_t::set_lightbar_col({100, 0, 255, 0}) = 0",
                     "rtu_t::set_lightbar_col({100, 0, 0, 255}) = 0", "rtu_t::~rtu_t()"}));
}

}  // namespace
