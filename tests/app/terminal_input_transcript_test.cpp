// Transcripts of what is typed: numbers, words, mistakes, and the end of input.
#include <gtest/gtest.h>

#include "tests/support/console_session.h"
#include "tests/support/screens/shell.h"

namespace {

using namespace screens;
using support::run_console;

// What a prompt for an unsigned number makes of the text; nothing is left of the line.
std::string written(std::string const& typed) {
    support::SessionOptions options;
    options.entry_point = "sensor_set_accepted";
    std::string const output = run_console(typed, options).output;
    std::string const prompt = "Enter a value for gain: written ";
    EXPECT_EQ(output.rfind(prompt, 0), 0U) << output;
    std::string value = output.substr(prompt.size(), output.find('\n') - prompt.size());
    EXPECT_EQ(output, prompt + value + "\nsensor set  gain: " + value + "\n");
    return value;
}

TEST(TerminalInputTest, NumbersAreRead) {
    EXPECT_EQ(written("42\n"), "42");
    EXPECT_EQ(written("  \n\n\t+7\n"), "7");
    EXPECT_EQ(written("0\n"), "0");
    EXPECT_EQ(written("000000000000000000012\n"), "12");
    EXPECT_EQ(written("4294967295\n"), "4294967295");
    EXPECT_EQ(written("12abc\n"), "12");
}

TEST(TerminalInputTest, NegativeNumbersWrapIntoTheUnsignedType) {
    EXPECT_EQ(written("-1\n"), "4294967295");
    EXPECT_EQ(written("-4294967295\n"), "1");
}

TEST(TerminalInputTest, TextThatIsNoNumberStandsForZero) {
    for (char const* typed :
         {"abc\n", "-\n", "+x\n", "--5\n", ".5\n", "4294967296\n", "-4294967296\n", "99999999999999999999999999\n"}) {
        EXPECT_EQ(written(typed), "0") << typed;
    }
}

TEST(TerminalInputTest, RefusedValueIsReported) {
    support::SessionOptions options;
    options.entry_point = "sensor_set_refused";
    EXPECT_EQ(run_console("42\n", options).output, "Enter a value for gain: sensor error to set gain\n");
}

TEST(TerminalInputTest, EmptyAccessorThrows) {
    support::SessionOptions options;
    options.entry_point = "sensor_set_without_accessor";
    EXPECT_EQ(run_console("42\n", options).output, "Enter a value for gain: no accessor\n");
}

// What such a prompt prints whose input ends behind the text.
std::string printed_before_the_end(std::string const& typed) {
    support::SessionOptions options;
    options.entry_point = "sensor_set_accepted";
    support::ConsoleSession session(options);
    session.type(typed);
    session.end_input();
    EXPECT_EQ(session.wait_for_exit(), 0);
    return session.output();
}

TEST(TerminalInputTest, EndOfInputIsNoAnswer) {
    EXPECT_EQ(printed_before_the_end(""), "Enter a value for gain: ");
    EXPECT_EQ(printed_before_the_end(" \n\t"), "Enter a value for gain: ");
}

TEST(TerminalInputTest, TextOfALastLineWithoutAnEndIsAnAnswer) {
    EXPECT_EQ(printed_before_the_end("5"), "Enter a value for gain: written 5\nsensor set  gain: 5\n");
    EXPECT_EQ(printed_before_the_end("abc"), "Enter a value for gain: written 0\nsensor set  gain: 0\n");
}

TEST(TerminalInputTest, MainMenuWaitsAtTheEndOfInputBeforeItIsShownAgain) {
    support::SessionOptions options;
    options.entry_point = "console_waits";
    support::ConsoleSession session(options);
    session.end_input();
    std::string expected = kStart;
    for (int i = 0; i < 3; ++i) {
        expected += main_menu() + "waited 20 ms\nEntered Option = " + '\0' + "\n";
    }
    session.wait_for(expected);
    EXPECT_EQ(session.output().rfind(expected, 0), 0U);
}

TEST(TerminalInputTest, MistypedNumberIsNeverTakenForOptions) {
    auto const run = run_console("lfxxx\nFx");
    EXPECT_EQ(run.output, kStart + main_menu('l') + kSystemStart + system_menu('f') +
                              "Enter device state: " + system_menu('F') + "Read Device state1\n" + system_menu('x'));
}

TEST(TerminalInputTest, RestOfALineBehindANumberThatIsTooLargeIsNoOptions) {
    auto const run = run_console("lf99999999999xF x\nFx");
    EXPECT_EQ(run.output, kStart + main_menu('l') + kSystemStart + system_menu('f') +
                              "Enter device state: " + system_menu('F') + "Read Device state1\n" + system_menu('x'));
}

TEST(TerminalInputTest, RestOfALineIsTheNextOptions) {
    EXPECT_EQ(run_console("lf3FF x\n").output, kStart + main_menu('l') + kSystemStart + system_menu('f') +
                                                   "Enter device state: " + system_menu('F') + "Read Device state3\n" +
                                                   system_menu('F') + "Read Device state3\n" + system_menu('x'));
}

TEST(TerminalInputTest, ControlDBehindANumberEndsItAndNothingMore) {
    support::SessionOptions options;
    options.terminal = true;
    support::ConsoleSession session(options);
    session.wait_for("option: ");
    session.type("lf\n");
    session.wait_for("Enter device state: ");
    session.type("3\x04\x04");  // the first hands over what is typed, the second is seen by itself
    session.wait_for("Enter your option = ");
    session.type("x\n");
    EXPECT_EQ(session.wait_for_exit(), 0);
    auto const calls = session.calls();
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[1], "system_t::set_device_status(3) = 0");
}

TEST(TerminalInputTest, ControlDEndsAMistypedNumberWithoutWaitingForTheLine) {
    support::SessionOptions options;
    options.terminal = true;
    support::ConsoleSession session(options);
    session.wait_for("option: ");
    session.type("lf\n");
    session.wait_for("Enter device state: ");
    session.type("-\x04\x04");
    session.wait_for("Enter your option = ");
    session.type("x\n");
    EXPECT_EQ(session.wait_for_exit(), 0);
}

TEST(TerminalInputTest, ControlDInAComponentMenuCostsOneRedisplay) {
    support::SessionOptions options;
    options.terminal = true;
    support::ConsoleSession session(options);
    session.wait_for("option: ");
    session.type("l\n");
    session.wait_for("Enter your option = ");
    session.type("\x04");
    session.wait_for(std::string("Your option = ") + '\0');
    session.wait_for(std::string("Enter Valid option = ") + '\0');
    session.wait_for("Enter your option = ");
    session.type("x\n");
    EXPECT_EQ(session.wait_for_exit(), 0);
}

}  // namespace
