// The device's clock together with what falls due on it, and the library's thread that carries that out.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "sim/core/clock.h"

namespace sim {

// All operations may be called from any thread, also from inside an event; none calls an event itself.
// Events run one after the other on one thread, in the order of their due times, those of one time in the order in
// which they were set. No lock is held while one runs. The clock is stepped at first, and stands at 0.
class Timeline {
public:
    using EventId = std::uint64_t;  // never 0

    Timeline();
    Timeline(Timeline const&) = delete;
    Timeline& operator=(Timeline const&) = delete;
    // As stop(). Not to be called from inside an event.
    ~Timeline();

    Time now() const;
    std::string clock_setting() const;
    bool is_stepped() const;
    // Called on the timeline's thread before a stepped clock moves on, and before a step is done: returns when what the
    // last events set off has come to rest. To be set before anything else is done.
    void set_barrier(std::function<void()> barrier) { barrier_ = std::move(barrier); }
    void run_real();
    void run_scaled(double factor);
    void run_stepped();

    // Runs `event` when `due` comes; at once when it has passed.
    EventId at(Time due, std::function<void()> event);
    // True when the event will not run; false when it has run, runs, or never was.
    bool cancel(EventId id);

    // Moves a stepped clock on by `length` and returns when all that fell due until then has run. From inside an
    // event the clock moves on, and what falls due runs after that event. False when the clock is not stepped.
    // `while_waiting` is called about once a second of the host's time for as long as that takes.
    bool step(Duration length, std::function<void()> const& while_waiting = {});
    // Lets `length` of the device's time pass: sleeps, or steps the clock that is stepped by hand, so that one
    // thread alone never waits for a hand that is its own; other steps that go on add up with it, and it returns when
    // what fell due with its end has come to rest. Given `arrived`, it is part of what such a step waits for: it ends
    // within the step, and `arrived` runs as an event when its time has come, unless the timeline is stopped before.
    void take_time(Duration length, std::function<void()> const& arrived = {}) {
        finish_taking(*begin_taking(length, arrived));
    }
    // The same in two: the time passes from the first on, and a stepped clock does not pass its end; the second waits,
    // unless `given_up` says so, which is looked at whenever wake() was called.
    struct Taking {
        Time due{0};
        EventId event = 0;
        bool over = true;
        bool rests = false;  // what falls due then is waited for
    };
    std::unique_ptr<Taking> begin_taking(Duration length, std::function<void()> const& arrived = {});
    void finish_taking(Taking const& taking, std::function<bool()> const& given_up = {});
    void wake();

    // From now on no event starts and nobody sleeps. Returns when the running event has returned, or at once
    // when it is called from inside one.
    void stop();

private:
    using Lock = std::unique_lock<std::mutex>;
    using Key = std::pair<Time, EventId>;

    void run();
    void start_thread();
    EventId at(Lock const& lock, Time due, std::function<void()> event);
    bool cancel(Lock const& lock, EventId id);
    void raise_step_to(Time target);
    bool run_next(Lock& lock);
    void settle(Lock& lock);
    void wait_for_more(Lock& lock);
    bool has_due_event() const { return !events_.empty() && events_.begin()->first.first <= step_target_; }
    Time now_locked() const { return clock_.now(std::chrono::steady_clock::now()); }
    bool on_own_thread() const { return std::this_thread::get_id() == thread_id_; }
    template <typename Change>
    void change_clock(Change change);

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    Clock clock_;
    std::map<Key, std::function<void()>> events_;
    std::map<EventId, Time> due_times_;
    EventId next_id_ = 1;
    Time step_target_{0};
    std::uint64_t clock_changes_ = 0;
    bool busy_ = false;
    bool settled_ = true;  // nothing has happened since the barrier was last passed
    bool stopped_ = false;
    std::function<void()> barrier_ = [] {};
    std::thread thread_;
    std::thread::id thread_id_;
};

}  // namespace sim
