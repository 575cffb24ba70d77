// Transcripts of socket mode: a real TCP client at one end, an operator at the other.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <memory>
#include <ostream>
#include <random>

#include "tests/support/menus.h"

namespace {

using namespace screens;
using menus::Menu;
using support::ConsoleSession;
using support::StationClient;

support::SessionOptions socket_word() {
    support::SessionOptions options;
    options.arguments = {"socket"};
    return options;
}

// The console in socket mode, with its client at the main menu.
class SocketConsoleTest : public testing::Test {
protected:
    SocketConsoleTest() { session.wait_for("****  Enter the Option ******\n"); }

    // The operator's 'x' ends the mode, and with it the console that was started for it.
    void expect_operator_ends_it() {
        session.type("x\n");
        EXPECT_EQ(session.wait_for_exit(), 0);
        EXPECT_EQ(session.errors(), "");
    }

    ConsoleSession session{socket_word()};
    StationClient client;
};

TEST_F(SocketConsoleTest, DeviceCheckIsAnsweredWithFourCharacters) {
    client.send("A\n");
    EXPECT_EQ(client.receive_reply(), "0;\\n");
    expect_operator_ends_it();
}

TEST_F(SocketConsoleTest, ModeStartsWithItsTraceAndTheConsolesStart) {
    session.wait_for("Please enter your option: ");
    client.send("x\n");
    session.wait_for("Entered Option = x\n");
    expect_operator_ends_it();
    EXPECT_EQ(session.output(), "System calls\n6\nint test_socket()\n" + kSocketMenu + kStart + main_menu() +
                                    "ReadLine: x\nEntered Option = x\n\t\t Your Option = x\n");
}

struct LineCase {
    char const* name;
    char const* sent;
    char const* trace;
};

void PrintTo(LineCase const& line, std::ostream* out) {
    *out << line.name;
}

class SocketConsoleLineTest : public SocketConsoleTest,
                              public testing::WithParamInterface<std::tuple<LineCase, bool>> {};

TEST_P(SocketConsoleLineTest, IsReadAsOneOption) {
    auto const& [line, bytewise] = GetParam();
    if (bytewise) {
        client.send_bytewise(line.sent);
    } else {
        client.send(line.sent);
    }
    EXPECT_EQ(client.receive_reply(), "0;\\n");
    session.wait_for(std::string(line.trace) + "ReadLine: A\nEntered Option = A\nFile Error Code: 0\n");
    expect_operator_ends_it();
}

constexpr LineCase kLines[] = {
    {"LineFeed", "A\n", ""},
    {"CarriageReturnAndLineFeed", "A\r\n", ""},
    {"EmptyLinesBefore", "\r\n\nA\n", ""},
    {"BackslashAndN", "A\\n", "Backslash detected \nBackslash and n detected \n"},
    {"BackslashAndNBefore", "\\nA\n", "Backslash detected \nBackslash and n detected \n"},
    {"EscapedCharacter", "\\A\n", "Backslash detected \n"},
    {"BackslashAndR", "\\rA\n", "Backslash detected \n"},
    {"BackslashAndRAfter", "A\\r\\n", "Backslash detected \nBackslash detected \nBackslash and n detected \n"},
};

INSTANTIATE_TEST_SUITE_P(, SocketConsoleLineTest, testing::Combine(testing::ValuesIn(kLines), testing::Bool()),
                         [](auto const& line) {
                             return std::string(std::get<0>(line.param).name) +
                                    (std::get<1>(line.param) ? "Bytewise" : "AtOnce");
                         });

TEST_F(SocketConsoleTest, LongLineCountsByItsFirstCharacter) {
    client.send("A" + std::string(100000, 'z') + "\nA\n");
    EXPECT_EQ(client.receive_reply(), "0;\\n");
    EXPECT_EQ(client.receive_reply(), "0;\\n");
    session.wait_for("ReadLine: A" + std::string(1022, 'z') + "\n");
    expect_operator_ends_it();
}

TEST_F(SocketConsoleTest, KeyThatStartsSocketModeDoesNothingInIt) {
    client.send("L\nA\n");
    EXPECT_EQ(client.receive_reply(), "0;\\n");
    session.wait_for(main_menu('A').substr(0, 20));
    expect_operator_ends_it();
    EXPECT_EQ(session.output().find("int test_socket()"), session.output().rfind("int test_socket()"));
}

TEST_F(SocketConsoleTest, ClientThatLeavesTheMainMenuLetsTheOperatorEndAtOnce) {
    client.send("k\nx\nx\n");
    session.wait_for("Entered Option = k\n");
    session.wait_for("Entered Option = x\n");
    expect_operator_ends_it();
}

TEST_F(SocketConsoleTest, OtherKeysOfTheOperatorShowTheLocalMenuAgain) {
    session.type("s\n");
    session.wait_for("\t\t Your Option = s\n");
    session.wait_for(kSocketMenu);
    client.send("A\n");
    EXPECT_EQ(client.receive_reply(), "0;\\n");
    expect_operator_ends_it();
}

TEST_F(SocketConsoleTest, OperatorEndsItWithTheClientAtTheMainMenu) {
    expect_operator_ends_it();
    EXPECT_TRUE(client.ended());
}

TEST_F(SocketConsoleTest, OperatorEndsItWithTheClientInAClientDrivenMenu) {
    client.send("k\n");
    session.wait_for("Entered Option = k\n");
    expect_operator_ends_it();
    EXPECT_TRUE(client.ended());
}

TEST_F(SocketConsoleTest, OperatorEndsItWhateverLinesStillWait) {
    constexpr int kCount = 20000;
    std::string lines;
    for (int i = 0; i < kCount; ++i) {
        lines += "A\n";
    }
    client.send(lines);
    session.wait_for("File Error Code: 0\n");
    expect_operator_ends_it();
    int answered = 0;
    for (std::size_t at = 0; (at = session.output().find("ReadLine: A\n", at)) != std::string::npos; ++at) {
        ++answered;
    }
    EXPECT_LT(answered, kCount);
}

TEST_F(SocketConsoleTest, MenuThatReadsTheTerminalHasItUntilItReturns) {
    client.send("b\nA\n");
    session.wait_for(menus::kRtu.start + menus::kRtu.prompt());
    session.type("D\n");
    session.wait_for("Your Option = D\n");
    session.wait_for("Please enter your option: ");
    EXPECT_EQ(session.output().find("ReadLine: A"), std::string::npos);  // waits unread
    session.type("x\n");
    EXPECT_EQ(client.receive_reply(), "0;\\n");
    expect_operator_ends_it();
}

// Again and again: the menu may or may not read the line before the local menu sees that there is one.
TEST_F(SocketConsoleTest, LocalMenuReadsWhatATerminalMenuLeavesOfALine) {
    for (int i = 0; i < 50; ++i) {
        client.send("b\n");
        session.wait_for(menus::kRtu.start + menus::kRtu.prompt());
        session.type("xs\n");
        session.wait_for("\t\t Your Option = s\n");
    }
    client.send("b\n");
    session.wait_for(menus::kRtu.start + menus::kRtu.prompt());
    session.type("xx\n");
    EXPECT_EQ(session.wait_for_exit(), 0);
}

TEST_F(SocketConsoleTest, ExitKeyOfTheSystemStateMenuEndsBothThreads) {
    client.send("l\n");
    session.wait_for(kSystemMenu);
    session.type("x\n");
    EXPECT_EQ(session.wait_for_exit(), 0);
    EXPECT_TRUE(client.ended());
    EXPECT_EQ(session.output().find("\t\t Your Option"), std::string::npos);
}

TEST_F(SocketConsoleTest, ClientThatVanishesInTheSystemStateMenuEndsTheConsole) {
    client.send("l\n");
    session.wait_for(kSystemMenu);
    client.close();
    EXPECT_EQ(session.wait_for_exit(), 0);
    EXPECT_EQ(session.errors(), "");
}

TEST_F(SocketConsoleTest, ClientThatVanishesTakesItsTerminalMenuAlong) {
    client.send("b\n");
    session.wait_for(menus::kRtu.start + menus::kRtu.prompt());
    client.close();
    session.wait_for("Entered Option = x\n");
    expect_operator_ends_it();
}

TEST_F(SocketConsoleTest, ClientThatVanishesAtTheMainMenuEndsItsMenus) {
    client.close();
    session.wait_for("Entered Option = x\n");
    expect_operator_ends_it();
}

TEST_F(SocketConsoleTest, ClientThatVanishesInTheMiddleOfALineEndsItsMenus) {
    client.send("A\\");
    client.reset();
    session.wait_for("Entered Option = x\n");
    expect_operator_ends_it();
    EXPECT_EQ(session.output().find("ReadLine: A"), std::string::npos);
}

TEST_F(SocketConsoleTest, ClientThatVanishesBeforeItsReplyKillsNothing) {
    client.send("A\nA\nA\n");
    client.reset();
    session.wait_for("Entered Option = x\n");
    expect_operator_ends_it();
}

TEST_F(SocketConsoleTest, ClientThatSaysNoMoreIsStillAnswered) {
    client.send("A\nA\n");
    client.finish();
    EXPECT_EQ(client.receive(8), "0;\\n0;\\n");
    session.wait_for("Entered Option = x\n");
    expect_operator_ends_it();
}

TEST_F(SocketConsoleTest, EndOfTheTerminalsInputServesTheClientToItsEnd) {
    session.end_input();
    client.send("A\n");
    EXPECT_EQ(client.receive_reply(), "0;\\n");
    EXPECT_FALSE(session.has_exited());
    client.send("x\n");
    EXPECT_EQ(session.wait_for_exit(), 0);
}

TEST_F(SocketConsoleTest, EndOfTheTerminalsInputEndsWithTheClient) {
    session.end_input();
    client.close();
    EXPECT_EQ(session.wait_for_exit(), 0);
}

TEST_F(SocketConsoleTest, ClosedOutputKeepsAClientServedThatATerminalMenuAsks) {
    client.send("b\n");
    session.wait_for(menus::kRtu.prompt());
    session.type("a\n");
    session.wait_for("Enter a value for imager type");
    session.wait_until_asleep();
    session.close_output();
    client.send("1\n");
    EXPECT_EQ(client.receive(1), "1");
    client.close();
    session.end_input();
    EXPECT_EQ(session.wait_for_exit(), 0);
}

// The console in socket mode, with its client at the main menu, in a menu that it drives, or in one that reads the
// terminal.
class ClientStateTest : public testing::TestWithParam<Menu> {
protected:
    void start(support::SessionOptions const& options = socket_word()) {
        auto const wait_for = [&](std::string const& text) {
            session->wait_for(options.terminal ? at_terminal(text) : text);
        };
        session = std::make_unique<ConsoleSession>(options);
        client = std::make_unique<StationClient>();
        wait_for(main_menu());
        client->send(lines());
        wait_for(GetParam().prompt());
    }

    void start_at_a_terminal() {
        support::SessionOptions options = socket_word();
        options.terminal = true;
        start(options);
    }

    // That bring the client there; at the main menu, a key that shows it again.
    std::string lines() const { return (at_main_menu() ? "s" : GetParam().entry_keys()) + "\n"; }
    bool at_main_menu() const { return GetParam().key == '\0'; }
    bool in_terminal_menu() const { return !GetParam().is(menus::client_driven); }

    void expect_operator_ends_it() {
        session->type("x\n");
        EXPECT_EQ(session->wait_for_exit(), 0);
    }

    std::unique_ptr<ConsoleSession> session;
    std::unique_ptr<StationClient> client;
};

INSTANTIATE_TEST_SUITE_P(, ClientStateTest, testing::Values(menus::kMain, menus::kCamera, menus::kRtu),
                         [](auto const& state) { return std::string(state.param.name); });

TEST_P(ClientStateTest, OperatorEndsTheMode) {
    start();
    if (in_terminal_menu()) {
        session->type("x\n");
        session->wait_for("Your Option = x\n");
        session->wait_for("x. Exit (also 0)");
    }
    expect_operator_ends_it();
}

TEST_P(ClientStateTest, OrderlyEndOfTheClientEndsItsMenus) {
    start();
    client->close();
    session->wait_for("Entered Option = x\n");
    expect_operator_ends_it();
}

TEST_P(ClientStateTest, ResetByTheClientEndsItsMenus) {
    start();
    client->reset();
    session->wait_for("Entered Option = x\n");
    expect_operator_ends_it();
}

TEST_P(ClientStateTest, HalfOpenClientDoesNotKeepTheOperator) {
    if (!support::has_own_network()) {
        GTEST_SKIP() << "cuts its network, and this host allows no network namespaces";
    }
    start();
    support::cut_network();
    client->close();
    if (in_terminal_menu()) {
        session->type("x\n");
        session->wait_for("Your Option = x\n");
        session->wait_for("x. Exit (also 0)");
    }
    expect_operator_ends_it();
}

TEST_P(ClientStateTest, EndOfTheTerminalsInputEndsWithTheClient) {
    start();
    session->end_input();
    if (in_terminal_menu()) {
        session->wait_for("Your Option = x\n");  // that menu has no more input
    }
    EXPECT_FALSE(session->has_exited());
    client->close();
    EXPECT_EQ(session->wait_for_exit(), 0);
}

TEST_P(ClientStateTest, ConsoleSleepsWhileItWaits) {
    start();
    session->wait_until_asleep();
    if (in_terminal_menu()) {
        session->type("a\n");
        session->wait_for("Enter a value for imager type");
        session->type("x\n");  // lies there until the client has answered
        session->wait_until_asleep();
        client->send("1\n");
        session->wait_for(main_menu());
        session->wait_until_asleep();
    }
    session->end_input();
    session->wait_until_asleep();
}

TEST_P(ClientStateTest, ConsoleSleepsWhileItWaitsAtATerminal) {
    start_at_a_terminal();
    session->wait_until_asleep();
    if (in_terminal_menu()) {  // where the client is asked, and Ctrl-D at the terminal ends the question
        session->type("a\n");
        session->wait_for("Enter a value for imager type");
        session->wait_until_asleep();
    }
}

TEST_P(ClientStateTest, SignalsEndTheConsole) {
    for (int const number : {SIGINT, SIGTERM, SIGHUP}) {
        start();
        ::kill(session->console_pid(), number);
        EXPECT_EQ(session->wait_for_exit(), 128 + number);
        client->reset();  // nothing of the port is held for the next one
    }
}

TEST_P(ClientStateTest, ControlDCostsOneRedisplay) {
    start_at_a_terminal();
    session->type("\x04");
    session->wait_for(std::string("Your Option = ") + '\0');
    session->wait_for("Please enter your option: ");
    session->type(in_terminal_menu() ? "x\n" : "");
    session->type("x\n");
    EXPECT_EQ(session->wait_for_exit(), 0);
}

TEST_P(ClientStateTest, TerminalThatIsClosedEndsTheConsole) {
    start_at_a_terminal();
    session->hang_up();
    EXPECT_EQ(session->wait_for_exit(), 128 + SIGHUP);
}

TEST_P(ClientStateTest, ClosedOutputKeepsTheClientServed) {
    start();
    session->close_output();
    session->type(in_terminal_menu() ? "x\n" : "");
    client->send(at_main_menu() || in_terminal_menu() ? "A\n" : "x\nA\n");
    EXPECT_EQ(client->receive_reply(), "0;\\n");
    expect_operator_ends_it();
}

TEST_P(ClientStateTest, FullOutputKeepsTheClientServed) {
    support::SessionOptions options = support::in_shell("exec \"$@\" >/dev/full");
    options.arguments = {"socket"};
    session = std::make_unique<ConsoleSession>(options);
    client = std::make_unique<StationClient>();
    client->send("A\n");
    EXPECT_EQ(client->receive_reply(), "0;\\n");
    client->send(lines());
    client->close();
    session->end_input();
    EXPECT_EQ(session->wait_for_exit(), 0);
}

TEST(ListeningTest, ConsoleSleepsWhileItWaits) {
    ConsoleSession session(socket_word());
    session.wait_for("int test_socket()\n");
    session.wait_until_asleep();
}

TEST(ListeningTest, SignalsEndTheConsole) {
    for (int const number : {SIGINT, SIGTERM, SIGHUP}) {
        ConsoleSession session(socket_word());
        session.wait_for("int test_socket()\n");
        ::kill(session.console_pid(), number);
        EXPECT_EQ(session.wait_for_exit(), 128 + number);
    }
}

TEST(ListeningTest, ControlDIsReadByTheLocalMenu) {
    support::SessionOptions options = socket_word();
    options.terminal = true;
    ConsoleSession session(options);
    session.wait_for("int test_socket()\r\n");
    session.type("\x04");
    StationClient client;
    session.wait_for(std::string("Your Option = ") + '\0');
    client.send("A\n");
    EXPECT_EQ(client.receive_reply(), "0;\\n");
    session.type("x\n");
    EXPECT_EQ(session.wait_for_exit(), 0);
}

TEST(ListeningTest, EndOfTheTerminalsInputWaitsForTheClient) {
    ConsoleSession session(socket_word());
    session.end_input();
    session.wait_for("int test_socket()\n");
    StationClient client;
    client.send("A\nx\n");
    EXPECT_EQ(client.receive_reply(), "0;\\n");
    EXPECT_EQ(session.wait_for_exit(), 0);
}

TEST_F(SocketConsoleTest, SecondConsoleCannotBind) {
    ConsoleSession second(socket_word());
    EXPECT_EQ(second.wait_for_exit(), 128 + SIGABRT);
    EXPECT_EQ(second.output(), "System calls\n6\nint test_socket()\n");
    EXPECT_NE(second.errors().find("Bind failed"), std::string::npos) << second.errors();
    expect_operator_ends_it();
}

TEST_F(SocketConsoleTest, PortOfTheLastModeIsHeld) {
    expect_operator_ends_it();
    client.close();
    ConsoleSession second(socket_word());
    EXPECT_EQ(second.wait_for_exit(), 128 + SIGABRT);
    EXPECT_NE(second.errors().find("Bind failed"), std::string::npos) << second.errors();
}

TEST(SocketConsoleKeyTest, EndingItClosesStandardInput) {
    ConsoleSession session;
    session.type("L\n");
    StationClient client;
    session.wait_for("System calls\n");
    session.wait_for("System calls\n");
    client.send("x\n");
    session.wait_for("Entered Option = x\n");
    session.type("x\n");
    // The main menu goes on, and finds its input ended.
    session.wait_for("\t\t Your Option = x\n");
    session.wait_for(main_menu('\0'));
    session.wait_for(main_menu('\0'));
}

// The operator ended the first mode under a client that would have gone on; of that nothing is left.
TEST(SocketConsoleKeyTest, SecondModeServesItsClientToo) {
    support::SessionOptions options;
    options.entry_point = "console_after_socket_mode";
    ConsoleSession session(options);
    {
        StationClient client;
        session.wait_for(main_menu());
        session.type("x\n");
        EXPECT_TRUE(client.ended());
        client.reset();  // else the system would hold the port
    }
    session.wait_for("returned 0\n" + kStart + main_menu());
    session.type("bxL\n");
    session.wait_for(menus::kRtu.start);
    session.wait_for("Your Option = x\n" + main_menu('L') + "int test_socket()\n");
    StationClient client;
    client.send("A\n");
    EXPECT_EQ(client.receive_reply(), "0;\\n");
    session.type("x\n");
    EXPECT_TRUE(client.ended());
}

TEST(SocketConsoleKeyTest, WhileItIsActiveItRefusesToStart) {
    support::SessionOptions options;
    options.entry_point = "socket_mode_while_active";
    EXPECT_EQ(support::run_console("", options).output, "int test_socket()\nreturned -1\n");
}

// Clients that are cut at a random byte of a session that visits menus, by an orderly end or by a reset. The first
// one is not cut: by then the library has its threads, and standard input is closed, as it stays.
TEST(SocketConsoleKeyTest, CutConnectionsLeaveNothingBehind) {
    std::string const script = "A\r\nk\nm\nu\n25\nabc\nx\na\nH\n\\2\\np\nx\n\\\\n\nA\\nt\nr\nx\nA\n";
    std::mt19937 random(32360);
    support::SessionOptions options;
    options.entry_point = "two_hundred_socket_modes";
    ConsoleSession session(options);
    session.end_input();
    int descriptors_before = 0;
    int threads_before = 0;
    for (int i = 0; i <= 200; ++i) {
        {
            StationClient client;
            session.wait_for("System calls\n");  // a connection reset before this never came to be
            client.send(i == 0 ? script : script.substr(0, random() % (script.size() + 1)));
            if (i != 0 && random() % 2 == 0) {
                client.reset();
            }
        }
        std::string const served = "served " + std::to_string(i) + " ";
        session.wait_for(served);
        session.wait_for("\n");
        char const* const left = session.output().c_str() + session.output().rfind(served) + served.size();
        int descriptors = 0;
        int threads = 0;
        ASSERT_EQ(std::sscanf(left, "descriptors %d threads %d", &descriptors, &threads), 2);
        if (i == 0) {
            descriptors_before = descriptors;
            threads_before = threads;
        }
        ASSERT_EQ(descriptors, descriptors_before) << "after connection " << i;
        ASSERT_LE(threads, threads_before) << "after connection " << i;
    }
    EXPECT_EQ(session.wait_for_exit(), 0);
}

}  // namespace
