// Tests of the mutex that is given in turn.
#include "sim/core/fair_mutex.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace {

using sim::FairMutex;

TEST(FairMutexTest, WhoTakesItAgainComesBehindThoseWhoWait) {
    FairMutex mutex;
    std::string order;
    auto const take = [&](char who) {
        std::lock_guard<FairMutex> const lock(mutex);
        order += who;
    };
    mutex.lock();
    std::thread first(take, '1');
    while (mutex.users() < 2) {
        std::this_thread::yield();
    }
    std::thread second(take, '2');
    while (mutex.users() < 3) {
        std::this_thread::yield();
    }
    mutex.unlock();
    take('3');
    first.join();
    second.join();
    EXPECT_EQ(order, "123");
}

}  // namespace
