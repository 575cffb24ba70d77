// The samples of one gyro_t on their way to those who listen: its delegates, alarms and callback records.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "sim/core/subscription.h"
#include "sim/models/sensor_hub.h"

namespace sim {

class Device;

// Usable from any thread, but without the device's lock: hold(true), ignore() and close() return only when none of
// the functions concerned is running, unless they are called from one.
class SampleFeed {
public:
    using Sample = SensorHub::Sample;
    using Listener = std::function<void(Sample const&)>;
    using ListenerId = std::shared_ptr<Subscription>;
    enum class From { now, first_release };

    // `reachable` tells, with the device's lock held, whether the hub's samples reach the object at all.
    SampleFeed(std::shared_ptr<Subscription> subscription, std::function<bool()> reachable)
        : subscription_(std::move(subscription)), reachable_(std::move(reachable)) {}

    bool reachable() const { return reachable_(); }
    // Calls `listener` with every sample from now on, or from the first hold(false) on.
    ListenerId listen(From from, Listener listener);
    void ignore(ListenerId const& listener);
    void hold(bool held);
    void close();
    // Hands the sample to all listeners, one after the other.
    void publish(Sample const& sample);

private:
    struct Entry {
        From from;
        ListenerId subscription;
        Listener listener;
    };

    std::vector<Entry> entries();
    bool takes(Entry const& entry);

    std::shared_ptr<Subscription> const subscription_;
    std::function<bool()> const reachable_;
    std::mutex mutex_;  // guards what follows
    std::vector<Entry> entries_;
    bool held_ = false;
    bool released_ = false;  // there was a hold(false)
};

// The way from the sensor hub to the feeds of all gyro_t.
class SampleDelivery {
public:
    explicit SampleDelivery(Device& device) : device_(device) {}

    // These are called with the device's lock held.
    void add(std::shared_ptr<SampleFeed> feed);
    void remove(std::shared_ptr<SampleFeed> const& feed);
    // To be called whenever the hub's next delivery may have changed.
    void schedule();

private:
    void deliver();

    Device& device_;
    std::vector<std::shared_ptr<SampleFeed>> feeds_;
    std::optional<Time> due_;  // of the event that is set
    std::uint64_t event_ = 0;
};

}  // namespace sim
