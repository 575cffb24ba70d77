// The presses of the push button on their way to the records of one button_t.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "hal/button.h"
#include "sim/core/subscription.h"
#include "sim/core/timeline.h"
#include "sim/device/properties.h"
#include "sim/models/button.h"

namespace sim {

class Device;

// Usable from any thread, but without the device's lock: hold(true) and close() return only when no action is
// running, unless they are called from one. Held at first: what the contact does meanwhile waits, up to 16 edges,
// and meets the records on the release.
class ButtonFeed : public std::enable_shared_from_this<ButtonFeed> {
public:
    // `sees` tells, with the device's lock held, whether the button's line is the object's. `owner` must not be
    // destroyed before close(). `note` is told of each action that is about to run.
    struct Owner {
        hal::button_t const* button;
        std::function<bool()> sees;
        std::function<void(ButtonEvents::Event)> note;
    };

    ButtonFeed(Timeline& timeline, std::shared_ptr<Subscription> subscription, Owner owner, Duration debounce);

    bool sees() const { return owner_.sees(); }
    void hold(bool held);
    void close();
    // The contact closes or opens. May be called with the device's lock held.
    void edge(Time time, bool closes);

private:
    struct Edge {
        Time time;
        bool closes;
    };

    void wake(Time due);
    void process();
    bool next_event(ButtonEvents::Event& event);
    void digest(Edge const& edge);
    void queue(std::vector<ButtonEvents::Event> const& events);

    Timeline& timeline_;
    std::shared_ptr<Subscription> const subscription_;
    Owner const owner_;
    std::mutex mutex_;  // guards what follows
    bool held_ = true;
    std::deque<Edge> edges_;
    ButtonEvents events_;
    std::deque<ButtonEvents::Event> ready_;
};

// The push button of the device and the feeds of all button_t. All is called with the device's lock held.
class ButtonDelivery {
public:
    explicit ButtonDelivery(Device& device) : device_(device) {}

    void add(std::shared_ptr<ButtonFeed> feed);
    void remove(std::shared_ptr<ButtonFeed> const& feed);
    // The interrupt line to which this variant of the device has its button wired.
    long line() const;
    // Each tells whether it changed anything.
    bool press();
    bool release();
    // Presses it now and releases it after `length`.
    bool press_for(Duration length);

    void describe(Properties& properties);

private:
    void tell(bool closes);

    Device& device_;
    std::vector<std::shared_ptr<ButtonFeed>> feeds_;
    Timeline::EventId release_event_ = 0;
};

}  // namespace sim
