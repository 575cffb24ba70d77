// The termination contract (docs/termination.md) at the terminal, for every menu, on the real executable.
#include <gtest/gtest.h>

#include <csignal>
#include <ostream>
#include <string>
#include <tuple>

#include "tests/support/console_session.h"

namespace {

using support::ConsoleSession;

struct Menu {
    char const* name;
    char const* key;     // at the main menu; empty: the main menu itself
    char const* prompt;  // the end of its screen
};

void PrintTo(Menu const& menu, std::ostream* out) {
    *out << menu.name;
}

constexpr Menu kMenus[] = {
    {"Main", "", "\nPlease enter your option: "},
    {"Dio", "a", "\n\n Enter your option = "},
    {"Rtu", "b", "\n\nPlease enter your option: "},
    {"Illumination", "c", "LED STATE  \nPlease enter your option: "},
    {"Imx296", "e", "\n\nPlease enter your option: "},
    {"Imx567", "E", "\n\nPlease enter your option: "},
    {"Autofocus", "f", "\n\nPlease enter your option: "},
    {"Camera", "k", "Exit\nPlease enter your option: "},
    {"System", "l", "\n\n Enter your option = "},
    {"Gyro", "g", "\n\nPlease enter your option: "},
    {"GyroAlarm", "G", "\n\n  Please enter your option: "},
    {"GyroDelegate", "h", "\n\n   Please enter your option: "},
    {"DelegateAndAlarm", "H", "\n\n   Please enter your option: "},
    {"Button", "t", "Exit               \nPlease enter your option: "},
    {"Tof", "p", "Exit\nPlease enter your option: "},
};

constexpr char const* kMainMenu = "****  Enter the Option ******";

bool is_system(Menu const& menu) {
    return std::string(menu.key) == "l";
}

bool is_main(Menu const& menu) {
    return *menu.key == '\0';
}

// As the output of a pseudo-terminal has it.
std::string at_terminal(std::string const& text) {
    std::string converted;
    for (char const c : text) {
        converted += c == '\n' ? std::string("\r\n") : std::string(1, c);
    }
    return converted;
}

// Brings the console to the prompt of the menu.
void enter(ConsoleSession& session, Menu const& menu, bool terminal) {
    session.wait_for("Please enter your option: ");
    if (!is_main(menu)) {
        session.type(std::string(menu.key) + "\n");
        session.wait_for(terminal ? at_terminal(menu.prompt) : menu.prompt);
    }
}

class TerminationTest : public testing::TestWithParam<Menu> {
protected:
    // Leaves the menu and the console by their exit keys.
    void expect_exit_keys_work(ConsoleSession& session) {
        session.type(is_main(GetParam()) || is_system(GetParam()) ? "x\n" : "x\nx\n");
        EXPECT_EQ(session.wait_for_exit(), 0);
    }
};

support::SessionOptions at_a_terminal() {
    support::SessionOptions options;
    options.terminal = true;
    return options;
}

TEST_P(TerminationTest, EndOfInputLeavesTheMenuAsItsExitKey) {
    ConsoleSession session;
    enter(session, GetParam(), false);
    session.end_input();
    if (is_system(GetParam())) {
        EXPECT_EQ(session.wait_for_exit(), 0);
        return;
    }
    session.wait_for(is_main(GetParam()) ? std::string("Entered Option = ") + '\0' : "ption = x");
    session.wait_for(kMainMenu);
    session.wait_for(kMainMenu);
    EXPECT_FALSE(session.has_exited());
}

TEST_P(TerminationTest, ControlDCostsOneRedisplay) {
    ConsoleSession session(at_a_terminal());
    enter(session, GetParam(), true);
    session.type("\x04");
    session.wait_for(std::string("ption = ") + '\0');
    session.wait_for(at_terminal(GetParam().prompt));
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
    session.type(GetParam().key);
    expect_exit_keys_work(session);
}

std::string name_of(testing::TestParamInfo<Menu> const& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(, TerminationTest, testing::ValuesIn(kMenus), name_of);

INSTANTIATE_TEST_SUITE_P(, SignalTest, testing::Combine(testing::ValuesIn(kMenus), testing::Values(SIGTERM, SIGHUP)),
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
