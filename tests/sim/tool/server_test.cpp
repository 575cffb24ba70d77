// Tests of the control socket.
#include "sim/control/server.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <future>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "sim/core/unix_socket.h"
#include "tests/sim/temporary_directory.h"
#include "tests/sim/tool/shell.h"

namespace {

using sim::Device;
using sim::Server;

// A client that waits for what it expects, at most 20 s.
class Client {
public:
    explicit Client(std::string const& path) : socket_(sim::connect_to(path)) {
        timeval const limit{20, 0};
        ::setsockopt(socket_.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    }

    bool send(std::string const& text) const {
        return ::send(socket_.get(), text.data(), text.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(text.size());
    }
    // Until the server has read nothing for a while, with so much of its replies unread.
    void send_until_nobody_reads(std::string const& text) const {
        pollfd writable{socket_.get(), POLLOUT, 0};
        while (::poll(&writable, 1, 200) > 0) {
            ::send(socket_.get(), text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        }
    }
    void wait_for_bytes() const {
        pollfd readable{socket_.get(), POLLIN, 0};
        EXPECT_EQ(::poll(&readable, 1, 20000), 1);
    }
    void end_input() const { ::shutdown(socket_.get(), SHUT_WR); }
    void vanish() { socket_ = sim::Descriptor(); }
    // One line with its line end; empty at the end or after the limit.
    std::string line() {
        std::size_t end = input_.find('\n');
        while (end == std::string::npos) {
            std::array<char, 65536> bytes;
            ssize_t const count = ::recv(socket_.get(), bytes.data(), bytes.size(), 0);
            if (count <= 0) {
                return {};
            }
            input_.append(bytes.data(), static_cast<std::size_t>(count));
            end = input_.find('\n');
        }
        std::string line = input_.substr(0, end + 1);
        input_.erase(0, end + 1);
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
    sim::Descriptor socket_;
    std::string input_;
};

class ServerTest : public testing::Test {
protected:
    ServerTest() { EXPECT_EQ(server_.start(path_), ""); }

    Device device_{std::make_unique<sim::MemoryFileSystem>()};
    TemporaryDirectory directory_;
    std::string path_ = directory_.path() + "/control";
    Server server_{device_, sim::device_commands(), nullptr};
};

TEST_F(ServerTest, AConnectionTakesSeveralCommands) {
    Client client(path_);
    EXPECT_EQ(client.ask("set system.state 3"), "ok\n");
    EXPECT_NE(client.ask("show --json system.state").find("{\"value\":3,"), std::string::npos);
    EXPECT_EQ(client.ask("nonsense"), "error: unknown command \"nonsense\": try help\n");
    EXPECT_EQ(client.ask("clock"), "stepped\nok\n");
}

TEST_F(ServerTest, CommandsMayArriveInPiecesOrTogether) {
    Client client(path_);
    client.send("set system");
    client.send(".state 5\nclo");
    EXPECT_EQ(client.line(), "ok\n");
    client.send("ck\nclock\n");
    EXPECT_EQ(client.lines(4), "stepped\nok\nstepped\nok\n");
}

TEST_F(ServerTest, ChangesAreSentAsTheyHappen) {
    Client watcher(path_);
    EXPECT_EQ(watcher.ask("watch system"), "ok\n");
    Client client(path_);
    EXPECT_EQ(client.ask("set system.state warning"), "ok\n");
    EXPECT_EQ(watcher.line(), "0.000000 system.state 5 warning\n");
    EXPECT_EQ(client.ask("step 2s"), "ok\n");
    EXPECT_EQ(client.ask("set system.state error"), "ok\n");
    EXPECT_EQ(watcher.line(), "2.000000 system.state 6 error\n");
}

TEST_F(ServerTest, SamplesTellWhatIsNowAndThenWhatIsOther) {
    Client watcher(path_);
    EXPECT_EQ(watcher.ask("watch --every 1ms system.state power"), "ok\n");
    EXPECT_EQ(watcher.lines(2), "0.000000 power true\n0.000000 system.state 1 boot\n");
    EXPECT_EQ(Client(path_).ask("set system.state warning"), "ok\n");
    EXPECT_EQ(watcher.line(), "0.000000 system.state 5 warning\n");
}

TEST_F(ServerTest, AWatcherThatDoesNotReadHurtsNobody) {
    Client watcher(path_);
    EXPECT_EQ(watcher.ask("watch --json"), "ok\n");
    Client client(path_);
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(client.ask("step 1s"), "ok\n");
        EXPECT_EQ(client.ask(i % 2 == 0 ? "set system.state warning" : "set system.state error"), "ok\n");
    }
    watcher.vanish();
    EXPECT_EQ(client.ask("clock"), "stepped\nok\n");
}

TEST_F(ServerTest, AWaitEndsWhenItsClientGoes) {
    {
        Client waiter(path_);
        waiter.send("wait system.state == error\n");
    }
    Client half(path_);
    half.send("wait system.state == warning\n");
    half.end_input();
    EXPECT_EQ(Client(path_).ask("set system.state warning"), "ok\n");
    EXPECT_EQ(half.line(), "ok\n") << "who sends no more may still wait";
    server_.stop();
}

TEST_F(ServerTest, ManyClientsAreServedSideBySide) {
    Client first(path_);
    Client second(path_);
    first.send("set system.sta");
    EXPECT_EQ(second.ask("set system.state 2"), "ok\n");
    EXPECT_EQ(first.ask("te 6"), "ok\n");
    EXPECT_NE(second.ask("show --json system.state").find("{\"value\":6,"), std::string::npos);
}

TEST_F(ServerTest, RepliesArriveAfterTheClientHasEndedItsInput) {
    Client client(path_);
    client.send("clock\nhalf a li");
    client.end_input();
    EXPECT_EQ(client.lines(2), "stepped\nok\n");
    EXPECT_EQ(client.line(), "") << "half a line is no command";
}

TEST_F(ServerTest, ClientsThatVanishHurtNobody) {
    for (int i = 0; i < 50; ++i) {
        Client client(path_);
        client.send("show\nshow\njournal follow\nshow\nha");
        client.vanish();
        device_.access()->journal.write({});
    }
    EXPECT_EQ(Client(path_).ask("clock"), "stepped\nok\n");
}

TEST_F(ServerTest, AClientThatVanishesWithoutReadingHurtsNobody) {
    Client client(path_);
    client.send("clock\n");
    client.wait_for_bytes();
    client.vanish();
    EXPECT_EQ(Client(path_).ask("clock"), "stepped\nok\n");
}

TEST_F(ServerTest, AClientThatIsNotListenedToMayVanish) {
    Client client(path_);
    client.send_until_nobody_reads("clock\n");
    client.vanish();
    EXPECT_EQ(Client(path_).ask("clock"), "stepped\nok\n");
}

TEST_F(ServerTest, GarbageIsRefused) {
    Client client(path_);
    std::string garbage;
    for (int i = 0; i < 256; ++i) {
        garbage += i == '\n' ? ' ' : static_cast<char>(i);
    }
    EXPECT_EQ(client.ask(garbage).substr(0, 7), "error: ");
    EXPECT_EQ(client.ask("clock"), "stepped\nok\n");
}

TEST_F(ServerTest, LinesThatAreTooLongAreRefusedOnce) {
    Client client(path_);
    EXPECT_TRUE(client.send(std::string(1U << 20U, 'x')));
    EXPECT_EQ(client.ask("clock"), "error: line too long\n");
    EXPECT_EQ(client.ask("clock"), "stepped\nok\n");
}

TEST_F(ServerTest, TheLongestLineIsStillTaken) {
    Client client(path_);
    std::string const comment(Server::kLongestLine, '#');
    EXPECT_EQ(client.ask(comment), "ok\n");
    EXPECT_EQ(client.ask(comment + "#"), "error: line too long\n");
    EXPECT_EQ(client.ask("clock"), "stepped\nok\n");
}

// A record of a call, so many microseconds after the start.
sim::Record record(int time) {
    sim::Record record;
    record.start = sim::Time(time);
    record.program = "console.1";
    record.thread = 1;
    record.object = 2;
    record.text = "rtu_t::single_shot(true) = 0";
    return record;
}

TEST_F(ServerTest, AFollowerGetsTheJournal) {
    Client client(path_);
    EXPECT_EQ(client.ask("journal follow"), "ok\n");
    device_.access()->journal.write(record(2'000'000));
    EXPECT_EQ(client.line(), "2.000000 0.000000 1 call console.1 1 2 - - rtu_t::single_shot(true) = 0\n");
    EXPECT_EQ(Client(path_).ask("set system.state 3"), "ok\n");
    EXPECT_EQ(client.line(), "0.000000 0.000000 2 command - - - - - set system.state 3\n");
}

TEST_F(ServerTest, AFollowerMayHaveTheLinesTogether) {
    Client client(path_);
    EXPECT_EQ(client.ask("journal follow --every 1ms"), "ok\n");
    device_.access()->journal.write(record(1));
    device_.access()->journal.write(record(2));
    EXPECT_EQ(client.lines(2),
              "0.000001 0.000000 1 call console.1 1 2 - - rtu_t::single_shot(true) = 0\n"
              "0.000002 0.000000 2 call console.1 1 2 - - rtu_t::single_shot(true) = 0\n");
}

TEST_F(ServerTest, AFollowerMayHaveTheJournalAsJson) {
    Client client(path_);
    EXPECT_EQ(client.ask("journal follow --json"), "ok\n");
    EXPECT_EQ(Client(path_).ask("power off"), "ok\n");
    EXPECT_EQ(client.line(),
              "{\"sequence\": 1, \"start\": 0.000000, \"took\": 0.000000, \"kind\": \"command\", \"text\": "
              "\"power off\"}\n");
}

TEST_F(ServerTest, ACommandOfAnyBytesIsALineOfTheJournal) {
    Client lines(path_);
    Client json(path_);
    EXPECT_EQ(lines.ask("journal follow"), "ok\n");
    EXPECT_EQ(json.ask("journal follow --json"), "ok\n");
    EXPECT_EQ(Client(path_).ask("fault add base_t::base_t arg 1 \"\xFF\x1B[2J\xC3\xBC\" status -1"), "1\nok\n");
    EXPECT_EQ(lines.line(),
              "0.000000 0.000000 1 command - - - - - fault add base_t::base_t arg 1 "
              "\"\\xFF\\x1B[2J\xC3\xBC\" status -1\n");
    EXPECT_EQ(json.line(),
              "{\"sequence\": 1, \"start\": 0.000000, \"took\": 0.000000, \"kind\": \"command\", \"text\": "
              "\"fault add base_t::base_t arg 1 \\\"\\\\xFF\\\\x1B[2J\xC3\xBC\\\" status -1\"}\n");
}

TEST_F(ServerTest, CommandsThatOnlyLookAreNotInTheJournal) {
    Client client(path_);
    EXPECT_EQ(client.ask("journal follow"), "ok\n");
    Client other(path_);
    for (char const* const look : {"show system.state", "clock", "fault list", "node list", "programs", "help"}) {
        EXPECT_NE(other.ask(look), "") << look;
    }
    EXPECT_EQ(other.ask("set system.state 99").find("error: system.state: 99 is not one of 1 boot, "), 0U);
    EXPECT_EQ(other.ask("step 1s"), "ok\n");
    EXPECT_EQ(client.line(), "0.000000 1.000000 1 command - - - - - step 1s\n");
}

TEST_F(ServerTest, AFollowerThatDoesNotReadIsToldHowMuchItLost) {
    constexpr int kRecords = 100'000;
    Client client(path_);
    EXPECT_EQ(client.ask("journal follow"), "ok\n");
    for (int i = 1; i <= kRecords; ++i) {
        device_.access()->journal.write(record(i));
    }
    int last = 0;
    int missing = 0;
    while (last < kRecords) {
        std::string const line = client.line();
        ASSERT_NE(line, "") << last;
        std::istringstream fields(line);
        std::string start;
        std::string took;
        int sequence = 0;
        std::string kind;
        fields >> start >> took >> sequence >> kind;
        if (kind == "lost") {
            std::string word;
            int lost = 0;
            fields >> word >> word >> word >> word >> word >> lost;
            EXPECT_EQ(sequence, last + lost) << line;
            missing += lost;
        } else {
            EXPECT_EQ(sequence, last + 1) << line;
        }
        last = sequence;
    }
    EXPECT_GT(missing, 0);
}

TEST_F(ServerTest, AFollowerThatDoesNotReadDelaysNobody) {
    Client client(path_);
    EXPECT_EQ(client.ask("journal follow"), "ok\n");
    Client other(path_);
    for (int i = 0; i < 10'000; ++i) {
        device_.access()->journal.write(record(i));
    }
    EXPECT_EQ(other.ask("clock"), "stepped\nok\n");
}

TEST_F(ServerTest, AFollowerThatHasGoneIsForgotten) {
    {
        Client client(path_);
        EXPECT_EQ(client.ask("journal follow"), "ok\n");
        EXPECT_TRUE(device_.access()->journal.on());
    }
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (device_.access()->journal.on() && std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(device_.access()->journal.on());
}

TEST_F(ServerTest, AStepDelaysNobodyElse) {
    std::promise<void> begun;
    std::promise<void> release;
    device_.timeline.at(std::chrono::seconds(1), [&] {
        begun.set_value();
        release.get_future().wait();
    });
    Client stepping(path_);
    EXPECT_TRUE(stepping.send("step 2s\n"));
    begun.get_future().wait();
    EXPECT_NE(Client(path_).ask("show --json clock.time").find("{\"value\":1,"), std::string::npos);
    release.set_value();
    EXPECT_EQ(stepping.line(), "ok\n");
}

// Programs that nobody can do without.
class WaitedFor : public sim::ProgramList {
    std::vector<std::string> connected() override { return {"console.1  pid 1  objects 0"}; }
    std::vector<std::string> waited_for() override { return {"console.1, pid 1, is in a callback"}; }
};

TEST_F(ServerTest, AStepSaysWhomItWaitsFor) {
    WaitedFor programs;
    std::string const path = directory_.path() + "/other";
    Server server(device_, sim::device_commands(), &programs);
    EXPECT_EQ(server.start(path), "");
    std::promise<void> release;
    device_.timeline.at(std::chrono::seconds(1), [&] { release.get_future().wait(); });
    Client stepping(path);
    EXPECT_TRUE(stepping.send("step 2s\n"));
    EXPECT_EQ(stepping.line(), "waiting: console.1, pid 1, is in a callback\n");
    EXPECT_EQ(Client(path).ask("programs"), "console.1  pid 1  objects 0\nok\n");
    release.set_value();
    std::string line = stepping.line();
    while (line == "waiting: console.1, pid 1, is in a callback\n") {
        line = stepping.line();
    }
    EXPECT_EQ(line, "ok\n");
}

TEST_F(ServerTest, AProcessThatConnectsWithoutEndLeavesRoomForOthers) {
    std::vector<std::unique_ptr<Client>> clients;
    while (clients.size() < Server::kMostClients / 2) {
        EXPECT_EQ(clients.emplace_back(std::make_unique<Client>(path_))->ask("clock"), "stepped\nok\n");
    }
    std::string const refusal = "error: too many connections: a process may have as many as it leaves to others\n";
    EXPECT_EQ(Client(path_).line(), refusal);
    EXPECT_EQ(shell(std::string(R47_SIM_EMULATOR) + " " + R47_SIM + " --device " + directory_.path() + " clock").output,
              "stepped\n");
    clients.clear();
    std::string reply = refusal;
    for (auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
         reply == refusal && std::chrono::steady_clock::now() < end; std::this_thread::yield()) {
        reply = Client(path_).ask("clock");
    }
    EXPECT_EQ(reply, "stepped\nok\n");
}

TEST_F(ServerTest, OnlyThisUserCanReachTheSocket) {
    struct stat status {};
    ASSERT_EQ(::stat(path_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(ServerTest, ASocketThatIsThereCanBeConnectedTo) {
    for (int i = 0; i < 200; ++i) {
        std::string const path = directory_.path() + "/" + std::to_string(i);
        std::atomic<bool> looking{false};
        auto connected = std::async(std::launch::async, [&] {
            looking = true;
            while (::access(path.c_str(), F_OK) != 0) {
            }
            return static_cast<bool>(sim::connect_to(path));
        });
        while (!looking) {
        }
        Server server(device_, sim::device_commands(), nullptr);
        EXPECT_EQ(server.start(path), "");
        ASSERT_TRUE(connected.get()) << i;
    }
}

TEST_F(ServerTest, ASocketThatNobodyServesIsTakenOver) {
    sim::Error error;
    std::string const dead = directory_.path() + "/dead";
    { sim::Descriptor const listener = sim::listen_on(dead, error); }
    EXPECT_FALSE(sim::connect_to(dead));
    Server other(device_, sim::device_commands(), nullptr);
    EXPECT_EQ(other.start(dead), "");
    EXPECT_EQ(Client(dead).ask("clock"), "stepped\nok\n");
}

TEST_F(ServerTest, APathThatIsTooLongIsRefused) {
    Server other(device_, sim::device_commands(), nullptr);
    std::string const path = directory_.path() + "/" + std::string(200, 'x');
    EXPECT_EQ(other.start(path), "cannot serve " + path + ": File name too long");
}

TEST_F(ServerTest, ADirectoryThatIsMissingIsToldOf) {
    Server other(device_, sim::device_commands(), nullptr);
    EXPECT_EQ(other.start("/nowhere/control"), "cannot serve /nowhere/control: No such file or directory");
}

TEST_F(ServerTest, LowDescriptorsStayFreeForTheProgram) {
    Client client(path_);
    EXPECT_EQ(client.ask("clock"), "stepped\nok\n");
    for (int fd = 3; fd < 10; ++fd) {
        int type = 0;
        socklen_t size = sizeof type;
        EXPECT_NE(::getsockopt(fd, SOL_SOCKET, SO_TYPE, &type, &size), 0) << fd;
    }
}

}  // namespace
