// Those who look at the device whenever something of it may have changed.
#pragma once

#include <functional>
#include <map>
#include <utility>

#include "sim/core/clock.h"

namespace sim {

// All is called with the device's lock held.
class Observers {
public:
    // Called with the device's time when somebody is about to give the lock back. Must neither block nor take it.
    using Look = std::function<void(Time now)>;

    int add(Look look) {
        looks_.emplace(next_id_, std::move(look));
        return next_id_++;
    }
    void remove(int id) { looks_.erase(id); }

    void look(Time now) const {
        for (auto const& [id, look] : looks_) {
            look(now);
        }
    }

private:
    std::map<int, Look> looks_;
    int next_id_ = 1;
};

}  // namespace sim
