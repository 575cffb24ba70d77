// The right of an object to have callbacks, and the way to take it back safely.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace sim {

// One per object with callbacks, shared (std::shared_ptr) by the object and the events that deliver to it.
// hold(true) and close() must not be called with a lock held that a callback may want, the device's above all.
class Subscription {
public:
    explicit Subscription(bool held) : held_(held) {}
    Subscription(Subscription const&) = delete;
    Subscription& operator=(Subscription const&) = delete;

    // Held, no callback starts. With true it returns when none is running, or at once from inside one.
    void hold(bool held);
    // Holds for ever: what the owner's destructor calls first.
    void close();
    // Runs `callback` unless held; tells whether it ran. Never two at once. What the callback reads of its owner
    // it must read before it calls the user's function, which may destroy the owner.
    bool deliver(std::function<void()> const& callback);

private:
    std::mutex mutex_;
    std::condition_variable idle_;
    bool held_;
    bool closed_ = false;
    bool running_ = false;
    std::thread::id runner_;

    void wait_idle(std::unique_lock<std::mutex>& lock);
};

}  // namespace sim
