// Tests of messages over a connection.
#include "sim/calls/connection.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <optional>
#include <thread>

namespace {

using sim::Connection;
using sim::Descriptor;

class ConnectionTest : public testing::Test {
protected:
    ConnectionTest() {
        int ends[2];
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
        near_.emplace(Descriptor(ends[0]));
        far_ = Descriptor(ends[1]);
    }

    void send_raw(std::string const& bytes) const {
        ASSERT_EQ(::send(far_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
    }
    static std::string size_of(std::uint32_t size) { return {reinterpret_cast<char const*>(&size), sizeof size}; }
    // The next message; "nothing" where there is none.
    std::string receive() {
        std::string_view message;
        return near_->receive(message) ? std::string(message) : "nothing";
    }

    std::optional<Connection> near_;
    Descriptor far_;
};

TEST_F(ConnectionTest, MessagesStayWholeAndApart) {
    send_raw(size_of(3) + "abc" + size_of(0) + size_of(2) + "de");
    EXPECT_EQ(receive(), "abc");
    EXPECT_EQ(receive(), "");
    EXPECT_EQ(receive(), "de");
}

TEST_F(ConnectionTest, AMessageMayComeByteByByte) {
    std::string const bytes = size_of(5) + "hello" + size_of(1) + "x";
    std::thread sender([&] {
        for (char const c : bytes) {
            send_raw({c});
        }
    });
    EXPECT_EQ(receive(), "hello");
    EXPECT_EQ(receive(), "x");
    sender.join();
}

TEST_F(ConnectionTest, WhatOneEndSendsTheOtherReceives) {
    Connection far(far_.get());
    std::string const large(1U << 20U, 'i');
    std::thread sender([&] {
        EXPECT_TRUE(far.send("small"));
        EXPECT_TRUE(far.send(large));
    });
    EXPECT_EQ(receive(), "small");
    EXPECT_EQ(receive(), large);
    sender.join();
}

TEST_F(ConnectionTest, AFileComesWithItsMessage) {
    Connection far(far_.get());
    Descriptor const sent(::memfd_create("sent", MFD_CLOEXEC));
    ASSERT_EQ(::ftruncate(sent.get(), 7), 0);
    std::string_view message;
    Descriptor file;
    EXPECT_TRUE(far.send("first", Descriptor()));
    EXPECT_TRUE(near_->receive(message, file));
    EXPECT_EQ(message, "first");
    EXPECT_FALSE(file);
    EXPECT_TRUE(far.send("second", sent));
    EXPECT_TRUE(near_->receive(message, file));
    EXPECT_EQ(message, "second");
    ASSERT_TRUE(file);
    EXPECT_EQ(::lseek(file.get(), 0, SEEK_END), 7);
}

TEST_F(ConnectionTest, AMessageComesWithoutItsFileWhereThatIsNotWanted) {
    Connection far(far_.get());
    EXPECT_TRUE(far.send("hello", Descriptor(::memfd_create("sent", MFD_CLOEXEC))));
    EXPECT_EQ(receive(), "hello");
}

TEST_F(ConnectionTest, AMessageThatIsCutIsNone) {
    for (std::string const& cut : {std::string(), size_of(5), size_of(5) + "hell", std::string("\x05\0", 2)}) {
        int ends[2];
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
        Connection near{Descriptor(ends[0])};
        far_ = Descriptor(ends[1]);
        send_raw(cut);
        far_ = Descriptor();
        std::string_view message;
        EXPECT_FALSE(near.receive(message)) << cut.size() << " bytes";
    }
}

TEST_F(ConnectionTest, AMessageThatIsTooLongIsRefusedByItsSizeAlone) {
    send_raw(size_of(static_cast<std::uint32_t>(sim::kLongestMessage) + 1));
    EXPECT_EQ(receive(), "nothing");
}

TEST_F(ConnectionTest, ShuttingDownEndsAReceive) {
    std::thread ender([&] { near_->shut_down(); });
    EXPECT_EQ(receive(), "nothing");
    ender.join();
}

TEST_F(ConnectionTest, SendingToAnEndThatHasGoneFails) {
    far_ = Descriptor();
    EXPECT_FALSE(near_->send("x"));
}

TEST_F(ConnectionTest, SendingAtOnceEndsAConnectionThatIsNotRead) {
    std::string const message(1U << 16U, 'm');
    Connection far(far_.get());
    std::string_view taken;
    near_->send_at_once(message);
    EXPECT_TRUE(far.receive(taken)) << "as long as it is read";
    for (int i = 0; i < 1000; ++i) {
        near_->send_at_once(message);
    }
    EXPECT_FALSE(near_->send("x"));
}

}  // namespace
