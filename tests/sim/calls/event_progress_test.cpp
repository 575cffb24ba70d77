// Tests of how the end of an event is seen without a message.
#include "sim/calls/event_progress.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <thread>

namespace {

using sim::Descriptor;
using sim::EventProgress;

class EventProgressTest : public testing::Test {
protected:
    Descriptor file_;
    EventProgress device_ = EventProgress::make(file_);
    EventProgress program_{file_};
};

TEST_F(EventProgressTest, AnEndBeforeAnybodyAskedIsSeenAndNeedsNoDone) {
    for (int event = 0; event < 2; ++event) {
        device_.begin();
        EXPECT_FALSE(program_.end());
        EXPECT_TRUE(device_.is_over());
    }
}

TEST_F(EventProgressTest, AnEndThatHasBeenAskedForIsToldByItsDoneAlone) {
    for (int event = 0; event < 2; ++event) {
        device_.begin();
        EXPECT_FALSE(device_.is_over());
        EXPECT_TRUE(program_.end());
        EXPECT_FALSE(device_.is_over()) << "its Done is on its way";
    }
}

TEST_F(EventProgressTest, AnEndIsEitherSeenOrTold) {
    std::atomic<int> begun{0};
    std::atomic<int> ended{0};
    std::atomic<int> told{0};
    constexpr int kEvents = 20000;
    std::thread program([&] {
        for (int event = 1; event <= kEvents; ++event) {
            while (begun < event) {
            }
            told += program_.end() ? 1 : 0;
            ended = event;
        }
    });
    int seen = 0;
    for (int event = 1; event <= kEvents; ++event) {
        device_.begin();
        begun = event;
        seen += device_.is_over() ? 1 : 0;
        while (ended < event) {
        }
        ASSERT_EQ(seen + told, event);
    }
    program.join();
}

TEST_F(EventProgressTest, WithoutMemoryEachEndIsTold) {
    EventProgress device;
    EventProgress program{Descriptor()};
    device.begin();
    EXPECT_TRUE(program.end());
    EXPECT_FALSE(device.is_over());
}

TEST_F(EventProgressTest, NoProgramTakesTheMemoryFromUnderTheDevice) {
    EXPECT_NE(::ftruncate(file_.get(), 0), 0);
    EXPECT_EQ(errno, EPERM);
    EXPECT_FALSE(device_.is_over());
}

}  // namespace
