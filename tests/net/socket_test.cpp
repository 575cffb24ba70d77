// Tests of the socket classes.
#include "net/socket.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <stdexcept>
#include <string>
#include <thread>

#include "tests/support/interrupted_wait.h"

namespace {

constexpr unsigned short kPort = 32361;

template <typename Action>
std::string thrown_by(Action action) {
    try {
        action();
    } catch (std::runtime_error const& error) {
        return error.what();
    }
    return "nothing";
}

bool is_open(int descriptor) {
    return ::fcntl(descriptor, F_GETFD) != -1;
}

std::atomic<bool> listening_fails{false};
std::atomic<int> last_backlog{0};

}  // namespace

// In this program the C library's gives way to it: no other way to have the kernel refuse.
extern "C" int listen(int descriptor, int backlog) noexcept {
    last_backlog = backlog;
    if (listening_fails) {
        errno = ENOBUFS;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_listen, descriptor, backlog));
}

namespace {

TEST(SocketTest, AddressesConvertBothWays) {
    socket_tcp const socket;
    EXPECT_EQ(socket.inet_ntop(socket.inet_pton("127.0.0.1")), "127.0.0.1");
    EXPECT_EQ(socket.inet_pton("127.0.0.1"), htonl(INADDR_LOOPBACK));
    EXPECT_EQ(socket.inet_ntop(socket.inet_pton("255.255.255.255")), "255.255.255.255");
}

TEST(SocketTest, UnparsableAddressIsAnError) {
    socket_tcp const socket;
    EXPECT_EQ(thrown_by([&] { socket.inet_pton("localhost"); }), "Invalid address");
    EXPECT_EQ(thrown_by([&] { socket.inet_pton(""); }), "Invalid address");
    EXPECT_EQ(thrown_by([] { server_tcp("300.0.0.1", kPort); }), "Invalid address");
    EXPECT_EQ(thrown_by([] { socket_tcp().connect_to_host("300.0.0.1", kPort); }), "Invalid address");
}

TEST(SocketTest, CreationFailureThrows) {
    EXPECT_EQ(thrown_by([] { socket_base(AF_INET, -1, 0, socket_base::blocking); }), "Cannot create socket");
}

TEST(SocketTest, ModesHaveTheirNumbers) {
    EXPECT_EQ(socket_base::blocking, 0);
    EXPECT_EQ(socket_base::non_blocking, 1);
}

TEST(SocketTest, NonBlockingModeIsSet) {
    socket_base const waiting(AF_INET, SOCK_STREAM, IPPROTO_TCP, socket_base::blocking);
    socket_base const not_waiting(AF_INET, SOCK_STREAM, IPPROTO_TCP, socket_base::non_blocking);
    EXPECT_FALSE(::fcntl(waiting.descriptor(), F_GETFL) & O_NONBLOCK);
    EXPECT_TRUE(::fcntl(not_waiting.descriptor(), F_GETFL) & O_NONBLOCK);
}

TEST(SocketTest, AdoptedDescriptorIsLeftAsItIs) {
    int const descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
    socket_tcp const socket(descriptor);
    EXPECT_EQ(socket.descriptor(), descriptor);
    EXPECT_TRUE(::fcntl(descriptor, F_GETFL) & O_NONBLOCK);
}

TEST(SocketTest, FailuresOfReadWriteAndCloseAreTheirResults) {
    // In a process of its own: the destruction that follows the close takes descriptor 0 along.
    EXPECT_EXIT(
        {
            socket_tcp socket;
            ::close(socket.descriptor());
            char byte;
            bool const failed = socket.read_data(&byte, 1) == -1 && socket.write_data("x") == -1 &&
                                socket.close() == -1 && socket.descriptor() == 0;
            std::exit(failed ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(SocketTest, PortInUseThrows) {
    server_tcp const first("127.0.0.1", kPort);
    EXPECT_EQ(thrown_by([] { server_tcp("127.0.0.1", kPort); }), "Bind failed");
}

TEST(SocketTest, FailureToListenThrows) {
    listening_fails = true;
    EXPECT_EQ(thrown_by([] { server_tcp("127.0.0.1", kPort); }), "Listen failed");
    listening_fails = false;
    EXPECT_EQ(thrown_by([] { server_tcp("127.0.0.1", kPort); }), "nothing");
    EXPECT_EQ(last_backlog, 4096);
}

TEST(SocketTest, ClientAndServerTalk) {
    server_tcp const server("127.0.0.1", kPort + 1);
    socket_tcp client;
    ASSERT_EQ(client.connect_to_host("127.0.0.1", kPort + 1), 0);
    socket_tcp accepted = server.accept();
    EXPECT_EQ(client.write_data("hello"), 5);
    char text[8] = "";
    EXPECT_EQ(accepted.read_data(text, 2), 2);
    EXPECT_EQ(accepted.read_data(text + 2, 5), 3);
    EXPECT_STREQ(text, "hello");
    client.shutdown();
    EXPECT_EQ(accepted.read_data(text, 1), 0);
}

TEST(SocketTest, ConnectToNobodyFails) {
    socket_tcp client;
    EXPECT_EQ(client.connect_to_host("127.0.0.1", kPort + 2), -1);
}

TEST(SocketTest, AcceptOnAClosedServerThrows) {
    // In a process of its own: the destruction that follows the close takes descriptor 0 along.
    EXPECT_EXIT(
        {
            server_tcp server("127.0.0.1", kPort + 3);
            ::close(server.descriptor());
            std::exit(thrown_by([&] { server.accept(); }) == "Cannot accept" ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(SocketTest, ASignalDoesNotEndAnAccept) {
    server_tcp const server("127.0.0.1", kPort + 5);
    socket_tcp client;
    std::string thrown;
    interrupt_while_it_waits([&] { thrown = thrown_by([&] { server.accept(); }); },
                             [&] { EXPECT_EQ(client.connect_to_host("127.0.0.1", kPort + 5), 0); });
    EXPECT_EQ(thrown, "nothing");
}

TEST(SocketTest, ShutdownWakesAPendingRead) {
    server_tcp const server("127.0.0.1", kPort + 4);
    socket_tcp client;
    ASSERT_EQ(client.connect_to_host("127.0.0.1", kPort + 4), 0);
    socket_tcp const accepted = server.accept();
    char byte;
    int result = -2;
    std::thread reader([&] { result = accepted.read_data(&byte, 1); });
    accepted.shutdown();
    reader.join();
    EXPECT_EQ(result, 0);
}

TEST(SocketTest, DestructionClosesTheDescriptor) {
    int descriptor;
    {
        socket_tcp const socket;
        descriptor = socket.descriptor();
        EXPECT_TRUE(is_open(descriptor));
    }
    EXPECT_FALSE(is_open(descriptor));
}

TEST(SocketTest, DestructionAfterCloseClosesStandardInput) {
    int const standard_input = ::fcntl(STDIN_FILENO, F_DUPFD, 10);
    {
        socket_tcp socket;
        EXPECT_EQ(socket.close(), 0);
        EXPECT_EQ(socket.descriptor(), 0);
        EXPECT_TRUE(is_open(STDIN_FILENO));
    }
    EXPECT_FALSE(is_open(STDIN_FILENO));
    ::dup2(standard_input, STDIN_FILENO);
    ::close(standard_input);
}

}  // namespace
