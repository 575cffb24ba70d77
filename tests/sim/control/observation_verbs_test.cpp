// Tests of the commands that look at the device's state while it changes.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <thread>
#include <vector>

#include "sim/control/condition.h"
#include "sim/device/property_watch.h"
#include "tests/sim/stepped_device.h"

namespace {

using namespace std::chrono_literals;
using sim::Reply;

class ObservationTest : public SteppedDeviceTest {
protected:
    std::string refused(std::string const& line) {
        Reply const reply = run(line);
        EXPECT_FALSE(reply.ok) << line;
        return reply.text;
    }

    // Gives the command as a connection would, until it is answered.
    std::future<Reply> start(std::string const& line) {
        return std::async(std::launch::async, [this, line] {
            sim::Caller caller{device_};
            caller.gone = [this] {
                waiting_ = true;
                return gone_.load();
            };
            return sim::device_commands().run(caller, line);
        });
    }
    void wait_until_it_waits() const {
        while (!waiting_) {
            std::this_thread::yield();
        }
    }

    std::atomic<bool> waiting_{false};
    std::atomic<bool> gone_{false};
};

TEST_F(ObservationTest, ExpectComparesByEveryRelation) {
    expect_done("set illumination.brightness.total 7");
    for (char const* holds : {"== 7", "!= 6", "< 8", "<= 7", "> 6", ">= 7", "== 0x7"}) {
        expect_done(std::string("expect illumination.brightness.total ") + holds);
    }
    for (char const* fails : {"== 6", "!= 7", "< 7", "<= 6", "> 7", ">= 8"}) {
        EXPECT_EQ(refused(std::string("expect illumination.brightness.total ") + fails),
                  std::string("at 0.000000 s expected illumination.brightness.total ") + fails + ", but it is 7");
    }
    expect_done("expect illumination.temperature.ambient < 100.5");
    expect_done("expect system.alive == off");
    expect_done("expect rtu.power != poe");
    expect_done("expect system.state == boot");
    expect_done("step 1500ms");
    EXPECT_EQ(refused("expect system.state == warning"),
              "at 1.500000 s expected system.state == warning, but it is 1 boot");
}

TEST_F(ObservationTest, ABadConditionIsRefused) {
    EXPECT_EQ(refused("expect system.stat == 1"), "unknown property system.stat: did you mean system.state?");
    EXPECT_EQ(refused("expect system.state = 1"), "no relation =: ==, !=, <, <=, > or >=");
    EXPECT_EQ(refused("expect system.alive < true"), "system.alive is no number: == or !=");
    EXPECT_EQ(refused("expect rtu.trigger.rate == fast"),
              "rtu.trigger.rate: fast is not an integer from 1 to 1000 fps");
    EXPECT_EQ(refused("expect system.state =="), "usage: expect NAME OP VALUE");
    EXPECT_EQ(refused("wait system.state == 1 --timeout"), "usage: wait NAME OP VALUE [--timeout DURATION]");
    EXPECT_EQ(refused("wait system.state == 1 --timeout 5"),
              "bad duration 5: as 3s, 250ms, 10us, 5min or 2h, at most one day");
    EXPECT_EQ(refused("wait system.state == 1"), "wait needs a connection");
    EXPECT_EQ(refused("watch system"), "watch needs a connection");
    EXPECT_EQ(refused("watch sistem"), "unknown property sistem: did you mean system?");
    EXPECT_EQ(refused("watch --every 5"), "bad duration 5: as 3s, 250ms, 10us, 5min or 2h, at most one day");
    for (char const* const line : {"watch --every", "watch --often system"}) {
        EXPECT_EQ(refused(line), "usage: watch [--json] [--every DURATION] [PREFIX...]");
    }
}

TEST_F(ObservationTest, WaitIsDoneAtOnceWhereItHolds) {
    EXPECT_TRUE(start("wait system.state == boot").get().ok);
}

TEST_F(ObservationTest, WaitWaitsForTheStep) {
    expect_done("set autofocus.target 1100");
    auto reply = start("wait autofocus.moving == false");
    wait_until_it_waits();
    expect_done("step 500ms");
    EXPECT_EQ(reply.wait_for(0s), std::future_status::timeout);
    expect_done("step 10s");
    EXPECT_TRUE(reply.get().ok);
}

// Nobody else has the device between the two commands, so only their own ends tell.
TEST_F(ObservationTest, WaitSeesWhatHoldsForAMomentOnly) {
    auto reply = start("wait system.state == warning");
    wait_until_it_waits();
    device_.timeline.at(1s, [this] { run("set system.state warning"); });
    device_.timeline.at(1s, [this] { run("set system.state boot"); });
    expect_done("step 2s");
    EXPECT_TRUE(reply.get().ok);
}

// What is told is what was at its time, whenever the waiting thread comes to tell it.
TEST_F(ObservationTest, WaitFailsAtItsTime) {
    auto reply = start("wait system.state == warning --timeout 2s");
    wait_until_it_waits();
    device_.timeline.at(2500ms, [this] { run("set system.state warning"); });
    expect_done("step 1999ms");
    EXPECT_EQ(reply.wait_for(0s), std::future_status::timeout);
    expect_done("step 5s");
    Reply const late = reply.get();
    EXPECT_FALSE(late.ok);
    EXPECT_EQ(late.text, "system.state == warning did not come within 2s: it is 1 boot");
}

TEST_F(ObservationTest, WaitEndsWithItsClient) {
    auto reply = start("wait system.state == warning");
    wait_until_it_waits();
    gone_ = true;
    EXPECT_FALSE(reply.get().ok);
}

class WatchTest : public SteppedDeviceTest {
protected:
    struct Change {
        sim::Time time;
        std::string name;
        std::string value;

        bool operator==(Change const& other) const {
            return time == other.time && name == other.name && value == other.value;
        }
    };

    sim::PropertyWatch::Report report() {
        return [this](sim::Time time, std::string const& name, sim::Property const& property, sim::Value const& value) {
            if (has_room_) {
                changes_.push_back({time, name, sim::value_with_name(property, value)});
            }
            return has_room_;
        };
    }

    std::vector<Change> changes_;
    bool has_room_ = true;
};

TEST_F(WatchTest, ChangesWithinAStepAreToldWithTheirTimes) {
    sim::PropertyWatch const watch(device_, {"system.state", "camera.fitted"}, sim::PropertyWatch::Manner::changes,
                                   report());
    device_.timeline.at(1s, [this] { run("set system.state warning"); });
    device_.timeline.at(2s, [this] { run("fit imx567"); });
    device_.timeline.at(3s, [this] { run("set system.state boot"); });
    device_.timeline.at(3s, [this] { run("set illumination.segments 3"); });
    expect_done("step 5s");
    EXPECT_EQ(changes_, (std::vector<Change>{{1s, "system.state", "5 warning"},
                                             {2s, "camera.fitted", "2 imx567"},
                                             {3s, "system.state", "1 boot"}}));
}

TEST_F(WatchTest, FastChangesAreToldTwentyTimesASecondAndTheLastOneIsNotMissed) {
    sim::PropertyWatch watch(device_, {"illumination.segments"}, sim::PropertyWatch::Manner::changes, report());
    for (int ms = 1; ms <= 1001; ++ms) {
        device_.timeline.at(std::chrono::milliseconds(ms),
                            [this, ms] { run("set illumination.segments " + std::to_string(ms % 16)); });
    }
    expect_done("step 2s");
    EXPECT_GE(changes_.size(), 19U);
    EXPECT_LE(changes_.size(), 21U);
    watch.catch_up();
    EXPECT_EQ(changes_.back().value, std::to_string(1001 % 16));
    std::size_t const count = changes_.size();
    watch.catch_up();
    EXPECT_EQ(changes_.size(), count);
}

TEST_F(WatchTest, WhoHasNoRoomIsToldTheLastValueLater) {
    sim::PropertyWatch watch(device_, {"system.state"}, sim::PropertyWatch::Manner::changes, report());
    has_room_ = false;
    expect_done("set system.state warning");
    expect_done("set system.state error");
    EXPECT_TRUE(changes_.empty());
    has_room_ = true;
    watch.catch_up();
    EXPECT_EQ(changes_, (std::vector<Change>{{0s, "system.state", "6 error"}}));
}

TEST_F(WatchTest, TimeItselfIsWatchedByItsNameOnly) {
    sim::PropertyWatch const all(device_, {}, sim::PropertyWatch::Manner::changes, report());
    expect_done("step 1s");
    EXPECT_TRUE(changes_.empty());
    sim::PropertyWatch const clock(device_, {"clock"}, sim::PropertyWatch::Manner::changes, report());
    expect_done("step 1s");
    EXPECT_EQ(changes_, (std::vector<Change>{{2s, "clock.time", "2"}}));
}

TEST_F(WatchTest, SamplesTellEverythingOnceThenOnlyWhatIsOtherThanBefore) {
    sim::PropertyWatch samples(device_, {"system.state", "camera.fitted"}, sim::PropertyWatch::Manner::samples,
                               report());
    samples.catch_up();
    EXPECT_EQ(changes_, (std::vector<Change>{{0s, "camera.fitted", "1 imx296"}, {0s, "system.state", "1 boot"}}));
    changes_.clear();
    expect_done("set system.state warning");
    expect_done("fit imx567");
    expect_done("fit imx296");
    EXPECT_TRUE(changes_.empty());
    samples.catch_up();
    EXPECT_EQ(changes_, (std::vector<Change>{{0s, "system.state", "5 warning"}}));
    samples.catch_up();
    EXPECT_EQ(changes_.size(), 1U);
}

TEST_F(WatchTest, SamplesHaveTheTimeToo) {
    sim::PropertyWatch samples(device_, {}, sim::PropertyWatch::Manner::samples, report());
    expect_done("step 3s");
    samples.catch_up();
    Change const time{3s, "clock.time", "3"};
    EXPECT_EQ(std::count(changes_.begin(), changes_.end(), time), 1);
}

}  // namespace
