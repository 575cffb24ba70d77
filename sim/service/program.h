// A program that uses the device.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "sim/service/event_lane.h"
#include "sim/service/objects.h"

namespace sim {

// All is called with the device's lock held.
class Program {
public:
    // `key`: by which its further connections are known.
    Program(Device& device, std::uint64_t key, std::string name, int pid)
        : device_(device), key_(key), name_(std::move(name)), pid_(pid) {}
    Program(Program const&) = delete;
    Program& operator=(Program const&) = delete;
    ~Program() { release_objects(); }

    std::uint64_t key() const { return key_; }
    // "NAME.NUMBER"
    std::string const& name() const { return name_; }
    int pid() const { return pid_; }
    // For what objects set on the timeline.
    Device& device() const { return device_; }

    EventLane hub_lane;
    EventLane button_lane;
    EventLane* lane(Lane lane);

    // Null where it has none of that number.
    std::shared_ptr<ServedObject> object(unsigned int number) const;
    void add(std::shared_ptr<ServedObject> object);
    // Nothing where it has been removed before.
    void remove(ServedObject& object);
    std::size_t objects() const { return objects_.size(); }
    // In the reverse order of construction.
    void release_objects();

    int connections = 0;
    // Its last connection has gone: what it had is released, and what it still does here is given up. ended() may be
    // asked without the lock.
    void end();
    bool ended() const { return ended_; }

private:
    Device& device_;
    std::uint64_t const key_;
    std::string const name_;
    int const pid_;
    std::atomic<bool> ended_{false};
    std::map<unsigned int, std::shared_ptr<ServedObject>> objects_;
};

}  // namespace sim
