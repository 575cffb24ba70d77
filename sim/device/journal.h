// The journal: one line for each call of the library and each callback, off unless someone reads it.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>

#include "sim/core/clock.h"
#include "sim/device/properties.h"

namespace sim {

// Usable from any thread.
class Journal {
public:
    Journal() = default;
    Journal(Journal const&) = delete;
    Journal& operator=(Journal const&) = delete;
    ~Journal();

    // Appends to `path` from now on, each line with one write.
    Error open(std::string const& path);
    // Hands each line to `follower`, which must neither block nor call the journal.
    int follow(std::function<void(std::string const& line)> follower);
    // Returns when the follower is not running.
    void unfollow(int id);

    bool on() const { return readers_ > 0; }
    // "TIME OBJECT TEXT". `object`: its number, 0 for none.
    void write(Time time, int object, std::string const& text);

private:
    std::mutex mutex_;
    std::atomic<int> readers_{0};
    int file_ = -1;
    std::map<int, std::function<void(std::string const&)>> followers_;
    int next_id_ = 1;
};

}  // namespace sim
