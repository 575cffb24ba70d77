// The right of an object to have callbacks, and the way to take it back safely.
#include "sim/core/subscription.h"

namespace sim {

void Subscription::hold(bool held) {
    std::unique_lock<std::mutex> lock(mutex_);
    held_ = held;
    if (held) {
        wait_idle(lock);
    }
}

void Subscription::close() {
    std::unique_lock<std::mutex> lock(mutex_);
    closed_ = true;
    wait_idle(lock);
}

bool Subscription::deliver(std::function<void()> const& callback) {
    {
        std::unique_lock<std::mutex> lock(mutex_);
        if (running_ && runner_ == std::this_thread::get_id()) {
            return false;
        }
        wait_idle(lock);
        if (held_ || closed_) {
            return false;
        }
        running_ = true;
        runner_ = std::this_thread::get_id();
    }
    callback();
    std::lock_guard<std::mutex> const lock(mutex_);
    running_ = false;
    idle_.notify_all();
    return true;
}

void Subscription::wait_idle(std::unique_lock<std::mutex>& lock) {
    idle_.wait(lock, [&] { return !running_ || runner_ == std::this_thread::get_id(); });
}

}  // namespace sim
