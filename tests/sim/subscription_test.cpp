// Tests of taking callbacks back while they run.
#include "sim/core/subscription.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <thread>

#include "sim/core/timeline.h"

namespace {

using namespace std::chrono_literals;
using sim::Subscription;

constexpr auto kLimit = 20s;

// A callback that has started and waits to be told to go on.
class PausedCallback {
public:
    explicit PausedCallback(Subscription& subscription)
        : runner_(std::async(std::launch::async, [this, &subscription] {
              return subscription.deliver([this] {
                  started_.set_value();
                  go_on_.get_future().wait();
                  finished = true;
              });
          })) {
        started_.get_future().wait();
    }
    void go_on() { go_on_.set_value(); }

    std::atomic<bool> finished{false};

private:
    std::promise<void> started_;
    std::promise<void> go_on_;
    std::future<bool> runner_;
};

TEST(SubscriptionTest, DeliversUnlessHeld) {
    Subscription subscription(true);
    int calls = 0;
    EXPECT_FALSE(subscription.deliver([&] { ++calls; }));
    subscription.hold(false);
    EXPECT_TRUE(subscription.deliver([&] { ++calls; }));
    subscription.hold(true);
    EXPECT_FALSE(subscription.deliver([&] { ++calls; }));
    EXPECT_EQ(calls, 1);
}

TEST(SubscriptionTest, ClosedItNeverDeliversAgain) {
    Subscription subscription(false);
    subscription.close();
    subscription.hold(false);
    EXPECT_FALSE(subscription.deliver([] { ADD_FAILURE(); }));
}

TEST(SubscriptionTest, HoldReturnsWhenTheCallbackHas) {
    Subscription subscription(false);
    PausedCallback callback(subscription);
    auto holder = std::async(std::launch::async, [&] {
        subscription.hold(true);
        return callback.finished.load();
    });
    EXPECT_EQ(holder.wait_for(1ms), std::future_status::timeout);
    callback.go_on();
    EXPECT_TRUE(holder.get());
}

TEST(SubscriptionTest, CloseReturnsWhenTheCallbackHas) {
    Subscription subscription(false);
    PausedCallback callback(subscription);
    auto closer = std::async(std::launch::async, [&] {
        subscription.close();
        return callback.finished.load();
    });
    EXPECT_EQ(closer.wait_for(1ms), std::future_status::timeout);
    callback.go_on();
    EXPECT_TRUE(closer.get());
}

TEST(SubscriptionTest, HoldInsideTheCallbackReturnsAtOnce) {
    Subscription subscription(false);
    EXPECT_TRUE(subscription.deliver([&] { subscription.hold(true); }));
    EXPECT_FALSE(subscription.deliver([] {}));
}

TEST(SubscriptionTest, CloseInsideTheCallbackReturnsAtOnce) {
    auto const subscription = std::make_shared<Subscription>(false);
    EXPECT_TRUE(subscription->deliver([&] { subscription->close(); }));
    EXPECT_FALSE(subscription->deliver([] {}));
}

TEST(SubscriptionTest, ACallbackIsNotCalledInsideItself) {
    Subscription subscription(false);
    bool nested = true;
    subscription.deliver([&] { nested = subscription.deliver([] {}); });
    EXPECT_FALSE(nested);
}

TEST(SubscriptionTest, TwoThreadsNeverCallAtOnce) {
    Subscription subscription(false);
    std::atomic<int> running{0};
    int calls = 0;  // guarded by the subscription alone
    auto const deliver = [&] {
        for (int i = 0; i < 1000; ++i) {
            subscription.deliver([&] {
                EXPECT_EQ(++running, 1);
                ++calls;
                --running;
            });
        }
    };
    std::thread other(deliver);
    deliver();
    other.join();
    EXPECT_EQ(calls, 2000);
}

// An object as the library has them: its owner may go while callbacks arrive.
struct Owner {
    Owner(std::shared_ptr<Subscription> shared, std::atomic<bool>& destroyed)
        : subscription(std::move(shared)), gone(destroyed) {}
    ~Owner() {
        subscription->close();
        gone = true;
    }
    std::shared_ptr<Subscription> subscription;
    std::atomic<bool>& gone;
    int calls = 0;
};

TEST(SubscriptionTest, TheOwnerMayGoWhileCallbacksFire) {
    for (int round = 0; round < 200; ++round) {
        auto const subscription = std::make_shared<Subscription>(false);
        std::atomic<bool> gone{false};
        auto owner = std::make_unique<Owner>(subscription, gone);
        std::promise<void> called;
        int late = 0;
        std::thread deliverer([&, raw = owner.get()] {
            auto const callback = [&] {
                if (gone) {
                    ++late;
                    return;
                }
                if (++raw->calls == 1) {
                    called.set_value();
                }
                std::this_thread::yield();
                late += gone ? 1 : 0;
            };
            while (late == 0 && subscription->deliver(callback)) {
            }
        });
        EXPECT_EQ(called.get_future().wait_for(kLimit), std::future_status::ready);
        owner.reset();
        deliverer.join();
        ASSERT_EQ(late, 0) << "in round " << round;
    }
}

TEST(SubscriptionTest, HeldFromOutsideWhileTheTimelineFires) {
    sim::Timeline timeline;
    timeline.run_stepped();
    auto const subscription = std::make_shared<Subscription>(false);
    int calls = 0;  // touched by callbacks, and by this thread while they are held
    std::function<void()> fire = [&] {
        subscription->deliver([&] { ++calls; });
        timeline.at(timeline.now() + 1us, fire);
    };
    timeline.at(timeline.now(), fire);
    auto stepper = std::async(std::launch::async, [&] {
        for (int i = 0; i < 100; ++i) {
            timeline.step(10us);
        }
    });
    for (int i = 0; i < 100; ++i) {
        subscription->hold(true);
        calls += 0;
        subscription->hold(false);
    }
    ASSERT_EQ(stepper.wait_for(kLimit), std::future_status::ready);
    timeline.stop();
    subscription->close();
    EXPECT_LE(calls, 1001);
}

}  // namespace
