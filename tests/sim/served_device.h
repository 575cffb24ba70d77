// A device of its own in the test's process, served on a socket, for tests of the library's classes.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "sim/control/command.h"
#include "sim/control/device_directory.h"
#include "sim/service/service.h"
#include "tests/sim/temporary_directory.h"

// The library in this process is told of the device, whose clock is stepped by hand. A program has one device for all
// its life, so each such test needs a process of its own: ctest gives it one.
class ServedDeviceTest : public testing::Test {
protected:
    ServedDeviceTest() {
        EXPECT_EQ(++devices_, 1) << "run each of these tests by itself, as ctest does";
        EXPECT_EQ(::setenv("R47_SIM_DEVICE", directory_.path().c_str(), 1), 0);
        EXPECT_EQ(service_.start(sim::calls_socket(directory_.path())), "");
        follower_ = device_.access()->journal.follow([this](std::uint64_t, sim::Record const& record) {
            if (record.kind == sim::RecordKind::call || record.kind == sim::RecordKind::callback) {
                journal_.push_back((record.kind == sim::RecordKind::call ? "" : "callback ") + record.text);
            }
            last_ = record;
        });
    }
    ~ServedDeviceTest() override { service_.stop(); }

    // Calls and callbacks so far.
    std::vector<std::string> journal() {
        auto const lock = device_.access();
        return journal_;
    }
    sim::Record last_record() {
        auto const lock = device_.access();
        return last_;
    }

    // From now on the device has no journal, so that the library announces no callback.
    void unwatch() { device_.access()->journal.unfollow(follower_); }

    // Gives a control command, which must be done.
    void control(std::string const& line) {
        sim::Reply const reply = sim::device_commands().run({device_}, line);
        EXPECT_TRUE(reply.ok) << line << ": " << reply.text;
    }
    void step(sim::Duration length) { device_.timeline.step(length); }
    sim::Time now() const { return device_.timeline.now(); }

    TemporaryDirectory directory_;
    sim::Device device_{std::make_unique<sim::MemoryFileSystem>()};
    sim::Service service_{device_};

private:
    static inline int devices_ = 0;
    int follower_ = 0;
    std::vector<std::string> journal_;  // guarded by the device's lock
    sim::Record last_;
};
