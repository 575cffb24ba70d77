// Tests of the control socket.
#include "sim/control/server.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <string>

#include "sim/control/control_socket.h"
#include "tests/sim/temporary_directory.h"

namespace {

using sim::Device;
using sim::Server;

// A client that waits for what it expects, at most 20 s.
class Client {
public:
    explicit Client(std::string const& path) : fd_(sim::connect_to(path)) {
        timeval const limit{20, 0};
        ::setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    }
    Client(Client const&) = delete;
    Client& operator=(Client const&) = delete;
    ~Client() { vanish(); }

    bool send(std::string const& text) const {
        return ::send(fd_, text.data(), text.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(text.size());
    }
    // Until the server has read nothing for a while, with so much of its replies unread.
    void send_until_nobody_reads(std::string const& text) const {
        pollfd writable{fd_, POLLOUT, 0};
        while (::poll(&writable, 1, 200) > 0) {
            ::send(fd_, text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        }
    }
    void wait_for_bytes() const {
        pollfd readable{fd_, POLLIN, 0};
        EXPECT_EQ(::poll(&readable, 1, 20000), 1);
    }
    void end_input() const { ::shutdown(fd_, SHUT_WR); }
    void vanish() {
        ::close(fd_);
        fd_ = -1;
    }
    // One line with its line end; empty at the end or after the limit.
    std::string line() {
        std::string line;
        for (char c = 0; c != '\n' && ::recv(fd_, &c, 1, 0) == 1;) {
            line += c;
        }
        return line;
    }
    std::string lines(int count) {
        std::string lines;
        for (int i = 0; i < count; ++i) {
            lines += line();
        }
        return lines;
    }
    // The whole reply.
    std::string ask(std::string const& command) {
        send(command + "\n");
        std::string reply;
        for (std::string next = line(); !next.empty(); next = line()) {
            reply += next;
            if (next == "ok\n" || next.compare(0, 7, "error: ") == 0) {
                break;
            }
        }
        return reply;
    }

private:
    int fd_;
};

class ServerTest : public testing::Test {
protected:
    ServerTest() { EXPECT_EQ(server_.start(path_), ""); }

    Device device_{std::make_unique<sim::MemoryFileSystem>()};
    TemporaryDirectory directory_;
    std::string path_ = directory_.path() + "/control.sock";
    Server server_{device_, sim::device_commands()};
};

TEST_F(ServerTest, AConnectionTakesSeveralCommands) {
    Client client(path_);
    EXPECT_EQ(client.ask("set system.state 3"), "ok\n");
    EXPECT_EQ(client.ask("show --json system.state"), "{\n  \"system.state\": 3\n}\nok\n");
    EXPECT_EQ(client.ask("nonsense"), "error: unknown command \"nonsense\": try help\n");
    EXPECT_EQ(client.ask("clock"), "real\nok\n");
}

TEST_F(ServerTest, CommandsMayArriveInPiecesOrTogether) {
    Client client(path_);
    client.send("set system");
    client.send(".state 5\nclo");
    EXPECT_EQ(client.line(), "ok\n");
    client.send("ck\nclock\n");
    EXPECT_EQ(client.lines(4), "real\nok\nreal\nok\n");
}

TEST_F(ServerTest, ManyClientsAreServedSideBySide) {
    Client first(path_);
    Client second(path_);
    first.send("set system.sta");
    EXPECT_EQ(second.ask("set system.state 2"), "ok\n");
    EXPECT_EQ(first.ask("te 6"), "ok\n");
    EXPECT_EQ(second.ask("show --json system.state"), "{\n  \"system.state\": 6\n}\nok\n");
}

TEST_F(ServerTest, RepliesArriveAfterTheClientHasEndedItsInput) {
    Client client(path_);
    client.send("clock\nhalf a li");
    client.end_input();
    EXPECT_EQ(client.lines(2), "real\nok\n");
    EXPECT_EQ(client.line(), "") << "half a line is no command";
}

TEST_F(ServerTest, ClientsThatVanishHurtNobody) {
    for (int i = 0; i < 50; ++i) {
        Client client(path_);
        client.send("show\nshow\njournal follow\nshow\nha");
        client.vanish();
        device_.journal.write({}, 1, "line");
    }
    EXPECT_EQ(Client(path_).ask("clock"), "real\nok\n");
}

TEST_F(ServerTest, AClientThatVanishesWithoutReadingHurtsNobody) {
    Client client(path_);
    client.send("clock\n");
    client.wait_for_bytes();
    client.vanish();
    EXPECT_EQ(Client(path_).ask("clock"), "real\nok\n");
}

TEST_F(ServerTest, AClientThatIsNotListenedToMayVanish) {
    Client client(path_);
    client.send_until_nobody_reads("clock\n");
    client.vanish();
    EXPECT_EQ(Client(path_).ask("clock"), "real\nok\n");
}

TEST_F(ServerTest, GarbageIsRefused) {
    Client client(path_);
    std::string garbage;
    for (int i = 0; i < 256; ++i) {
        garbage += i == '\n' ? ' ' : static_cast<char>(i);
    }
    EXPECT_EQ(client.ask(garbage).substr(0, 7), "error: ");
    EXPECT_EQ(client.ask("clock"), "real\nok\n");
}

TEST_F(ServerTest, LinesThatAreTooLongAreRefusedOnce) {
    Client client(path_);
    EXPECT_TRUE(client.send(std::string(1U << 20U, 'x')));
    EXPECT_EQ(client.ask("clock"), "error: line too long\n");
    EXPECT_EQ(client.ask("clock"), "real\nok\n");
}

TEST_F(ServerTest, TheLongestLineIsStillTaken) {
    Client client(path_);
    std::string const comment(Server::kLongestLine, '#');
    EXPECT_EQ(client.ask(comment), "ok\n");
    EXPECT_EQ(client.ask(comment + "#"), "error: line too long\n");
    EXPECT_EQ(client.ask("clock"), "real\nok\n");
}

TEST_F(ServerTest, AFollowerGetsTheJournal) {
    Client client(path_);
    EXPECT_EQ(client.ask("journal follow"), "ok\n");
    EXPECT_EQ(client.ask("journal follow"), "ok\n");
    device_.journal.write(std::chrono::seconds(2), 1, "rtu_t::single_shot(true) = 0");
    EXPECT_EQ(client.line(), "2.000000 1 rtu_t::single_shot(true) = 0\n");
    EXPECT_EQ(client.ask("clock"), "real\nok\n");
}

TEST_F(ServerTest, AFollowerThatDoesNotReadIsDropped) {
    Client client(path_);
    EXPECT_EQ(client.ask("journal follow"), "ok\n");
    std::string const text(1U << 16U, 'x');
    for (int i = 0; i < 1000 && device_.journal.on(); ++i) {
        device_.journal.write({}, 1, text);
    }
    EXPECT_EQ(Client(path_).ask("clock"), "real\nok\n");
    EXPECT_FALSE(device_.journal.on());
}

TEST_F(ServerTest, OnlyThisUserCanReachTheSocket) {
    struct stat status {};
    ASSERT_EQ(::stat(path_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(ServerTest, ADirectoryForOthersIsRefused) {
    ::chmod(directory_.path().c_str(), 0755);
    Server other(device_, sim::device_commands());
    EXPECT_NE(other.start(directory_.path() + "/other.sock").find("mode 0700"), std::string::npos);
}

TEST_F(ServerTest, AMissingDirectoryIsMade) {
    Server other(device_, sim::device_commands());
    EXPECT_EQ(other.start(directory_.path() + "/new/other.sock"), "");
    struct stat status {};
    ASSERT_EQ(::stat((directory_.path() + "/new").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
}

TEST_F(ServerTest, ALiveSocketIsNotTakenOver) {
    Server other(device_, sim::device_commands());
    EXPECT_EQ(other.start(path_), path_ + " is served by another device");
    EXPECT_EQ(Client(path_).ask("clock"), "real\nok\n");
}

TEST_F(ServerTest, ADeadSocketIsTakenOver) {
    std::string const dead = directory_.path() + "/dead.sock";
    int const fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    dead.copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr const*>(&address), sizeof address), 0);
    ::close(fd);
    Server other(device_, sim::device_commands());
    EXPECT_EQ(other.start(dead), "");
    EXPECT_EQ(Client(dead).ask("clock"), "real\nok\n");
}

TEST_F(ServerTest, AFileInTheWayIsLeftAlone) {
    std::string const file = directory_.path() + "/file";
    std::ofstream(file) << "text";
    Server other(device_, sim::device_commands());
    EXPECT_EQ(other.start(file), "cannot serve " + file + ": Address already in use");
    EXPECT_EQ(::access(file.c_str(), F_OK), 0);
}

TEST_F(ServerTest, APathThatIsTooLongIsRefused) {
    Server other(device_, sim::device_commands());
    std::string const path = directory_.path() + "/" + std::string(200, 'x');
    EXPECT_EQ(other.start(path), "cannot serve " + path + ": File name too long");
}

TEST_F(ServerTest, StoppingRemovesTheSocket) {
    server_.stop();
    EXPECT_NE(::access(path_.c_str(), F_OK), 0);
}

TEST_F(ServerTest, LowDescriptorsStayFreeForTheProgram) {
    Client client(path_);
    EXPECT_EQ(client.ask("clock"), "real\nok\n");
    for (int fd = 3; fd < 10; ++fd) {
        int type = 0;
        socklen_t size = sizeof type;
        EXPECT_NE(::getsockopt(fd, SOL_SOCKET, SO_TYPE, &type, &size), 0) << fd;
    }
}

TEST(ControlSocketTest, LiveSocketsAreFoundAndDeadOnesRemoved) {
    TemporaryDirectory directory;
    std::string const live = directory.path() + "/1.sock";
    std::string const dead = directory.path() + "/2.sock";
    Device device(std::make_unique<sim::MemoryFileSystem>());
    Server server(device, sim::device_commands());
    ASSERT_EQ(server.start(live), "");
    sim::Error error;
    int const fd = sim::listen_on(dead, error);
    ASSERT_EQ(error, "");
    EXPECT_EQ(sim::live_sockets(directory.path()), (std::vector<std::string>{live, dead}));
    ::close(fd);
    EXPECT_EQ(sim::live_sockets(directory.path()), std::vector<std::string>{live});
    EXPECT_NE(::access(dead.c_str(), F_OK), 0);
}

TEST(ControlSocketTest, AMissingDirectoryHasNoSockets) {
    EXPECT_TRUE(sim::live_sockets("/nowhere").empty());
}

TEST(ControlSocketTest, ADirectoryThatCannotBeMadeIsToldWithItsReason) {
    TemporaryDirectory directory;
    std::string const file = directory.path() + "/file";
    std::ofstream(file) << "";
    EXPECT_EQ(sim::prepare_socket_directory(file), file + " is not a directory");
    EXPECT_EQ(sim::prepare_socket_directory("/nowhere/else"), "cannot make /nowhere/else: No such file or directory");
}

TEST(ControlSocketTest, APathThatIsTooLongReachesNobody) {
    EXPECT_EQ(sim::connect_to(std::string(200, 'x')), -1);
    EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST(ControlSocketTest, APathWithoutASlashLiesInTheWorkingDirectory) {
    EXPECT_EQ(sim::directory_of("control.sock"), ".");
    EXPECT_EQ(sim::directory_of("/control.sock"), "/");
    EXPECT_EQ(sim::directory_of("/run/control.sock"), "/run");
}

}  // namespace
