// Notices when properties change.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "sim/device/device.h"

namespace sim {

class PropertyWatch {
public:
    // Gets a property that has changed, with the time at which that was noticed. Called with the device's lock held;
    // must neither block nor take it. False: there is no room now, and the change, or what has become of it, is told
    // later.
    using Report =
        std::function<bool(Time time, std::string const& name, Property const& property, Value const& value)>;

    // So long a property is not told again; the last value of that time is told after it. Of the host's time, on a
    // stepped clock of the device's: what happens within a step is told as it would be otherwise.
    static constexpr std::chrono::milliseconds kSpacing{50};

    enum class Manner {
        changes,  // tells each change when it happens
        samples   // tells at catch_up() what is other than at the one before, at the first one everything
    };

    // Watches what Properties::select answers; of changes without a prefix not the time, which always changes.
    PropertyWatch(Device& device, std::vector<std::string> const& prefixes, Manner manner, Report report);
    PropertyWatch(PropertyWatch const&) = delete;
    PropertyWatch& operator=(PropertyWatch const&) = delete;
    ~PropertyWatch();

    // Looks for what time alone has changed, and tells what waits. To be called each kSpacing, or when a sample is due.
    void catch_up();

private:
    using HostTime = std::chrono::steady_clock::time_point;

    struct Watched {
        std::string name;
        Property property;
        std::optional<Value> last;  // nothing: it is still to be told
        Time told{-kSpacing};       // when that was
        HostTime told_by_host{};
    };

    void look(Time now, bool rests);

    Device& device_;
    Manner const manner_;
    Report const report_;
    std::vector<Watched> watched_;
    int observer_ = 0;  // of changes
};

}  // namespace sim
