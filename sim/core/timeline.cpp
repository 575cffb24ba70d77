// The device's clock together with what falls due on it, and the library's thread that carries that out.
#include "sim/core/timeline.h"

#include <algorithm>

#include "sim/core/thread.h"

namespace sim {

namespace {

constexpr std::chrono::seconds kPatience{1};  // of a step, before it says whom it waits for

}  // namespace

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

bool Timeline::is_stepped() const {
    Lock const lock(mutex_);
    return clock_.mode() == Clock::Mode::stepped;
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
    return at(lock, due, std::move(event));
}

Timeline::EventId Timeline::at(Lock const&, Time due, std::function<void()> event) {
    EventId const id = next_id_++;
    events_.emplace(Key(due, id), std::move(event));
    due_times_.emplace(id, due);
    start_thread();
    changed_.notify_all();
    return id;
}

bool Timeline::cancel(EventId id) {
    Lock const lock(mutex_);
    return cancel(lock, id);
}

bool Timeline::cancel(Lock const&, EventId id) {
    auto const due = due_times_.find(id);
    if (due == due_times_.end()) {
        return false;
    }
    events_.erase(Key(due->second, id));
    due_times_.erase(due);
    return true;
}

bool Timeline::step(Duration length, std::function<void()> const& while_waiting) {
    Lock lock(mutex_);
    if (clock_.mode() != Clock::Mode::stepped) {
        return false;
    }
    if (on_own_thread() || stopped_) {
        clock_.advance_to(now_locked() + length);
        step_target_ = std::max(step_target_, now_locked());
        return true;
    }
    start_thread();
    step_target_ += length;
    settled_ = false;
    Time const target = step_target_;
    std::uint64_t const changes = clock_changes_;
    auto const done = [&] {
        bool const arrived = now_locked() >= target && !has_due_event() && !busy_ && settled_;
        return arrived || stopped_ || clock_changes_ != changes;
    };
    changed_.notify_all();
    while (!changed_.wait_for(lock, kPatience, done)) {
        if (while_waiting) {
            lock.unlock();
            while_waiting();
            lock.lock();
        }
    }
    return true;
}

std::unique_ptr<Timeline::Taking> Timeline::begin_taking(Duration length, std::function<void()> const& arrived) {
    Lock lock(mutex_);
    auto taking = std::make_unique<Taking>();
    if (stopped_ || length <= Duration(0)) {
        return taking;
    }
    bool const stepped = clock_.mode() == Clock::Mode::stepped;
    bool const adds_up = stepped && !arrived && !on_own_thread();
    taking->due = (adds_up ? std::max(step_target_, now_locked()) : now_locked()) + length;
    if (on_own_thread() && stepped) {
        clock_.advance_to(taking->due);
        step_target_ = std::max(step_target_, taking->due);
    } else if (on_own_thread()) {
        changed_.wait_until(lock, *clock_.host_time(taking->due), [&] { return stopped_; });
    } else {
        taking->over = false;
        taking->rests = !arrived;
        taking->event = at(lock, taking->due, [this, arrived, &over = taking->over] {
            if (arrived) {
                arrived();
            }
            Lock const arriving(mutex_);
            over = true;
        });
        raise_step_to(taking->due);
    }
    return taking;
}

// A stepped clock goes on as far as that, if not further.
void Timeline::raise_step_to(Time target) {
    if (clock_.mode() == Clock::Mode::stepped) {
        step_target_ = std::max(step_target_, target);
        settled_ = false;
        changed_.notify_all();
    }
}

void Timeline::finish_taking(Taking const& taking, std::function<bool()> const& given_up) {
    Lock lock(mutex_);
    auto const is_ended = [&] { return stopped_ || (given_up && given_up()); };
    while (!taking.over) {
        raise_step_to(taking.due);
        std::uint64_t const changes = clock_changes_;
        changed_.wait(lock, [&] { return taking.over || is_ended() || clock_changes_ != changes; });
        if (is_ended()) {
            changed_.wait(lock, [&] { return taking.over || cancel(lock, taking.event); });
            return;
        }
    }
    changed_.wait(lock, [&] {
        bool const at_rest = !has_due_event() && !busy_ && settled_;
        return !taking.rests || at_rest || is_ended() || now_locked() > taking.due;
    });
}

void Timeline::wake() {
    Lock const lock(mutex_);
    changed_.notify_all();
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
    thread_ = start_thread_without_signals("r47-timeline", [this] { run(); });
    thread_id_ = thread_.get_id();
}

void Timeline::run() {
    Lock lock(mutex_);
    while (!stopped_) {
        if (clock_.mode() == Clock::Mode::stepped && !settled_) {
            settle(lock);
        } else if (!run_next(lock)) {
            wait_for_more(lock);
        }
    }
}

void Timeline::settle(Lock& lock) {
    busy_ = true;
    settled_ = true;
    lock.unlock();
    barrier_();
    lock.lock();
    busy_ = false;
    changed_.notify_all();
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
    settled_ = false;
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
