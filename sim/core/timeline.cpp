// The device's clock together with what falls due on it, and the library's thread that carries that out.
#include "sim/core/timeline.h"

#include <algorithm>

#include "sim/core/thread.h"

namespace sim {

Timeline::Timeline() : clock_(std::chrono::steady_clock::now()) {}

Timeline::~Timeline() {
    stop();
}

Time Timeline::now() const {
    Lock const lock(mutex_);
    return now_locked();
}

std::string Timeline::clock_setting() const {
    Lock const lock(mutex_);
    return clock_.setting();
}

template <typename Change>
void Timeline::change_clock(Change change) {
    Lock const lock(mutex_);
    change(std::chrono::steady_clock::now());
    step_target_ = now_locked();
    ++clock_changes_;
    changed_.notify_all();
}

void Timeline::run_real() {
    change_clock([&](Clock::HostTime host) { clock_.run_real(host); });
}

void Timeline::run_scaled(double factor) {
    change_clock([&](Clock::HostTime host) { clock_.run_scaled(host, factor); });
}

void Timeline::run_stepped() {
    change_clock([&](Clock::HostTime host) { clock_.run_stepped(host); });
}

Timeline::EventId Timeline::at(Time due, std::function<void()> event) {
    Lock const lock(mutex_);
    EventId const id = next_id_++;
    events_.emplace(Key(due, id), std::move(event));
    due_times_.emplace(id, due);
    start_thread();
    changed_.notify_all();
    return id;
}

bool Timeline::cancel(EventId id) {
    Lock const lock(mutex_);
    auto const due = due_times_.find(id);
    if (due == due_times_.end()) {
        return false;
    }
    events_.erase(Key(due->second, id));
    due_times_.erase(due);
    return true;
}

bool Timeline::step(Duration length) {
    Lock lock(mutex_);
    return step(lock, length);
}

bool Timeline::step(Lock& lock, Duration length) {
    if (clock_.mode() != Clock::Mode::stepped) {
        return false;
    }
    if (on_own_thread() || stopped_ || !thread_.joinable()) {
        clock_.advance_to(now_locked() + length);
        step_target_ = std::max(step_target_, now_locked());
        return true;
    }
    step_target_ += length;
    Time const target = step_target_;
    std::uint64_t const changes = clock_changes_;
    changed_.notify_all();
    changed_.wait(lock, [&] {
        bool const none_due = events_.empty() || events_.begin()->first.first > target;
        bool const arrived = now_locked() >= target && none_due && !busy_;
        return arrived || stopped_ || clock_changes_ != changes;
    });
    return true;
}

void Timeline::take_time(Duration length) {
    Lock lock(mutex_);
    Time const due = now_locked() + length;
    while (now_locked() < due && !stopped_) {
        if (auto const host = clock_.host_time(due)) {
            changed_.wait_until(lock, *host);
        } else {
            step(lock, due - now_locked());
        }
    }
}

void Timeline::stop() {
    Lock lock(mutex_);
    stopped_ = true;
    changed_.notify_all();
    if (on_own_thread()) {
        return;
    }
    std::thread ending = std::move(thread_);
    if (ending.joinable()) {
        lock.unlock();
        ending.join();
    } else {
        changed_.wait(lock, [&] { return !busy_; });
    }
}

void Timeline::start_thread() {
    if (thread_.joinable() || stopped_) {
        return;
    }
    thread_ = start_library_thread("r47-timeline", [this] { run(); });
    thread_id_ = thread_.get_id();
}

void Timeline::run() {
    Lock lock(mutex_);
    while (!stopped_) {
        if (!run_next(lock)) {
            wait_for_more(lock);
        }
    }
}

// Runs the first event if it is due, or moves a stepped clock on to it or to its target.
bool Timeline::run_next(Lock& lock) {
    bool const stepped = clock_.mode() == Clock::Mode::stepped;
    Time const limit = stepped ? step_target_ : now_locked();
    if (events_.empty() || events_.begin()->first.first > limit) {
        bool const moves = stepped && now_locked() < step_target_;
        if (moves) {
            clock_.advance_to(step_target_);
            changed_.notify_all();
        }
        return moves;
    }
    auto node = events_.extract(events_.begin());
    due_times_.erase(node.key().second);
    if (stepped) {
        clock_.advance_to(node.key().first);
    }
    busy_ = true;
    lock.unlock();
    node.mapped()();
    node.mapped() = nullptr;  // what the event captured goes before it counts as done
    lock.lock();
    busy_ = false;
    changed_.notify_all();
    return true;
}

void Timeline::wait_for_more(Lock& lock) {
    auto const host = events_.empty() ? std::nullopt : clock_.host_time(events_.begin()->first.first);
    if (host) {
        changed_.wait_until(lock, *host);
    } else {
        changed_.wait(lock);
    }
}

}  // namespace sim
