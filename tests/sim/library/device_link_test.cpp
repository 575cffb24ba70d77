// Tests of the library where what it finds is not its device.
#include "sim/library/device_link.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <functional>
#include <thread>

#include "hal/rtu.h"
#include "sim/core/unix_socket.h"
#include "tests/sim/temporary_directory.h"

namespace {

// Serves one connection in its own way. A program has one device for all its life: each of these tests needs a process
// of its own, as ctest gives it.
class DeviceLinkTest : public testing::Test {
protected:
    ~DeviceLinkTest() override { server_.join(); }

    void serve(std::function<void(sim::Connection&)> const& answer) {
        EXPECT_EQ(::setenv("R47_SIM_DEVICE", directory_.path().c_str(), 1), 0);
        sim::Error error;
        listener_ = sim::listen_on(path(), error);
        EXPECT_EQ(error, "");
        server_ = std::thread([this, answer] {
            sim::Connection connection(sim::accept_from(listener_));
            answer(connection);
        });
    }
    std::string path() const { return directory_.path() + "/calls"; }
    // Every call is refused, and why is said once.
    static void expect_refusal(std::string const& reason) {
        testing::internal::CaptureStderr();
        hal::rtu_t rtu("/dev/r47-rtu-driver", 2);
        for (int i = 0; i < 3; ++i) {
            unsigned int number = 1;
            errno = 0;
            EXPECT_EQ(rtu.get_exposure(number), -1);
            EXPECT_EQ(errno, ENODEV);
            EXPECT_EQ(number, 1U);
        }
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "libhal: " + reason + "\n");
    }

private:
    TemporaryDirectory directory_;
    sim::Descriptor listener_;
    std::thread server_;
};

std::string refusal(std::string const& reason) {
    return message_of(sim::MessageKind::refusal, sim::Refusal{reason});
}

TEST_F(DeviceLinkTest, ADeviceOfAnotherVersionIsToldOfOnce) {
    serve([](sim::Connection& connection) {
        std::string_view message;
        EXPECT_TRUE(connection.receive(message));
        sim::Decoder bytes(message);
        sim::MessageKind kind{};
        sim::Hello hello{};
        EXPECT_TRUE(bytes.get(kind).get(hello).complete());
        EXPECT_EQ(hello.version, sim::table_version());
        connection.send(refusal("the library and the device are of different versions"));
    });
    expect_refusal(path() + ": the library and the device are of different versions");
}

TEST_F(DeviceLinkTest, ARefusalThatComesBeforeTheHelloIsTold) {
    serve([](sim::Connection& connection) { connection.send_at_once(refusal("too many connections")); });
    expect_refusal(path() + ": too many connections");
}

TEST_F(DeviceLinkTest, WhatIsNoDeviceIsToldOf) {
    serve([](sim::Connection& connection) {
        std::string_view message;
        EXPECT_TRUE(connection.receive(message));
        connection.send("HTTP/1.1 400 Bad Request");
    });
    expect_refusal(path() + ": what answers is no device");
}

}  // namespace
