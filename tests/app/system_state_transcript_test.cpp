// Transcripts of the system state menu.
#include "tests/menus/menu_run.h"

namespace {

using namespace menus;
using namespace screens;
using support::run_console;

TEST(SystemStateTest, ExitKeyEndsTheProcess) {
    expect_run(kSystem, {});
}

TEST(SystemStateTest, HeartbeatPrintsNothing) {
    expect_run(kSystem, {{'h', "", "", {"system_t::trigger_heartbeat() = 0"}}});
}

TEST(SystemStateTest, FailedHeartbeatPrintsNothing) {
    expect_run(kSystem, {{'h', "", "", {"system_t::trigger_heartbeat() = -1"}}},
               with_scenario({"fault add system_t::trigger_heartbeat status -1"}));
}

TEST(SystemStateTest, StateIsReadAndPrinted) {
    expect_run(kSystem, {{'F', "", "Read Device state1\n", {"system_t::get_device_status() = 0 [1]"}}});
}

TEST(SystemStateTest, FailedReadPrintsZero) {
    expect_run(kSystem, {{'F', "", "Read Device state0\n", {"system_t::get_device_status() = -1"}}},
               with_scenario({"fault add system_t::get_device_status status -1"}));
}

TEST(SystemStateTest, ReadReturnsNought) {
    support::SessionOptions options;
    options.entry_point = "device_state";
    EXPECT_EQ(support::run_console("", options).output, "Read Device state1\nreturned 0\n");
}

TEST(SystemStateTest, StateThatIsSetIsReadBack) {
    expect_run(kSystem, {{'f', "10\n", "Enter device state: ", {"system_t::set_device_status(10) = 0"}},
                         {'F', "", "Read Device state10\n", {"system_t::get_device_status() = 0 [10]"}}});
}

TEST(SystemStateTest, StateWithoutANameGoesToTheLibraryUnchanged) {
    expect_run(kSystem, {{'f', "7\n", "Enter device state: ", {"system_t::set_device_status(7) = -1"}}});
}

TEST(SystemStateTest, TextThatIsNoNumberSetsStateZero) {
    expect_run(kSystem, {{'f', "warning\n", "Enter device state: ", {"system_t::set_device_status(0) = -1"}}});
}

TEST(SystemStateTest, EchoIsFollowedByAWaitBeforeTheKeyActs) {
    support::SessionOptions options;
    options.entry_point = "system_state_waits";
    EXPECT_EQ(
        run_console("Fx", options).output,
        kSystemStart + system_menu('F') + "waited 700 ms\nRead Device state1\n" + system_menu('x') + "waited 700 ms\n");
}

TEST(SystemStateTest, OtherKeysAreNotValid) {
    expect_run(kSystem, {{'0', "", "Enter Valid option = 0", {}}, {'H', "", "Enter Valid option = H", {}}});
}

TEST(SystemStateTest, MissingNodeFailsEveryCall) {
    support::SessionOptions options;
    options.without = {"/dev/r47-rtu-driver"};
    expect_run(kSystem,
               {{'F', "", "Read Device state0\n", {"system_t::get_device_status() = -1"}},
                {'f', "3\n", "Enter device state: ", {"system_t::set_device_status(3) = -1"}},
                {'h', "", "", {"system_t::trigger_heartbeat() = -1"}}},
               options);
}

TEST(SystemStateTest, HeartbeatKeepsTheDeviceAliveForItsTimeout) {
    support::SessionOptions options;
    options.clock = "stepped";
    support::ConsoleSession session(options);
    auto const expect_shown = [&session](std::string const& name, std::string const& value) {
        EXPECT_NE(session.control("show --json " + name).find("{\"value\":" + value + ","), std::string::npos);
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
