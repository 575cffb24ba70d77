// Tests of a client's connection to the control socket.
#include "sim/control/control_link.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "sim/control/device_directory.h"
#include "sim/core/unix_socket.h"
#include "tests/sim/temporary_directory.h"

namespace {

using sim::ControlLink;

// A device that says what the test says.
class ControlLinkTest : public testing::Test {
protected:
    void say(std::string const& text) const { EXPECT_TRUE(sim::send_all(device_.get(), text.data(), text.size())); }
    void end() { device_ = sim::Descriptor(); }
    ControlLink::Answer answer(std::optional<ControlLink::Deadline> until = std::nullopt) {
        return link_.take_answer(until, [this](std::string const& line) { body_.push_back(line); });
    }

    TemporaryDirectory directory_;
    sim::Error error_;
    sim::Descriptor listener_ = sim::listen_on(sim::control_socket(directory_.path()), error_);
    ControlLink link_{directory_.path()};
    sim::Descriptor device_ = sim::accept_from(listener_);
    std::vector<std::string> body_;
};

TEST_F(ControlLinkTest, AnswersAreTakenInTheirOrder) {
    say("one\ntwo\nok\nerror: no\nthr");
    EXPECT_TRUE(answer().ok());
    EXPECT_EQ(body_, (std::vector<std::string>{"one", "two"}));
    ControlLink::Answer const second = answer();
    EXPECT_EQ(second.end, ControlLink::End::refused);
    EXPECT_EQ(second.error, "no");
    say("ee\nok\n");
    EXPECT_EQ(link_.take_reply(std::nullopt).text, "three\n");
}

TEST_F(ControlLinkTest, AnswerThatIsNotWholeInTimeClosesTheLink) {
    say("half\n");
    ControlLink::Answer const late = answer(std::chrono::steady_clock::now());
    EXPECT_EQ(late.end, ControlLink::End::late);
    EXPECT_EQ(late.error, "the device did not answer in time");
    EXPECT_FALSE(link_);
    EXPECT_EQ(answer().end, ControlLink::End::gone);
}

TEST_F(ControlLinkTest, DeviceThatEndsIsSaid) {
    say("half\n");
    end();
    ControlLink::Answer const gone = answer();
    EXPECT_EQ(gone.end, ControlLink::End::gone);
    EXPECT_EQ(gone.error, "the device ended");
}

TEST_F(ControlLinkTest, LinesThatHaveComeAreTakenWithoutWaiting) {
    EXPECT_EQ(link_.lines(), std::vector<std::string>());
    say("one\ntwo\nthr");
    EXPECT_EQ(link_.lines(), (std::vector<std::string>{"one", "two"}));
    EXPECT_TRUE(link_);
    say("ee\n");
    end();
    std::string line;
    EXPECT_TRUE(link_.read_line(line));
    EXPECT_EQ(line, "three");
    EXPECT_FALSE(link_.read_line(line));
    EXPECT_FALSE(link_);
}

TEST(NoControlLinkTest, IsClosedWhereNobodyAnswers) {
    TemporaryDirectory const empty;
    ControlLink link(empty.path());
    EXPECT_FALSE(link);
    EXPECT_EQ(link.ask("clock", std::nullopt).text, "the device ended");
}

}  // namespace
