// Transcripts of the button test, at the terminal and for a client, and what presses do in it.
#include <algorithm>

#include "tests/menus/motion/motion_run.h"
#include "tests/support/screens/motion.h"

namespace {

using namespace motion;
using namespace screens;
using support::Calls;
using support::ConsoleSession;
using support::SessionOptions;
using support::StationClient;

// Key 'r', whose call answers so.
Step read(char shown, std::string const& answer) {
    return {
        'r', "", std::string("Starting read: 0\nIrq status: ") + shown + "\n", {"button_t::irq_read() = " + answer}};
}

TEST(ButtonMenuTest, StartsAndLeaves) {
    expect_run(kButton, {});
}

TEST(ButtonMenuTest, InterruptLineIsRead) {
    expect_run(kButton, {read('0', "0 [false]")});
}

TEST(ButtonMenuTest, PressedButtonReadsOne) {
    expect_run(kButton, {read('1', "0 [true]")}, with_scenario({"button down"}));
}

TEST(ButtonMenuTest, FailedReadShowsZero) {
    Menu failing = kButton;
    failing.opening = with_failures(kButton.opening);
    expect_run(failing, {read('0', "-1")},
               with_scenario({"button down", "fault add button_t::irq_read status -1",
                              "fault add button_t::irq_callback_hold status -1"}));
}

TEST(ButtonMenuTest, AllOtherKeysShowTheMenuAgain) {
    expect_run(kButton, ignored("abcdefghijklmnopqstuvwyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789;-"));
}

TEST(ButtonMenuTest, OtherVariantHasItsButtonOnLine44) {
    Menu menu = kButton;
    menu.start = "";
    menu.opening[0] = button_construction(44);
    SessionOptions options = of_another_variant();
    options.scenario = {"button down"};
    expect_run(menu, {read('1', "0 [true]")}, options);
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

    Calls later_calls() { return calls_from(kButton.opening.size(), session.calls()); }

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
    EXPECT_EQ(session.calls(), calls_of_visit(kButton, {"callback button_t::press_records(1)"}));
}

// All four colours, through r47-entry-points: no record has p1 and p3.
TEST(LightBarActionsTest, EachPressActionHasItsColour) {
    SessionOptions options = stepped();
    options.entry_point = "lightbar_actions";
    support::expect_transcript(
        options, "",
        called("testButtonp1") + called("testButtonp2") + called("testButtonp3") + called("testButtonp4") +
            called("testButtonp1"),
        {kRtuConstruction, "rtu_t::set_lightbar_col({100, 255, 0, 0}) = 0",
         "rtu_t::set_lightbar_col({100, 0, 255, 255}) = 0", "rtu_t::set_lightbar_col({100, 0, 255, 0}) = 0",
         "rtu_t::set_lightbar_col({100, 0, 0, 255}) = 0", "rtu_t::~rtu_t()"});
}

}  // namespace
