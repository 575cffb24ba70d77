// Delivery of the button's presses to the records of one object.
#include "sim/device/button_feed.h"

#include <gtest/gtest.h>

#include <thread>

#include "sim/device/device.h"

namespace {

using namespace std::chrono_literals;
using sim::ButtonFeed;
using sim::Device;

// A button_t whose construction does not matter: the feed reads its records alone.
class ButtonFeedTest : public testing::Test {
protected:
    ButtonFeedTest() {
        device.timeline.run_stepped();
        for (std::size_t i = 0; i < 3; ++i) {
            button.press_records[i] = {static_cast<unsigned int>(1000 * (i + 1)), [this, i] { fired("p", i); }};
            button.release_records[i] = {static_cast<unsigned int>(500 + 1000 * i), [this, i] { fired("r", i); }};
        }
        auto const lock = device.lock();
        device.presses.add(feed);
    }

    ~ButtonFeedTest() override {
        device.timeline.stop();
        feed->close();
    }

    void fired(char const* kind, std::size_t index) {
        log += (log.empty() ? "" : " ") + std::string(kind) + std::to_string(index);
    }

    bool press_for(sim::Duration length) {
        auto const lock = device.lock();
        return device.presses.press_for(length);
    }

    bool press() {
        auto const lock = device.lock();
        return device.presses.press();
    }

    bool release() {
        auto const lock = device.lock();
        return device.presses.release();
    }

    std::string log;
    bool sees = true;  // guarded by the device's lock
    Device device{std::make_unique<sim::MemoryFileSystem>()};
    hal::button_t button{"/dev/none", 82, true, 2000};
    std::shared_ptr<ButtonFeed> feed =
        std::make_shared<ButtonFeed>(device.timeline, std::make_shared<sim::Subscription>(true),
                                     ButtonFeed::Owner{&button, [this] { return sees; }, [](auto) {}}, 2ms);
};

TEST_F(ButtonFeedTest, RecordsFireAtTheirTimes) {
    feed->hold(false);
    EXPECT_TRUE(press());
    device.timeline.step(999ms);
    EXPECT_EQ(log, "");
    device.timeline.step(1ms);
    EXPECT_EQ(log, "p0");
    device.timeline.step(1500ms);
    EXPECT_EQ(log, "p0 p1");
    EXPECT_TRUE(release());
    device.timeline.step(0s);
    EXPECT_EQ(log, "p0 p1 r2");
    device.timeline.step(10s);
    EXPECT_EQ(log, "p0 p1 r2");
}

TEST_F(ButtonFeedTest, PressOfATimeIsReleasedByItself) {
    feed->hold(false);
    EXPECT_TRUE(press_for(2s));
    EXPECT_FALSE(press_for(1s));
    device.timeline.step(2s);
    EXPECT_EQ(log, "p0 p1 r1");
    EXPECT_FALSE(device.button.pressed());
}

TEST_F(ButtonFeedTest, ReleaseByHandCancelsTheOneThatWasSet) {
    feed->hold(false);
    press_for(3s);
    device.timeline.step(600ms);
    EXPECT_TRUE(release());
    EXPECT_TRUE(press());
    device.timeline.step(10s);
    EXPECT_EQ(log, "r0 p0 p1 p2");
    EXPECT_TRUE(device.button.pressed());
}

TEST_F(ButtonFeedTest, EventsAreHeldUntilTheRelease) {
    press_for(2s);
    device.timeline.step(5s);
    EXPECT_EQ(log, "");
    feed->hold(false);
    device.timeline.step(0s);
    EXPECT_EQ(log, "p0 p1 r1");
}

TEST_F(ButtonFeedTest, EventsWhileHeldMeetTheRecordsOfTheRelease) {
    press_for(2s);
    device.timeline.step(5s);
    button.press_records[0].action = nullptr;
    feed->hold(false);
    device.timeline.step(0s);
    EXPECT_EQ(log, "p1 r1");
}

TEST_F(ButtonFeedTest, NoMoreThanSixteenEdgesWait) {
    for (int i = 0; i < 20; ++i) {
        press_for(600ms);
        device.timeline.step(1s);
    }
    feed->hold(false);
    device.timeline.step(0s);
    EXPECT_EQ(log, "r0 r0 r0 r0 r0 r0 r0 r0");
}

TEST_F(ButtonFeedTest, AnotherLineNeverSeesTheButton) {
    {
        auto const lock = device.lock();
        sees = false;
    }
    feed->hold(false);
    press_for(5s);
    device.timeline.step(10s);
    EXPECT_EQ(log, "");
}

TEST_F(ButtonFeedTest, ActionMayCloseTheFeedAndNothingFollows) {
    button.press_records[0].action = [this] {
        fired("p", 0);
        feed->close();
    };
    feed->hold(false);
    press_for(5s);
    device.timeline.step(10s);
    EXPECT_EQ(log, "p0");
}

TEST_F(ButtonFeedTest, ActionMayHoldTheFeedAndTheRestFollowsLater) {
    button.press_records[0].action = [this] {
        fired("p", 0);
        feed->hold(true);
    };
    feed->hold(false);
    press_for(2s);
    device.timeline.step(10s);
    EXPECT_EQ(log, "p0");
    feed->hold(false);
    device.timeline.step(0s);
    EXPECT_EQ(log, "p0 p1 r1");
}

TEST_F(ButtonFeedTest, LineFollowsTheVariantOfTheDevice) {
    auto const lock = device.lock();
    EXPECT_EQ(device.presses.line(), 82);
    device.nodes.remove("/dev/r47-autofocus-driver");
    device.nodes.remove("/dev/r47-illumination-driver");
    EXPECT_EQ(device.presses.line(), 82);
    device.nodes.remove("/dev/r47-rtu-driver");
    EXPECT_EQ(device.presses.line(), 44);
}

TEST_F(ButtonFeedTest, ClosedFeedIsQuietWhileTheButtonIsPressed) {
    device.timeline.run_scaled(1000);
    std::atomic<bool> stop{false};
    std::thread presser([&] {
        while (!stop) {
            press();
            std::this_thread::yield();
            release();
        }
    });
    for (int i = 0; i < 50; ++i) {
        hal::button_t own_button("/dev/none", 82, true, 0);
        auto const own =
            std::make_shared<ButtonFeed>(device.timeline, std::make_shared<sim::Subscription>(true),
                                         ButtonFeed::Owner{&own_button, [] { return true; }, [](auto) {}}, 0ms);
        std::atomic<bool> alive{true};
        std::atomic<int> calls{0};
        own_button.release_records[0].action = [&] {
            EXPECT_TRUE(alive);
            ++calls;
        };
        {
            auto const lock = device.lock();
            device.presses.add(own);
        }
        own->hold(false);
        while (calls < 3) {
            std::this_thread::yield();
        }
        own->close();
        alive = false;
        auto const lock = device.lock();
        device.presses.remove(own);
    }
    stop = true;
    presser.join();
}

}  // namespace
