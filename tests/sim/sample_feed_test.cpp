// Delivery of the sensor hub's samples to those who listen.
#include "sim/device/sample_feed.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "sim/device/device.h"

namespace {

using namespace std::chrono_literals;
using sim::Device;
using sim::SampleFeed;
using From = SampleFeed::From;

class SampleFeedTest : public testing::Test {
protected:
    SampleFeedTest() {
        device.timeline.run_stepped();
        start = device.now();
        auto const lock = device.lock();
        device.hub.boot(sim::make_firmware_image({sim::HubVariant::bhi260ap, 1}));
        device.samples.add(feed);
    }

    ~SampleFeedTest() override { device.timeline.stop(); }

    void activate(unsigned int id, float rate) {
        auto const lock = device.lock();
        EXPECT_EQ(device.hub.activate(id, rate, 1, device.now()), 0);
        device.samples.schedule();
    }

    SampleFeed::ListenerId count_from(From from, std::atomic<int>& count) {
        return feed->listen(from, [&count](auto const&) { ++count; });
    }

    sim::Time start{0};
    bool reachable = true;  // guarded by the device's lock
    std::atomic<int> samples{0};
    Device device{std::make_unique<sim::MemoryFileSystem>()};
    std::shared_ptr<SampleFeed> feed =
        std::make_shared<SampleFeed>(std::make_shared<sim::Subscription>(false), [this] { return reachable; });
};

TEST_F(SampleFeedTest, ListenerGetsEachSampleOfItsTime) {
    count_from(From::now, samples);
    activate(37, 10);
    device.timeline.step(1s);
    EXPECT_EQ(samples, 9);  // the tenth is 1 ms late, by its latency
    device.timeline.step(1ms);
    EXPECT_EQ(samples, 10);
}

TEST_F(SampleFeedTest, AllListenersGetTheSameSample) {
    std::vector<std::pair<int, sim::Time>> seen;
    feed->listen(From::now, [&](auto const& sample) { seen.emplace_back(1, sample.taken - start); });
    feed->listen(From::now, [&](auto const& sample) { seen.emplace_back(2, sample.taken - start); });
    activate(37, 10);
    device.timeline.step(101ms);
    EXPECT_EQ(seen, (std::vector<std::pair<int, sim::Time>>{{1, 100ms}, {2, 100ms}}));
}

TEST_F(SampleFeedTest, SamplesWhileHeldAreNotDeliveredLater) {
    count_from(From::now, samples);
    activate(37, 10);
    device.timeline.step(250ms);
    feed->hold(true);
    device.timeline.step(500ms);
    EXPECT_EQ(samples, 2);
    feed->hold(false);
    device.timeline.step(100ms);
    EXPECT_EQ(samples, 3);
}

TEST_F(SampleFeedTest, ListenerFromTheFirstReleaseWaitsForIt) {
    count_from(From::first_release, samples);
    activate(37, 10);
    device.timeline.step(1s);
    EXPECT_EQ(samples, 0);
    feed->hold(false);
    device.timeline.step(1s);
    EXPECT_EQ(samples, 10);
}

TEST_F(SampleFeedTest, ListenerThatIsIgnoredGetsNothingMore) {
    std::atomic<int> others{0};
    auto const listener = count_from(From::now, samples);
    count_from(From::now, others);
    activate(37, 10);
    device.timeline.step(150ms);
    feed->ignore(listener);
    device.timeline.step(100ms);
    EXPECT_EQ(samples, 1);
    EXPECT_EQ(others, 2);
}

TEST_F(SampleFeedTest, ListenerMayHoldTheFeedAndTheNextOneGetsNothing) {
    feed->listen(From::now, [&](auto const&) { feed->hold(true); });
    count_from(From::now, samples);
    activate(37, 10);
    device.timeline.step(1s);
    EXPECT_EQ(samples, 0);
}

TEST_F(SampleFeedTest, ListenerMayCloseTheFeed) {
    feed->listen(From::now, [&](auto const&) {
        ++samples;
        feed->close();
    });
    activate(37, 10);
    device.timeline.step(1s);
    EXPECT_EQ(samples, 1);
}

TEST_F(SampleFeedTest, UnreachableObjectGetsNothing) {
    count_from(From::now, samples);
    activate(37, 10);
    {
        auto const lock = device.lock();
        reachable = false;
    }
    device.timeline.step(1s);
    EXPECT_EQ(samples, 0);
}

TEST_F(SampleFeedTest, ClosedFeedIsQuietWhileSamplesRainDown) {
    device.timeline.run_scaled(20);
    activate(37, 400);
    for (int i = 0; i < 50; ++i) {
        auto const own = std::make_shared<SampleFeed>(std::make_shared<sim::Subscription>(false), [] { return true; });
        std::atomic<bool> alive{true};
        std::atomic<int> calls{0};
        own->listen(From::now, [&](auto const&) {
            EXPECT_TRUE(alive);
            ++calls;
        });
        {
            auto const lock = device.lock();
            device.samples.add(own);
        }
        while (calls < 3) {
            std::this_thread::yield();
        }
        own->close();
        alive = false;
        auto const lock = device.lock();
        device.samples.remove(own);
    }
}

TEST_F(SampleFeedTest, NoneIsLostAndNoneDoubledInAMinuteOf400) {
    std::vector<sim::Time> taken;
    feed->listen(From::now, [&](auto const& sample) { taken.push_back(sample.taken - start); });
    count_from(From::now, samples);
    activate(37, 400);
    device.timeline.step(60s + 1ms);
    EXPECT_EQ(samples, 24000);
    ASSERT_EQ(taken.size(), 24000U);
    for (std::size_t i = 0; i < taken.size(); ++i) {
        ASSERT_EQ(taken[i], 2500us * static_cast<long>(i + 1));
    }
}

}  // namespace
