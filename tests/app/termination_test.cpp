// The termination contract (docs/termination.md) for every menu, on the real executable.
#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <tuple>

#include "tests/support/menus.h"
#include "tests/support/transcript.h"

namespace {

using namespace menus;
using namespace screens;
using support::ConsoleSession;

constexpr char const* kMainMenu = "****  Enter the Option ******";

// Brings the console to the prompt of the menu.
void enter(ConsoleSession& session, Menu const& menu, bool terminal) {
    auto const wait_for = [&](std::string const& text) { session.wait_for(terminal ? at_terminal(text) : text); };
    wait_for(main_menu());
    if (menu.key != '\0') {
        session.type(menu.entry_keys() + "\n");
        wait_for(menu.prompt());
    }
}

class TerminationTest : public testing::TestWithParam<Menu> {
protected:
    // Leaves the menu and the console by their exit keys.
    void expect_exit_keys_work(ConsoleSession& session) {
        session.type(GetParam().is(ends_the_console) ? "x\n" : "x\nx\n");
        EXPECT_EQ(session.wait_for_exit(), 0);
    }
};

support::SessionOptions at_a_terminal() {
    support::SessionOptions options;
    options.terminal = true;
    return options;
}

TEST_P(TerminationTest, EndOfInputLeavesTheMenuAsItsExitKey) {
    Menu const& menu = GetParam();
    bool const is_main = menu.key == '\0';
    ConsoleSession session(options_for(menu));
    enter(session, menu, false);
    session.end_input();
    std::string expected = output_before(menu) + (is_main ? "" : menu.screen('x') + menu.goodbye);
    if (menu.is(ends_the_console) && !is_main) {
        EXPECT_EQ(session.wait_for_exit(), 0);
        EXPECT_EQ(session.output(), expected);
    } else {
        expected += main_menu('\0') + main_menu('\0');  // and so on
        session.wait_for(kMain.echo + '\0' + "\n");
        session.wait_for(kMain.echo + '\0' + "\n");
        EXPECT_EQ(session.output().substr(0, expected.size()), expected);
        EXPECT_FALSE(session.has_exited());
    }
    EXPECT_EQ(session.calls(), menu.opening + menu.closing);
    EXPECT_EQ(session.errors(), "");
}

TEST_P(TerminationTest, ControlDCostsOneRedisplay) {
    ConsoleSession session(at_a_terminal());
    enter(session, GetParam(), true);
    session.type("\x04");
    session.wait_for(at_terminal(GetParam().echo + '\0'));
    session.wait_for(at_terminal(GetParam().prompt()));
    expect_exit_keys_work(session);
}

TEST_P(TerminationTest, ControlCEndsTheConsole) {
    ConsoleSession session(at_a_terminal());
    enter(session, GetParam(), true);
    session.type("\x03");
    EXPECT_EQ(session.wait_for_exit(), 128 + SIGINT);
}

TEST_P(TerminationTest, TerminalThatIsClosedEndsTheConsole) {
    ConsoleSession session(at_a_terminal());
    enter(session, GetParam(), true);
    session.hang_up();
    EXPECT_EQ(session.wait_for_exit(), 128 + SIGHUP);
}

class SignalTest : public testing::TestWithParam<std::tuple<Menu, int>> {};

TEST_P(SignalTest, SignalEndsTheConsole) {
    auto const& [menu, number] = GetParam();
    ConsoleSession session;
    enter(session, menu, false);
    ::kill(session.console_pid(), number);
    EXPECT_EQ(session.wait_for_exit(), 128 + number);
}

TEST_P(TerminationTest, ClosedOutputEndsItAtTheNextScreen) {
    ConsoleSession session;
    enter(session, GetParam(), false);
    session.close_output();
    session.type("?\n");
    EXPECT_EQ(session.wait_for_exit(), 128 + SIGPIPE);
}

TEST_P(TerminationTest, FullOutputLosesTextAndNothingElse) {
    ConsoleSession session(support::in_shell("exec \"$@\" >/dev/full"));
    session.type(GetParam().entry_keys());
    expect_exit_keys_work(session);
}

// The process ends where it is: its objects are not destroyed, but for those in static storage.
class KeyZeroTest : public testing::TestWithParam<Menu> {};

TEST_P(KeyZeroTest, EndsTheWholeProgram) {
    Menu const& menu = GetParam();
    support::expect_transcript(options_for(menu), menu.entry_keys() + "0",
                               output_before(menu) + menu.screen('0') + kGoodBye, menu.opening + menu.ending);
}

TEST_P(KeyZeroTest, EndsTheWholeProgramUnderItsClient) {
    Menu const& menu = GetParam();
    support::SessionOptions options = options_for(menu);
    options.arguments = {"socket"};
    ConsoleSession session(options);
    support::StationClient client;
    session.wait_for(main_menu());
    client.send(menu.entry_keys() + "\n");
    session.wait_for(menu.prompt());
    if (menu.is(client_driven)) {
        client.send("0\n");
    } else {
        session.type("0\n");
    }
    EXPECT_EQ(session.wait_for_exit(), 0);
    EXPECT_TRUE(client.ended());
    EXPECT_EQ(session.output(), output_before_with_client(menu) + screen_with_client(menu, '0') + kGoodBye);
    EXPECT_EQ(session.calls(), menu.opening + menu.ending);
    EXPECT_EQ(session.errors(), "");
}

std::string name_of(testing::TestParamInfo<Menu> const& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(, TerminationTest, testing::ValuesIn(every_menu()), name_of);

INSTANTIATE_TEST_SUITE_P(, KeyZeroTest, testing::ValuesIn(menus_that(offers_zero)), name_of);

INSTANTIATE_TEST_SUITE_P(, SignalTest,
                         testing::Combine(testing::ValuesIn(every_menu()), testing::Values(SIGTERM, SIGHUP)),
                         [](auto const& one) {
                             return std::string(std::get<0>(one.param).name) +
                                    (std::get<1>(one.param) == SIGTERM ? "Sigterm" : "Sighup");
                         });

TEST(OutputTest, SlowReaderLosesNothing) {
    ConsoleSession session;
    session.type(std::string(300, 's') + "x");
    EXPECT_EQ(session.wait_for_exit(), 0);
    std::size_t screens = 0;
    for (std::size_t at = 0; (at = session.output().find(kMainMenu, at)) != std::string::npos; ++at) {
        ++screens;
    }
    EXPECT_EQ(screens, 301U);
}

}  // namespace
