// Notices when properties change.
#include "sim/device/property_watch.h"

namespace sim {

namespace {

constexpr char const* kTime = "clock.time";

}  // namespace

PropertyWatch::PropertyWatch(Device& device, std::vector<std::string> const& prefixes, Manner manner, Report report)
    : device_(device), manner_(manner), report_(std::move(report)) {
    auto const access = device_.access();
    for (auto const& [name, property] : access->properties.select(prefixes)) {
        if (manner_ == Manner::samples) {
            watched_.push_back({name, property, std::nullopt});
        } else if (!prefixes.empty() || name != kTime) {
            watched_.push_back({name, property, property.get()});
        }
    }
    if (manner_ == Manner::changes) {
        observer_ = access->observers.add([this](Time now) { look(now, false); });
    }
}

PropertyWatch::~PropertyWatch() {
    auto const access = device_.access();
    access->observers.remove(observer_);
}

void PropertyWatch::catch_up() {
    auto const access = device_.access();
    look(access.now(), true);
}

void PropertyWatch::look(Time now, bool rests) {
    bool const stepped = device_.timeline.is_stepped();
    HostTime const host = std::chrono::steady_clock::now();
    for (Watched& watched : watched_) {
        Value value = watched.property.get();
        bool const may_tell = manner_ == Manner::samples || (stepped ? rests || now - watched.told >= kSpacing
                                                                     : host - watched.told_by_host >= kSpacing);
        if (value != watched.last && may_tell && report_(now, watched.name, watched.property, value)) {
            watched.last = std::move(value);
            watched.told = now;
            watched.told_by_host = host;
        }
    }
}

}  // namespace sim
