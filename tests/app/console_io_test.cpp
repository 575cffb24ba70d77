// Tests of the line reader and the replies, over a pair of connected sockets.
#include "app/console_io.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <string>

#include "app/no_answer.h"
#include "app/terminal_input.h"
#include "net/socket.h"
#include "tests/support/interrupted_wait.h"

namespace {

class ConsoleIoTest : public testing::Test {
protected:
    explicit ConsoleIoTest(int type = SOCK_STREAM) {
        int pair[2];
        EXPECT_EQ(::socketpair(AF_UNIX, type, 0, pair), 0);
        station_ = pair[0];
        client_ = pair[1];
        socket_ = new socket_tcp(client_);
        p_client_socket = socket_;
        bsock = true;
        send_string.clear();
        std::signal(SIGPIPE, SIG_IGN);
        testing::internal::CaptureStdout();
    }

    ~ConsoleIoTest() override {
        if (!printed_) {
            testing::internal::GetCapturedStdout();
        }
        bsock = false;
        p_client_socket = nullptr;
        delete socket_;
        ::close(station_);
    }

    void station_sends(std::string const& text) {
        ASSERT_EQ(::send(station_, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
    }

    void station_leaves() { ::shutdown(station_, SHUT_WR); }

    // What the station has received so far.
    std::string received() {
        char buffer[4096];
        ssize_t const count = ::recv(station_, buffer, sizeof buffer, MSG_DONTWAIT);
        return count > 0 ? std::string(buffer, static_cast<std::size_t>(count)) : std::string();
    }

    std::string printed() {
        printed_ = true;
        return testing::internal::GetCapturedStdout();
    }

    std::string read_line() {
        char line[kLineSize];
        ended_ = !sckt_read_line(line);
        return line;
    }

    bool ended_ = false;

private:
    int station_ = -1;
    int client_ = -1;
    socket_tcp* socket_ = nullptr;
    bool printed_ = false;
};

TEST_F(ConsoleIoTest, CarriageReturnIsDropped) {
    station_sends("a\r\n");
    EXPECT_EQ(read_line(), "a");
    EXPECT_EQ(printed(), "ReadLine: a\n");
}

TEST_F(ConsoleIoTest, NothingIsWrittenBehindTheLine) {
    std::string written = "....";
    station_sends("5\n");
    EXPECT_TRUE(sckt_read_line(written.data()));
    EXPECT_EQ(written, std::string("5\0..", 4));
    station_leaves();
    written = "....";
    EXPECT_FALSE(sckt_read_line(written.data()));
    EXPECT_EQ(written, std::string("\0...", 4));
}

TEST_F(ConsoleIoTest, ASignalDoesNotEndALine) {
    std::string line;
    interrupt_while_it_waits([&] { line = read_line(); }, [&] { station_sends("ab\n"); });
    EXPECT_EQ(line, "ab");
}

TEST_F(ConsoleIoTest, EmptyLinesAreSkippedWithoutATrace) {
    station_sends("\r\n\n5\n");
    EXPECT_EQ(read_line(), "5");
    EXPECT_EQ(printed(), "ReadLine: 5\n");
}

TEST_F(ConsoleIoTest, BackslashAndNEndALine) {
    station_sends("12\\n");
    EXPECT_EQ(read_line(), "12");
    EXPECT_EQ(printed(), "Backslash detected \nBackslash and n detected \nReadLine: 12\n");
}

TEST_F(ConsoleIoTest, BackslashAndNInAnEmptyLineAreSkipped) {
    station_sends("\\n7\n");
    EXPECT_EQ(read_line(), "7");
    EXPECT_EQ(printed(), "Backslash detected \nBackslash and n detected \nReadLine: 7\n");
}

TEST_F(ConsoleIoTest, BackslashBeforeAnotherCharacterIsDropped) {
    station_sends("\\x\n");
    EXPECT_EQ(read_line(), "x");
    EXPECT_EQ(printed(), "Backslash detected \nReadLine: x\n");
}

TEST_F(ConsoleIoTest, BackslashAndRAreDropped) {
    station_sends("\\r7\n");
    EXPECT_EQ(read_line(), "7");
    EXPECT_EQ(printed(), "Backslash detected \nReadLine: 7\n");
}

TEST_F(ConsoleIoTest, BackslashKeepsTheNextBackslash) {
    station_sends("\\\\n\n");
    EXPECT_EQ(read_line(), "\\n");
}

TEST_F(ConsoleIoTest, BackslashKeepsRealLineEndsInTheLine) {
    station_sends("a\\\n\\\rb\n");
    EXPECT_EQ(read_line(), "a\n\rb");
}

TEST_F(ConsoleIoTest, LineOf1023CharactersIsKeptWhole) {
    std::string const line(1023, 'y');
    station_sends(line + "\n");
    EXPECT_EQ(read_line(), line);
}

TEST_F(ConsoleIoTest, LongLineIsCutAndItsRestDropped) {
    station_sends(std::string(5000, 'y') + "\nz\n");
    EXPECT_EQ(read_line(), std::string(1023, 'y'));
    EXPECT_EQ(read_line(), "z");
}

TEST_F(ConsoleIoTest, EndOfStreamIsReportedAndALineBegunIsDropped) {
    station_sends("12");
    station_leaves();
    EXPECT_EQ(read_line(), "");
    EXPECT_TRUE(ended_);
    EXPECT_EQ(printed(), "");
}

TEST_F(ConsoleIoTest, EndOfStreamAfterABackslashIsReported) {
    station_sends("12\\");
    station_leaves();
    EXPECT_EQ(read_line(), "");
    EXPECT_TRUE(ended_);
}

TEST_F(ConsoleIoTest, OptionIsTheFirstCharacterOfTheLine) {
    station_sends("kamera\n");
    char option = '\0';
    kogetchar(option);
    EXPECT_EQ(option, 'k');
}

TEST_F(ConsoleIoTest, OptionIsTheExitKeyWhenTheClientHasGone) {
    station_leaves();
    char option = '\0';
    kogetchar(option);
    EXPECT_EQ(option, kExitKey);
}

TEST_F(ConsoleIoTest, NumberIsToldBeforeItsEcho) {
    station_sends("7\n");
    int value = 0;
    koscanf("%d", value);
    struct stat written {};
    ASSERT_EQ(::fstat(STDOUT_FILENO, &written), 0);
    EXPECT_EQ(written.st_size, static_cast<off_t>(std::string("ReadLine: 7\n").size()));
}

TEST_F(ConsoleIoTest, NumberIsScannedAndEchoedWithoutATerminator) {
    station_sends("4\\2\r\n");
    int value = 7;
    koscanf("%d", value);
    EXPECT_EQ(value, 42);
    EXPECT_EQ(received(), "42");
}

TEST_F(ConsoleIoTest, TextThatIsNoNumberIsEchoedAndLeavesTheValue) {
    station_sends("abc\n");
    int value = 7;
    koscanf("%d", value);
    EXPECT_EQ(value, 7);
    EXPECT_EQ(received(), "abc");
}

TEST_F(ConsoleIoTest, NumberBeyondItsTypeIsEchoedAndLeavesTheValue) {
    for (std::string const sent : {"99999999999", "2147483648", "-2147483649", "4294967296"}) {
        station_sends(sent + "\n");
        int value = 7;
        koscanf("%d", value);
        EXPECT_EQ(value, 7);
        EXPECT_EQ(received(), sent);
    }
}

TEST_F(ConsoleIoTest, EchoIsTheLineAsStoredWithItsNulBytes) {
    std::string const nul(1, '\0');
    int value = 3;
    station_sends(nul + "5\n");
    koscanf("%d", value);
    EXPECT_EQ(value, 3);
    EXPECT_EQ(received(), nul + "5");
    station_sends("7" + nul + "8\n");
    koscanf("%d", value);
    EXPECT_EQ(value, 7);
    EXPECT_EQ(received(), "7" + nul + "8");
}

TEST_F(ConsoleIoTest, EchoOfALongLineIsWhatWasStored) {
    station_sends(std::string(5000, '0') + "\n");
    int value = 3;
    koscanf("%d", value);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(received(), std::string(1023, '0'));
}

TEST_F(ConsoleIoTest, NumberGetsNoAnswerWhenTheClientHasGone) {
    station_sends("12");
    station_leaves();
    int value = 7;
    EXPECT_THROW(koscanf("%d", value), no_answer);
    EXPECT_EQ(value, 7);
    EXPECT_EQ(received(), "");
}

TEST_F(ConsoleIoTest, NumberGetsNoAnswerFromAClientThatIsDismissed) {
    station_sends("12\n5\n");
    dismiss_client();
    int value = 7;
    EXPECT_THROW(koscanf("%d", value), no_answer);
    EXPECT_EQ(value, 7);
    EXPECT_EQ(received(), "");
    admit_client();
    koscanf("%d", value);
    EXPECT_EQ(value, 2);
}

// Over sockets that keep what was sent in one piece apart from the next.
class ConsoleIoReplyTest : public ConsoleIoTest {
protected:
    ConsoleIoReplyTest() : ConsoleIoTest(SOCK_SEQPACKET) {}
};

TEST_F(ConsoleIoReplyTest, ItemsAndEndMarkAreSentInOnePiece) {
    kosstream("%d", 1);
    kosstream("%d", -2);
    kosstream("%d", 300);
    EXPECT_EQ(received(), "");
    EXPECT_EQ(kosstream_send(), 11);
    EXPECT_EQ(received(), "1;-2;300;\\n");
    EXPECT_EQ(received(), "");
    EXPECT_EQ(send_string, "");
}

TEST_F(ConsoleIoReplyTest, ReplyWithoutItemsIsTheEndMark) {
    EXPECT_EQ(kosstream_send(), 2);
    EXPECT_EQ(received(), "\\n");
}

TEST_F(ConsoleIoTest, ItemsWaitForTheNextReply) {
    kosstream("%d", 5);
    kosstream("%d", 6);
    kosstream_send();
    EXPECT_EQ(received(), "5;6;\\n");
}

TEST_F(ConsoleIoTest, ReplyToAClientThatHasGoneFails) {
    station_leaves();
    p_client_socket->shutdown();
    EXPECT_EQ(kosstream_send(), -1);
}

TEST_F(ConsoleIoTest, WrittenLineGoesOutUnchanged) {
    sckt_write_line("ready");
    EXPECT_EQ(received(), "ready");
    EXPECT_EQ(printed(), "void sckt_write_line(std::string)\n");
}

TEST_F(ConsoleIoTest, TerminalModeSendsNothing) {
    bsock = false;
    kosstream("%d", 9);
    EXPECT_EQ(send_string, "");
    EXPECT_EQ(kosstream_send(), -1);
    EXPECT_EQ(received(), "");
    EXPECT_EQ(printed(), "");
}

TEST_F(ConsoleIoTest, ItemOf1023CharactersIsSentWhole) {
    kosstream("%1023d", 1);
    EXPECT_EQ(kosstream_send(), 1026);
    EXPECT_EQ(received(), std::string(1022, ' ') + "1;\\n");
}

TEST(ConsoleIoDeathTest, ItemOf1024CharactersEndsTheProcess) {
    bsock = true;
    EXPECT_DEATH(kosstream("%1024d", 1), "");
    bsock = false;
}

}  // namespace
