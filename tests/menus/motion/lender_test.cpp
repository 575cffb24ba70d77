// Callbacks that use an object of a menu, and the end of that object.
#include "menus/motion/lender.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <thread>

namespace {

TEST(LenderTest, CallbackUsesTheObjectUntilTheLenderIsGone) {
    int object = 1;
    std::function<void()> callback;
    {
        lender<int> const lends(object);
        callback = lends.callback([](int& lent) { ++lent; });
        callback();
        EXPECT_EQ(object, 2);
    }
    callback();
    EXPECT_EQ(object, 2);
}

TEST(LenderTest, DestructionWaitsForACallbackThatRuns) {
    std::promise<void> running;
    std::promise<void> go_on;
    std::atomic<bool> done = false;
    int object = 0;
    auto lends = std::make_unique<lender<int>>(object);
    std::thread library([&, callback = lends->callback([&](int&) {
        running.set_value();
        go_on.get_future().wait();
        done = true;
    })] { callback(); });
    running.get_future().wait();
    std::thread person([&] { go_on.set_value(); });
    lends.reset();
    EXPECT_TRUE(done);
    person.join();
    library.join();
}

TEST(LenderTest, ACallbackMayWaitForAnother) {
    int object = 0;
    lender<int> const lends(object);
    auto const other = lends.callback([](int& lent) { ++lent; });
    lends.callback([&](int&) { std::thread(other).join(); })();
    EXPECT_EQ(object, 1);
}

}  // namespace
