// Transcripts of the system state menu.
#include <gtest/gtest.h>

#include "tests/support/console_session.h"
#include "tests/support/screens/shell.h"

namespace {

using namespace screens;
using support::Calls;
using support::run_console;

// The output of a run that enters the menu; the menu's exit key ends the console.
std::string in_menu(std::string const& output) {
    return kStart + main_menu('l') + kSystemStart + output + system_menu('x');
}

// The calls of such a run: the object is never destroyed.
Calls in_menu_calls(Calls calls) {
    calls.insert(calls.begin(), R"(system_t::system_t("/dev/r47-rtu-driver", 2))");
    return calls;
}

TEST(SystemStateTest, ExitKeyEndsTheProcess) {
    auto const run = run_console("lx");
    EXPECT_EQ(run.output, in_menu(""));
    EXPECT_EQ(run.calls, in_menu_calls({}));
    EXPECT_EQ(run.status, 0);
}

TEST(SystemStateTest, HeartbeatPrintsNothing) {
    auto const run = run_console("lhx");
    EXPECT_EQ(run.output, in_menu(system_menu('h')));
    EXPECT_EQ(run.calls, in_menu_calls({"system_t::trigger_heartbeat() = 0"}));
}

TEST(SystemStateTest, FailedHeartbeatPrintsNothing) {
    support::SessionOptions options;
    options.scenario = {"fault add system_t::trigger_heartbeat status -1"};
    auto const run = run_console("lhx", options);
    EXPECT_EQ(run.output, in_menu(system_menu('h')));
    EXPECT_EQ(run.calls, in_menu_calls({"system_t::trigger_heartbeat() = -1"}));
    EXPECT_EQ(run.errors, "");
}

TEST(SystemStateTest, StateIsReadAndPrinted) {
    auto const run = run_console("lFx");
    EXPECT_EQ(run.output, in_menu(system_menu('F') + "Read Device state1\n"));
    EXPECT_EQ(run.calls, in_menu_calls({"system_t::get_device_status() = 0 [1]"}));
}

TEST(SystemStateTest, FailedReadPrintsZero) {
    support::SessionOptions options;
    options.scenario = {"fault add system_t::get_device_status status -1"};
    auto const run = run_console("lFx", options);
    EXPECT_EQ(run.output, in_menu(system_menu('F') + "Read Device state0\n"));
    EXPECT_EQ(run.calls, in_menu_calls({"system_t::get_device_status() = -1"}));
    EXPECT_EQ(run.errors, "");
}

TEST(SystemStateTest, StateThatIsSetIsReadBack) {
    auto const run = run_console("lf10\nFx");
    EXPECT_EQ(run.output,
              in_menu(system_menu('f') + "Enter device state: " + system_menu('F') + "Read Device state10\n"));
    EXPECT_EQ(run.calls,
              in_menu_calls({"system_t::set_device_status(10) = 0", "system_t::get_device_status() = 0 [10]"}));
}

TEST(SystemStateTest, StateWithoutANameGoesToTheLibraryUnchanged) {
    auto const run = run_console("lf7\nx");
    EXPECT_EQ(run.output, in_menu(system_menu('f') + "Enter device state: "));
    EXPECT_EQ(run.calls, in_menu_calls({"system_t::set_device_status(7) = -1"}));
    EXPECT_EQ(run.errors, "");
}

TEST(SystemStateTest, EchoIsFollowedByAWaitBeforeTheKeyActs) {
    support::SessionOptions options;
    options.entry_point = "system_state_waits";
    EXPECT_EQ(
        run_console("Fx", options).output,
        kSystemStart + system_menu('F') + "waited 700 ms\nRead Device state1\n" + system_menu('x') + "waited 700 ms\n");
}

TEST(SystemStateTest, OtherKeysAreNotValid) {
    EXPECT_EQ(run_console("l0Hx").output,
              in_menu(system_menu('0') + "Enter Valid option = 0" + system_menu('H') + "Enter Valid option = H"));
}

TEST(SystemStateTest, EndOfInputLeavesAsTheExitKey) {
    support::ConsoleSession session;
    session.type("l");
    session.end_input();
    EXPECT_EQ(session.wait_for_exit(), 0);
    EXPECT_EQ(session.output(), in_menu(""));
}

TEST(SystemStateTest, MissingNodeFailsEveryCall) {
    support::SessionOptions options;
    options.without = {"/dev/r47-rtu-driver"};
    auto const run = run_console("lFf3\nhx", options);
    EXPECT_EQ(run.output, in_menu(system_menu('F') + "Read Device state0\n" + system_menu('f') +
                                  "Enter device state: " + system_menu('h')));
    EXPECT_EQ(run.calls, in_menu_calls({"system_t::get_device_status() = -1", "system_t::set_device_status(3) = -1",
                                        "system_t::trigger_heartbeat() = -1"}));
    EXPECT_EQ(run.errors, "");
}

TEST(SystemStateTest, HeartbeatKeepsTheDeviceAliveForItsTimeout) {
    support::SessionOptions options;
    options.clock = "stepped";
    support::ConsoleSession session(options);
    auto const expect_shown = [&session](std::string const& name, std::string const& value) {
        EXPECT_EQ(session.control("show --json " + name), "{\n  \"" + name + "\": " + value + "\n}\n");
    };
    session.type("l");
    session.wait_for(kSystemMenu);
    session.control("step 5s");
    expect_shown("system.heartbeat.count", "0");
    expect_shown("system.alive", "false");
    session.type("h");
    session.wait_for(kSystemMenu);
    expect_shown("system.heartbeat.count", "1");
    expect_shown("system.alive", "true");
    session.control("step 1s");
    expect_shown("system.alive", "true");
    session.control("step 1us");
    expect_shown("system.alive", "false");
    session.type("x");
    EXPECT_EQ(session.wait_for_exit(), 0);
}

}  // namespace
