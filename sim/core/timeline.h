// The device's clock together with what falls due on it, and the library's thread that carries that out.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "sim/core/clock.h"

namespace sim {

// All operations may be called from any thread, also from inside an event; none calls an event itself.
// Events run one after the other on one thread of the library, in the order of their due times, those of one
// time in the order in which they were set. No lock is held while one runs. The thread starts with the first
// event and lets all signals go to the program.
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
    void run_real();
    void run_scaled(double factor);
    void run_stepped();

    // Runs `event` when `due` comes; at once when it has passed.
    EventId at(Time due, std::function<void()> event);
    // True when the event will not run; false when it has run, runs, or never was.
    bool cancel(EventId id);

    // Moves a stepped clock on by `length` and returns when all that fell due until then has run. From inside an
    // event the clock moves on, and what falls due runs after that event. False when the clock is not stepped.
    bool step(Duration length);
    // Lets `length` of the device's time pass: sleeps, or steps the clock that is stepped by hand, so that one
    // thread alone never waits for a hand that is its own.
    void take_time(Duration length);

    // From now on no event starts and nobody sleeps. Returns when the running event has returned, or at once
    // when it is called from inside one.
    void stop();

private:
    using Lock = std::unique_lock<std::mutex>;
    using Key = std::pair<Time, EventId>;

    void run();
    void start_thread();
    bool run_next(Lock& lock);
    void wait_for_more(Lock& lock);
    bool step(Lock& lock, Duration length);
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
    bool stopped_ = false;
    std::thread thread_;
    std::thread::id thread_id_;
};

}  // namespace sim
