// Transcripts of the console's start and of its main menu.
#include <gtest/gtest.h>

#include "tests/support/console_session.h"
#include "tests/support/screens/shell.h"
#include "tests/support/transcript.h"

namespace {

using namespace screens;
using support::ConsoleSession;
using support::run_console;

TEST(ConsoleMainTest, ExitKeysEndTheConsole) {
    for (char const key : {'x', '0'}) {
        support::expect_transcript({}, {key}, kStart + main_menu(key), {});
    }
}

TEST(ConsoleMainTest, RealTimeUnitIsOpenedBeforeTheRootCheckAndClosedAtTheEnd) {
    ConsoleSession session;
    session.type("x");
    EXPECT_EQ(session.wait_for_exit(), 0);
    auto const journal = session.journal();
    ASSERT_EQ(journal.size(), 2U);
    EXPECT_EQ(support::numbered_call_of(journal[0]), R"(1 rtu_t::rtu_t("/dev/r47-rtu-driver", 2))");
    EXPECT_EQ(support::numbered_call_of(journal[1]), "1 rtu_t::~rtu_t()");
}

TEST(ConsoleMainTest, WithoutRootRightsTheConsoleRefusesToRun) {
    support::SessionOptions options;
    options.wrapper = {"bwrap", "--unshare-user", "--uid", "1000", "--dev-bind", "/", "/", "--"};
    if (!support::has_own_network()) {
        options.outside = true;  // proot lets nobody become another user inside itself, and there is no device outside
        options.wrapper = {"proot", "-i", "1000:1000"};
    }
    ConsoleSession session(options);
    EXPECT_EQ(session.wait_for_exit(), 255);
    EXPECT_EQ(session.output(), "You must be root, terminating\n");
    if (options.outside) {
        EXPECT_EQ(session.errors(), "libhal: no device: start the program with r47-sim run\n");
        return;
    }
    auto const journal = session.journal();
    ASSERT_FALSE(journal.empty());
    EXPECT_EQ(support::numbered_call_of(journal[0]), R"(1 rtu_t::rtu_t("/dev/r47-rtu-driver", 2))");
}

TEST(ConsoleMainTest, StartPreparesTheGpioLines) {
    auto const run = run_console("x", support::in_shell("\"$@\"; cat /sys/class/gpio/export /sys/class/gpio/unexport"));
    EXPECT_EQ(run.output, kStart + main_menu('x') + "481\n492\n");
}

TEST(ConsoleMainTest, FailingShellCommandsAreIgnored) {
    auto const run = run_console("x", support::in_shell("rm -r /sys/class/gpio; exec \"$@\""));
    EXPECT_EQ(run.output, kStart + main_menu('x'));
    EXPECT_EQ(run.status, 0);
}

TEST(ConsoleMainTest, KeysWithoutAnEntryShowTheMenuAgain) {
    std::string const keys = "sBCdDFijJKmnNoqrSTuUvVwWXyzZ123456789?;-";
    std::string expected = kStart;
    for (char const key : keys) {
        expected += main_menu(key);
    }
    EXPECT_EQ(run_console(keys + "x").output, expected + main_menu('x'));
}

TEST(ConsoleMainTest, ByteOutsideOfAsciiShowsTheMenuAgain) {
    EXPECT_EQ(run_console("\xff\x01x").output, kStart + main_menu('\xff') + main_menu('\x01') + main_menu('x'));
}

TEST(ConsoleMainTest, WhiteSpaceIsNoOption) {
    EXPECT_EQ(run_console(" \t\n\r\v\f s\n x\n").output, kStart + main_menu('s') + main_menu('x'));
}

TEST(ConsoleMainTest, OldFirmwareKeyPrintsNothing) {
    EXPECT_EQ(run_console("Ox").output, kStart + main_menu('O') + main_menu('x'));
}

TEST(ConsoleMainTest, WordsThatAreNotKnownAreIgnored) {
    for (std::string const word : {"sockets", "Socket", "soc", "alarms", "ALARM", "old_gyro_f", ""}) {
        support::SessionOptions options;
        options.arguments = {word};
        auto const run = run_console("x", options);
        EXPECT_EQ(run.output, kStart + std::to_string(word.size()) + "\n" + main_menu('x')) << word;
        EXPECT_EQ(run.status, 0);
    }
}

TEST(ConsoleMainTest, OldFirmwareWordStartsTheMenu) {
    support::SessionOptions options;
    options.arguments = {"old_gyro_fw"};
    EXPECT_EQ(run_console("x", options).output, kStart + "11\n" + main_menu('x'));
}

TEST(ConsoleMainTest, OnlyTheFirstWordIsLookedAt) {
    support::SessionOptions options;
    options.arguments = {"none", "socket"};
    EXPECT_EQ(run_console("x", options).output, kStart + "4\n" + main_menu('x'));
}

TEST(ConsoleMainTest, EndOfInputShowsTheMenuAgainAndAgain) {
    ConsoleSession session;
    session.end_input();
    for (int i = 0; i < 5; ++i) {
        session.wait_for(main_menu('\0'));
    }
    EXPECT_FALSE(session.has_exited());
}

TEST(ConsoleMainTest, InputThatCannotBeReadIsAtItsEnd) {
    ConsoleSession session(support::in_shell("exec \"$@\" </"));
    session.wait_for(main_menu('\0'));
    session.wait_for(main_menu('\0'));
}

TEST(ConsoleMainTest, ControlDAtATerminalCostsOneRedisplay) {
    support::SessionOptions options;
    options.terminal = true;
    ConsoleSession session(options);
    session.wait_for("Please enter your option: ");
    session.type("\x04");
    session.wait_for(std::string("Entered Option = ") + '\0' + "\r\n");
    session.wait_for("Please enter your option: ");
    session.type("x\n");
    EXPECT_EQ(session.wait_for_exit(), 0);
    std::size_t menus = 0;
    for (std::size_t at = 0; (at = session.output().find("****  Enter the Option", at)) != std::string::npos; ++at) {
        ++menus;
    }
    EXPECT_EQ(menus, 2U);
}

TEST(ConsoleMainTest, ConsoleSleepsWhileItWaits) {
    for (bool const terminal : {false, true}) {
        support::SessionOptions options;
        options.terminal = terminal;
        ConsoleSession session(options);
        session.wait_for("Please enter your option: ");
        session.wait_until_asleep();
    }
}

TEST(ConsoleMainTest, StandardDescriptorsLeftClosedDoNoHarm) {
    support::SessionOptions options = support::in_shell("exec 2>&1 \"$@\" <&-");
    ConsoleSession session(options);
    session.wait_for(main_menu('\0'));
    session.wait_for(main_menu('\0'));
}

// The other library opens the unit's node as a device's does: by then no standard descriptor is to be had.
TEST(ConsoleMainTest, NodesDoNotTakeTheStandardDescriptors) {
    ConsoleSession session(
        support::in_shell("export LD_LIBRARY_PATH='" R47_SECOND_LIBRARY
                          "'; \"$@\" <&- 2>&- & read -r line; readlink /proc/$!/fd/[02]; kill -9 $!"));
    session.wait_for(main_menu('\0'));
    session.type("\n");
    session.wait_for("/dev/null\n/dev/null\n");
}

// Nothing can be written to the console's file until it has called the library behind several screens.
TEST(ConsoleMainTest, OutputThatRecoversBehindTheStartIsUsedAgain) {
    ConsoleSession session(
        support::in_shell("trap '' XFSZ; mkfifo keys; ulimit -S -f 0; \"$@\" <keys >printed & exec 3>keys; "
                          "echo lf5 >&3; read -r line; prlimit --pid $! --fsize=unlimited:; echo x >&3; wait $!; "
                          "cat printed"));
    session.control("wait system.state == warning");
    session.type("\n");
    session.wait_for("Your option = x\n");
}

TEST(ConsoleMainTest, OutputThatRecoversIsUsedAgain) {
    support::SessionOptions options;
    options.entry_point = "output_that_recovers";
    EXPECT_EQ(run_console("", options).output, "after\n");
}

}  // namespace
