// Tests of the device state and the heartbeat.
#include "sim/models/system_state.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "sim/control/value_words.h"
#include "sim/device/describe.h"

namespace {

using namespace std::chrono_literals;
using hal::device_state_te;
using sim::SystemState;

device_state_te state_of(SystemState const& system) {
    device_state_te state{};
    EXPECT_EQ(system.get_state(state), 0);
    return state;
}

TEST(SystemStateTest, StartsInBoot) {
    EXPECT_EQ(state_of(SystemState()), device_state_te::boot);
    EXPECT_EQ(SystemState().heartbeats(), 0U);
    EXPECT_EQ(SystemState().last_heartbeat(), 0s);
}

TEST(SystemStateTest, TakesEveryAssignedState) {
    SystemState system;
    for (int const code : {1, 2, 3, 4, 5, 6, 9, 10}) {
        EXPECT_EQ(system.set_state(static_cast<device_state_te>(code)), 0) << code;
        EXPECT_EQ(static_cast<int>(state_of(system)), code);
    }
}

TEST(SystemStateTest, RefusesOtherStatesAndKeepsTheOld) {
    SystemState system;
    system.set_state(device_state_te::running);
    for (int const code : {-1, 0, 7, 8, 11, 1000000}) {
        errno = 0;
        EXPECT_EQ(system.set_state(static_cast<device_state_te>(code)), -1) << code;
        EXPECT_EQ(errno, EINVAL);
        EXPECT_EQ(state_of(system), device_state_te::running);
    }
}

TEST(SystemStateTest, IsAliveWithinTheTimeoutOfAHeartbeat) {
    SystemState system;
    EXPECT_FALSE(system.alive(0s));
    system.trigger_heartbeat(5s);
    EXPECT_TRUE(system.alive(5s));
    EXPECT_TRUE(system.alive(6s));
    EXPECT_FALSE(system.alive(6s + 1us));
}

TEST(SystemStateTest, BootsAnewWithThePowerAndKeepsItsTimeout) {
    SystemState system;
    system.set_heartbeat_timeout(2500);
    ASSERT_EQ(system.set_state(device_state_te::running), 0);
    ASSERT_EQ(system.trigger_heartbeat(5s), 0);
    ASSERT_EQ(system.trigger_heartbeat(6s), 0);
    EXPECT_EQ(system.heartbeats(), 2U);
    EXPECT_EQ(system.last_heartbeat(), 6s);
    system.lose_power();
    EXPECT_EQ(state_of(system), device_state_te::boot);
    EXPECT_EQ(system.heartbeats(), 0U);
    EXPECT_EQ(system.last_heartbeat(), 0s);
    EXPECT_FALSE(system.alive(0s));
    EXPECT_EQ(system.heartbeat_timeout(), 2500U);
}

TEST(SystemStateTest, TheTimeoutCanBeSet) {
    SystemState system;
    sim::Properties properties;
    sim::describe(properties, system, [] { return 3s; });
    unsigned int timeout_ms = 0;
    EXPECT_EQ(system.get_heartbeat_timeout(timeout_ms), 0);
    EXPECT_EQ(timeout_ms, 1000U);
    EXPECT_EQ(sim::set_property(properties, "system.heartbeat.timeout", "2500"), "");
    system.get_heartbeat_timeout(timeout_ms);
    EXPECT_EQ(timeout_ms, 2500U);
    system.trigger_heartbeat(1s);
    EXPECT_EQ(sim::value_text(properties.find("system.alive")->get()), "true");
    EXPECT_EQ(sim::value_text(properties.find("system.heartbeat.count")->get()), "1");
}

TEST(SystemStateTest, ThePropertyRefusesWhatTheOperationRefuses) {
    SystemState system;
    sim::Properties properties;
    sim::describe(properties, system, [] { return 0s; });
    EXPECT_NE(sim::set_property(properties, "system.state", "7"), "");
    EXPECT_EQ(sim::set_property(properties, "system.state", "9"), "");
    EXPECT_EQ(state_of(system), device_state_te::preview_network_reset);
}

}  // namespace
