// Tests of the library's thread and what falls due on it.
#include "sim/core/timeline.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;
using sim::Time;
using sim::Timeline;

constexpr auto kLimit = 20s;

class SteppedTimelineTest : public testing::Test {
protected:
    // Notes the name and the time of the event.
    void note_at(Time after, std::string const& name) {
        timeline_.at(after, [this, name] { notes_.push_back(name + " " + std::to_string(timeline_.now().count())); });
    }

    std::vector<std::string> notes_;
    Timeline timeline_;
};

TEST_F(SteppedTimelineTest, StepDeliversAllThatFallsDueInOrder) {
    note_at(30us, "c");
    note_at(10us, "a");
    note_at(10us, "b");
    note_at(41us, "late");
    EXPECT_TRUE(timeline_.step(40us));
    EXPECT_EQ(notes_, (std::vector<std::string>{"a 10", "b 10", "c 30"}));
    EXPECT_EQ(timeline_.now(), 40us);
    timeline_.step(1us);
    EXPECT_EQ(notes_.back(), "late 41");
}

TEST_F(SteppedTimelineTest, StepDeliversWhatAnEventSetsWithinIt) {
    timeline_.at(10us, [this] { note_at(20us, "next"); });
    timeline_.step(20us);
    EXPECT_EQ(notes_, std::vector<std::string>{"next 20"});
}

TEST_F(SteppedTimelineTest, StepOfNothingDeliversWhatIsDueNow) {
    note_at(0us, "now");
    timeline_.step(0us);
    EXPECT_EQ(notes_, std::vector<std::string>{"now 0"});
}

TEST_F(SteppedTimelineTest, StepReturnsOnlyWhenTheEventHasReturned) {
    std::atomic<bool> done{false};
    timeline_.at(1us, [&] {
        std::this_thread::yield();
        done = true;
    });
    timeline_.step(1us);
    EXPECT_TRUE(done);
}

TEST_F(SteppedTimelineTest, EventsRunOnAThreadOfTheirOwn) {
    std::thread::id runner;
    timeline_.at(0us, [&] { runner = std::this_thread::get_id(); });
    timeline_.step(0us);
    EXPECT_NE(runner, std::thread::id());
    EXPECT_NE(runner, std::this_thread::get_id());
}

TEST_F(SteppedTimelineTest, ACancelledEventDoesNotRun) {
    bool ran = false;
    auto const id = timeline_.at(5us, [&] { ran = true; });
    EXPECT_TRUE(timeline_.cancel(id));
    EXPECT_FALSE(timeline_.cancel(id));
    timeline_.step(10us);
    EXPECT_FALSE(ran);
}

TEST_F(SteppedTimelineTest, AnEventThatHasRunCannotBeCancelled) {
    auto const id = timeline_.at(5us, [] {});
    timeline_.step(10us);
    EXPECT_FALSE(timeline_.cancel(id));
}

TEST_F(SteppedTimelineTest, TakingTimeStepsTheClockAndDelivers) {
    note_at(500ms, "sample");
    timeline_.take_time(2s);
    EXPECT_EQ(notes_, std::vector<std::string>{"sample 500000"});
    EXPECT_EQ(timeline_.now(), 2s);
}

TEST_F(SteppedTimelineTest, TakingTimeInAnEventMovesTheClockOnAndDelaysTheRest) {
    timeline_.at(10us, [this] { timeline_.take_time(100us); });
    note_at(50us, "delayed");
    timeline_.step(60us);
    EXPECT_EQ(notes_, std::vector<std::string>{"delayed 110"});
    EXPECT_EQ(timeline_.now(), 110us);
}

TEST_F(SteppedTimelineTest, TakingTimeEndsAtItsTimeThoughAStepGoesOn) {
    std::promise<void> taking;
    std::promise<void> stepping;
    bool is_first = true;
    timeline_.set_barrier([&] {
        if (std::exchange(is_first, false)) {
            taking.set_value();
            stepping.get_future().wait();
        }
    });
    Time arrived{0};
    auto taker = std::async(std::launch::async, [&] { timeline_.take_time(30us, [&] { arrived = timeline_.now(); }); });
    taking.get_future().wait();
    note_at(30us, "with it");
    note_at(31us, "behind it");
    bool is_stepping = false;
    timeline_.step(100us, [&] {
        if (!std::exchange(is_stepping, true)) {
            stepping.set_value();
        }
    });
    EXPECT_EQ(taker.wait_for(kLimit), std::future_status::ready);
    EXPECT_EQ(arrived, 30us);
    EXPECT_EQ(timeline_.now(), 130us) << "the step is one from there on";
    EXPECT_EQ(notes_, (std::vector<std::string>{"with it 30", "behind it 31"}));
}

TEST_F(SteppedTimelineTest, StepsOfTwoThreadsAddUp) {
    note_at(20us, "a");
    auto other = std::async(std::launch::async, [this] { timeline_.step(10us); });
    timeline_.step(10us);
    other.get();
    EXPECT_EQ(timeline_.now(), 20us);
    EXPECT_EQ(notes_, std::vector<std::string>{"a 20"});
}

TEST_F(SteppedTimelineTest, ChangingTheClockReleasesASleeper) {
    timeline_.run_real();
    auto sleeper = std::async(std::launch::async, [this] { timeline_.take_time(1h); });
    timeline_.run_stepped();
    timeline_.step(2h);
    EXPECT_EQ(sleeper.wait_for(kLimit), std::future_status::ready);
}

TEST_F(SteppedTimelineTest, NothingRunsAfterStop) {
    note_at(5us, "never");
    timeline_.stop();
    timeline_.step(10us);
    EXPECT_TRUE(notes_.empty());
}

TEST_F(SteppedTimelineTest, TheClockStandsAtZeroAtFirst) {
    EXPECT_EQ(timeline_.now(), 0us);
    EXPECT_TRUE(timeline_.is_stepped());
}

TEST_F(SteppedTimelineTest, TheBarrierIsPassedBeforeTheClockMovesAndTheStepIsDone) {
    timeline_.set_barrier([this] { notes_.push_back("rest " + std::to_string(timeline_.now().count())); });
    note_at(10us, "a");
    note_at(10us, "b");
    note_at(20us, "c");
    timeline_.step(30us);
    EXPECT_EQ(notes_, (std::vector<std::string>{"rest 0", "a 10", "rest 10", "b 10", "rest 10", "c 20", "rest 20"}));
}

TEST_F(SteppedTimelineTest, AStepThatWaitsSaysSo) {
    std::promise<void> rest;
    timeline_.set_barrier([released = rest.get_future().share()] { released.wait(); });
    int told = 0;
    timeline_.step(1us, [&] {
        if (++told == 1) {
            rest.set_value();
        }
    });
    EXPECT_GE(told, 1);
    EXPECT_EQ(timeline_.now(), 1us);
}

TEST_F(SteppedTimelineTest, ALongStepGoesThroughAllItsEvents) {
    int count = 0;
    std::function<void()> next = [&] {
        ++count;
        timeline_.at(timeline_.now() + 1ms, next);
    };
    timeline_.at(1ms, next);
    timeline_.step(20s);
    EXPECT_EQ(count, 20000);
    EXPECT_EQ(timeline_.now(), 20s);
}

TEST(TimelineTest, StepIsRefusedWhileTheClockRunsByItself) {
    Timeline timeline;
    timeline.run_real();
    EXPECT_FALSE(timeline.step(1s));
}

TEST(TimelineTest, EventsRunInRealTime) {
    Timeline timeline;
    timeline.run_real();
    std::promise<Time> ran;
    timeline.at(timeline.now() + 2ms, [&] { ran.set_value(timeline.now()); });
    auto result = ran.get_future();
    ASSERT_EQ(result.wait_for(kLimit), std::future_status::ready);
    EXPECT_GE(result.get(), 2ms);
}

TEST(TimelineTest, ScaledTimePassesAtItsFactor) {
    Timeline timeline;
    timeline.run_scaled(1e6);
    Time const before = timeline.now();
    timeline.take_time(1000s);
    EXPECT_GE(timeline.now() - before, 1000s);
}

TEST(TimelineTest, StopWaitsForTheRunningEvent) {
    Timeline timeline;
    timeline.run_real();
    std::promise<void> started;
    std::promise<void> go_on;
    std::atomic<bool> done{false};
    timeline.at(0us, [&] {
        started.set_value();
        go_on.get_future().wait();
        done = true;
    });
    started.get_future().wait();
    auto stopper = std::async(std::launch::async, [&] {
        timeline.stop();
        return done.load();
    });
    EXPECT_EQ(stopper.wait_for(1ms), std::future_status::timeout);
    go_on.set_value();
    EXPECT_TRUE(stopper.get());
}

TEST(TimelineTest, StopInsideAnEventReturnsAtOnce) {
    Timeline timeline;
    timeline.run_real();
    std::promise<void> stopped;
    timeline.at(0us, [&] {
        timeline.stop();
        stopped.set_value();
    });
    EXPECT_EQ(stopped.get_future().wait_for(kLimit), std::future_status::ready);
}

TEST(TimelineTest, WhoGivesUpIsWoken) {
    Timeline timeline;
    timeline.run_real();
    auto const taking = timeline.begin_taking(std::chrono::hours(1));
    std::atomic<bool> gone{false};
    auto finished =
        std::async(std::launch::async, [&] { timeline.finish_taking(*taking, [&] { return gone.load(); }); });
    EXPECT_EQ(finished.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    gone = true;
    timeline.wake();
    finished.get();
    EXPECT_FALSE(timeline.cancel(taking->event)) << "nothing of it is left";
}

TEST(TimelineTest, StopWakesASleeper) {
    Timeline timeline;
    timeline.run_real();
    auto sleeper = std::async(std::launch::async, [&] { timeline.take_time(1h); });
    timeline.stop();
    EXPECT_EQ(sleeper.wait_for(kLimit), std::future_status::ready);
}

}  // namespace
