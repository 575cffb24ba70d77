// A mutex that those who wait for it get in the order in which they came.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace sim {

// Where one thread takes it again and again, a plain mutex may keep all others waiting for as long as that goes on.
class FairMutex {
public:
    void lock() {
        std::unique_lock<std::mutex> lock(mutex_);
        std::uint64_t const ticket = last_ticket_++;
        turn_.wait(lock, [&] { return served_ == ticket; });
    }
    void unlock() {
        {
            std::lock_guard<std::mutex> const lock(mutex_);
            ++served_;
        }
        turn_.notify_all();
    }

    // How many have it or wait for it.
    std::uint64_t users() {
        std::lock_guard<std::mutex> const lock(mutex_);
        return last_ticket_ - served_;
    }

private:
    std::mutex mutex_;
    std::condition_variable turn_;
    std::uint64_t last_ticket_ = 0;
    std::uint64_t served_ = 0;
};

}  // namespace sim
