// Tests of taking callbacks back while they run: holding, and destruction, from inside and from outside.
#include "sim/library/callbacks.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <map>
#include <optional>
#include <set>
#include <thread>

#include "hal/button.h"
#include "hal/gyro_alarm.h"
#include "hal/gyro_delegate.h"
#include "tests/sim/served_gyro.h"

namespace {

using namespace std::chrono_literals;
using hal::cb_struct_te;
using hal::gyro_alarm_t;
using hal::gyro_delegate_t;

constexpr auto kLimit = 60s;    // what no working run ever reaches
constexpr auto kAWhile = 20ms;  // in which what must wait would have returned

// A callback that starts, and waits to be told to go on.
class PausedCallback {
public:
    void run() {
        if (!finished) {
            started_.set_value();
            EXPECT_EQ(go_on_.get_future().wait_for(kLimit), std::future_status::ready);
            finished = true;
        }
    }
    void wait_for_start() { ASSERT_EQ(started_.get_future().wait_for(kLimit), std::future_status::ready); }
    void go_on() { go_on_.set_value(); }

    std::atomic<bool> finished{false};

private:
    std::promise<void> started_;
    std::promise<void> go_on_;
};

// Whether the device has a journal: each callback is announced to it then.
using Watched = testing::WithParamInterface<bool>;

class CallbacksTest : public ServedGyroTest, public Watched {
protected:
    CallbacksTest() {
        if (!GetParam()) {
            unwatch();
        }
        delegate_.emplace(*gyro_, 37, [this](unsigned char, cb_struct_te, void*) { called("delegate"); });
        alarm_.emplace(*gyro_, 37);
        alarm_->on_position_left = [this] { called("alarm"); };
        gyro_->callback_records[0] = {37, [this](unsigned char, cb_struct_te, void*) { called("gyro"); }};
        button_.emplace("/dev/gpiochip1", 82, true, 2000UL);
        button_->press_records[0] = {10, [this] { called("button"); }};
        gyro_->irq_callback_hold(false);
        button_->irq_callback_hold(false);
    }
    ~CallbacksTest() override {
        delegate_.reset();
        alarm_.reset();
        button_.reset();
        gyro_.reset();
    }

    // Every callback of the one object, until it has been paused once.
    void called(std::string const& object) {
        ++calls_[object];
        if (object == paused_object_) {
            paused_.run();
        }
    }

    // Lets the object's callback start.
    void pause_in(std::string const& object) {
        paused_object_ = object;
        control("tilt 0 90 0");
        activate(37, 10);
        control("button down");
        stepper_ = std::async(std::launch::async, [this] { step(101ms); });
        paused_.wait_for_start();
    }
    // `act` returns only when the callback has.
    template <typename Act>
    void expect_to_wait(Act act) {
        auto actor = std::async(std::launch::async, [&] {
            act();
            return paused_.finished.load();
        });
        EXPECT_EQ(actor.wait_for(kAWhile), std::future_status::timeout);
        paused_.go_on();
        EXPECT_TRUE(actor.get());
        stepper_.get();
    }
    // `act` returns though the callback runs.
    template <typename Act>
    void expect_not_to_wait(Act act) {
        auto actor = std::async(std::launch::async, act);
        EXPECT_EQ(actor.wait_for(kLimit), std::future_status::ready);
        EXPECT_FALSE(paused_.finished);
        paused_.go_on();
        stepper_.get();
    }

    std::optional<gyro_delegate_t> delegate_;
    std::optional<gyro_alarm_t> alarm_;
    std::optional<hal::button_t> button_;
    PausedCallback paused_;
    std::string paused_object_;
    std::future<void> stepper_;
    std::map<std::string, std::atomic<int>> calls_;
};

TEST_P(CallbacksTest, DestructionOfADelegateReturnsWhenItsCallbackHas) {
    pause_in("delegate");
    expect_to_wait([this] { delegate_.reset(); });
}

TEST_P(CallbacksTest, DestructionOfAnAlarmReturnsWhenItsCallbackHas) {
    pause_in("alarm");
    expect_to_wait([this] { alarm_.reset(); });
}

TEST_P(CallbacksTest, DestructionOfAButtonReturnsWhenItsCallbackHas) {
    pause_in("button");
    expect_to_wait([this] { button_.reset(); });
}

TEST_P(CallbacksTest, DestructionOfAGyroReturnsWhenItsCallbackHas) {
    delegate_.reset();
    alarm_.reset();
    pause_in("gyro");
    expect_to_wait([this] { gyro_.reset(); });
}

TEST_P(CallbacksTest, HoldingAGyroReturnsWhenTheCallbackHas) {
    pause_in("gyro");
    expect_to_wait([this] { gyro_->irq_callback_hold(true); });
}

TEST_P(CallbacksTest, HoldingAGyroReturnsWhenTheCallbackOfItsListenerHas) {
    pause_in("alarm");
    expect_to_wait([this] { gyro_->irq_callback_hold(true); });
}

TEST_P(CallbacksTest, HoldingAButtonReturnsWhenTheCallbackHas) {
    pause_in("button");
    expect_to_wait([this] { button_->irq_callback_hold(true); });
}

TEST_P(CallbacksTest, TheCallbackOfAnotherIsNotWaitedFor) {
    pause_in("alarm");
    expect_not_to_wait([this] { delegate_.reset(); });
}

TEST_P(CallbacksTest, TheHubAndTheButtonDoNotWaitForEachOther) {
    pause_in("delegate");
    expect_not_to_wait([this] {
        button_->irq_callback_hold(true);
        button_.reset();
    });
}

TEST_P(CallbacksTest, TheDeviceAnswersWhileACallbackRuns) {
    pause_in("delegate");
    expect_not_to_wait([this] {
        unsigned char status = 9;
        EXPECT_EQ(gyro_->get_status(status), 0);
        control("set system.state 4");
        EXPECT_EQ(service_.waited_for().size(), 1U);
    });
}

TEST_P(CallbacksTest, NothingIsCalledBehindAHold) {
    activate(37, 400);
    step(11ms);
    gyro_->irq_callback_hold(true);
    button_->irq_callback_hold(true);
    int const before = calls_["delegate"] + calls_["gyro"];
    EXPECT_GT(before, 0);
    control("button down");
    step(1s);
    EXPECT_EQ(calls_["delegate"] + calls_["gyro"], before);
    EXPECT_EQ(calls_["button"], 0);
}

TEST_P(CallbacksTest, HoldingAndDestructionInsideTheCallbackReturnAtOnce) {
    std::promise<void> done;
    gyro_delegate_t const holding(*gyro_, 37, [&](unsigned char, cb_struct_te, void*) {
        if (delegate_) {
            gyro_->irq_callback_hold(true);
            delegate_.reset();
            alarm_.reset();
            button_->irq_callback_hold(true);
            button_.reset();
            done.set_value();
        }
    });
    activate(37, 10);
    step(1s);
    EXPECT_EQ(done.get_future().wait_for(0s), std::future_status::ready);
}

// The callbacks of one object never run at once, and come from one thread.
TEST_P(CallbacksTest, TwoCallbacksOfTheHubNeverRunAtOnce) {
    delegate_.reset();
    std::atomic<int> running{0};
    std::set<std::thread::id> threads;
    int calls = 0;
    auto const count = [&](unsigned char, cb_struct_te, void*) {
        EXPECT_EQ(++running, 1);
        threads.insert(std::this_thread::get_id());
        ++calls;
        --running;
    };
    gyro_delegate_t const one(*gyro_, 37, count);
    auto const other_gyro = make_gyro();
    gyro_delegate_t const two(*other_gyro, 37, count);
    activate(37, 400);
    step(1s);
    EXPECT_EQ(calls, 2 * 399);
    EXPECT_EQ(threads.size(), 1U);
    EXPECT_EQ(threads.count(std::this_thread::get_id()), 0U);
}

// Samples and presses rain down while objects come and go.
class RainTest : public ServedGyroTest, public Watched {
protected:
    RainTest() {
        if (!GetParam()) {
            unwatch();
        }
    }

    static constexpr int kRounds = 30;

    // Each lives until it has been called so often.
    struct Life {
        std::atomic<bool> alive{true};
        std::atomic<int> calls{0};
        std::atomic<int> late{0};

        void call() {
            late += alive ? 0 : 1;
            ++calls;
            std::this_thread::yield();
            late += alive ? 0 : 1;
        }
        void wait() const {
            auto const limit = std::chrono::steady_clock::now() + kLimit;
            while (calls < 3 && std::chrono::steady_clock::now() < limit) {
                std::this_thread::yield();
            }
            EXPECT_GE(calls, 3);
        }
    };

    // `make` gives an object that calls the life's call(), and may be destroyed at any time.
    template <typename Make>
    void expect_no_late_callback(Make make) {
        std::vector<std::unique_ptr<Life>> lives;
        for (int i = 0; i < kRounds; ++i) {
            Life& life = *lives.emplace_back(std::make_unique<Life>());
            {
                auto const object = make(life);
                life.wait();
            }
            life.alive = false;
        }
        gyro_.reset();
        for (auto const& life : lives) {
            EXPECT_EQ(life->late, 0);
        }
    }
};

TEST_P(RainTest, NoSampleComesBehindTheEndOfADelegate) {
    control("clock scaled 5");
    activate(37, 400);
    expect_no_late_callback([this](Life& life) {
        return std::make_unique<gyro_delegate_t>(*gyro_, 37,
                                                 [&life](unsigned char, cb_struct_te, void*) { life.call(); });
    });
}

TEST_P(RainTest, NoTransitionComesBehindTheEndOfAnAlarm) {
    gyro_->irq_callback_hold(false);
    control("clock scaled 5");
    control("set orientation.noise 10");
    activate(37, 400);
    expect_no_late_callback([this](Life& life) {
        gyro_->irq_callback_hold(true);
        auto alarm = std::make_unique<gyro_alarm_t>(*gyro_, 37);
        alarm->on_position_left = [&life] { life.call(); };
        alarm->on_position_reached = [&life] { life.call(); };
        EXPECT_EQ(alarm->set_angle_limit(10), 0);
        gyro_->irq_callback_hold(false);
        return alarm;
    });
}

TEST_P(RainTest, NoPressComesBehindTheEndOfAButton) {
    control("clock scaled 1000");
    std::atomic<bool> stop{false};
    std::thread presser([&] {
        while (!stop) {
            control("button down");
            std::this_thread::yield();
            control("button up");
        }
    });
    expect_no_late_callback([](Life& life) {
        auto button = std::make_unique<hal::button_t>("/dev/gpiochip1", 82, true, 0);
        button->release_records[0].action = [&life] { life.call(); };
        button->irq_callback_hold(false);
        return button;
    });
    stop = true;
    presser.join();
}

TEST_P(CallbacksTest, AnObjectEndsAlsoWhereItsDeviceHasGone) {
    activate(37, 400);
    step(1s);
    testing::internal::CaptureStderr();
    service_.stop();
    delegate_.reset();
    alarm_.reset();
    button_.reset();
    gyro_.reset();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "libhal: the device has gone\n");
}

// What the library waits for itself.
class LostDeviceTest : public CallbacksTest {
protected:
    template <typename Act>
    void expect_to_wait_without_device(std::string const& object, Act act) {
        pause_in(object);
        testing::internal::CaptureStderr();
        service_.stop();
        expect_to_wait(act);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "libhal: the device has gone\n");
    }
};

TEST_P(LostDeviceTest, ADelegateEndsWhenItsCallbackHas) {
    expect_to_wait_without_device("delegate", [this] { delegate_.reset(); });
}

TEST_P(LostDeviceTest, AnAlarmEndsWhenItsCallbackHas) {
    expect_to_wait_without_device("alarm", [this] { alarm_.reset(); });
}

TEST_P(LostDeviceTest, AButtonEndsWhenItsCallbackHas) {
    expect_to_wait_without_device("button", [this] { button_.reset(); });
}

TEST_P(LostDeviceTest, AGyroEndsWhenItsCallbackHas) {
    delegate_.reset();
    alarm_.reset();
    expect_to_wait_without_device("gyro", [this] { gyro_.reset(); });
}

INSTANTIATE_TEST_SUITE_P(Both, CallbacksTest, testing::Bool());
INSTANTIATE_TEST_SUITE_P(Both, LostDeviceTest, testing::Bool());
INSTANTIATE_TEST_SUITE_P(Both, RainTest, testing::Bool());

}  // namespace
