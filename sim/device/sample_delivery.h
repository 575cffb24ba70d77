// The way from the sensor hub to the programs that listen to it.
#pragma once

#include <optional>
#include <vector>

#include "sim/core/timeline.h"
#include "sim/models/sensor_hub.h"

namespace sim {

class Device;

// Somebody who is told of each sample when it is delivered, with the device's lock held: it only takes note.
class SampleListener {
public:
    virtual ~SampleListener() = default;
    // Whether it has read the hub for it, with its interrupt.
    virtual bool take(SensorHub::Sample const& sample) = 0;
    // False: it would do nothing with any.
    virtual bool listens() const = 0;
};

// All is called with the device's lock held.
class SampleDelivery {
public:
    explicit SampleDelivery(SensorHub& hub) : hub_(hub) {}

    // Called once, before all else. `device` must outlive this.
    void start(Device& device) { device_ = &device; }
    void add(SampleListener& listener) { listeners_.push_back(&listener); }
    void remove(SampleListener& listener);
    std::size_t listeners() const { return listeners_.size(); }
    // To be called whenever the hub's next delivery may have changed, or whether somebody listens.
    void schedule();
    // Passes over what is due where nobody listens, for which no event is set. To be called before anything else that
    // is done at that time.
    void pass_unheard(Time now);

private:
    bool somebody_listens() const;
    void deliver();

    SensorHub& hub_;
    Device* device_ = nullptr;
    std::vector<SampleListener*> listeners_;
    std::optional<Time> due_;  // of the event that is set
    Timeline::EventId event_ = 0;
};

}  // namespace sim
