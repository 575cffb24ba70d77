// Tests of the terminal's reads whose client goes at a chosen moment.
#include "app/terminal_input.h"

#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <thread>

#include "app/no_answer.h"

namespace {

// What is typed at a menu whose client goes as soon as it has been read.
class CutOffTextTest : public testing::Test {
protected:
    CutOffTextTest() {
        int input[2];
        EXPECT_EQ(::pipe(input), 0);
        EXPECT_EQ(::dup2(input[0], STDIN_FILENO), STDIN_FILENO);
        typing_end_ = input[1];
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, connection_), 0);
        watch_connection(connection_[0]);
    }

    ~CutOffTextTest() override { client_.join(); }

    void type(std::string const& text) {
        EXPECT_EQ(::write(typing_end_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        client_ = std::thread([this] {
            for (int unread = 1; unread != 0; std::this_thread::yield()) {
                ::ioctl(typing_end_, FIONREAD, &unread);
            }
            ::close(connection_[1]);
        });
    }

private:
    int typing_end_ = -1;
    int connection_[2];
    std::thread client_;
};

TEST_F(CutOffTextTest, BeginningOfANumberIsNoAnswer) {
    type("12");
    unsigned int value = 7;
    EXPECT_THROW(read_number(value), no_answer);
    EXPECT_EQ(value, 7U);
}

TEST_F(CutOffTextTest, BeginningOfALineThatIsNoNumberIsNoAnswer) {
    type("abc");
    int value = 7;
    EXPECT_THROW(read_number(value), no_answer);
    EXPECT_EQ(value, 7);
}

TEST_F(CutOffTextTest, BeginningOfAWordIsNoAnswer) {
    type("R47");
    std::string word = "before";
    EXPECT_THROW(read_word(word), no_answer);
    EXPECT_EQ(word, "R47");
}

}  // namespace
