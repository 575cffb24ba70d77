// The virtual device: its components, the one lock before them, and its clock.
#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

#include "sim/core/fair_mutex.h"
#include "sim/core/timeline.h"
#include "sim/device/button_delivery.h"
#include "sim/device/faults.h"
#include "sim/device/journal.h"
#include "sim/device/nodes.h"
#include "sim/device/observers.h"
#include "sim/device/properties.h"
#include "sim/device/sample_delivery.h"
#include "sim/models/autofocus.h"
#include "sim/models/illumination.h"
#include "sim/models/image_sensor.h"
#include "sim/models/module_info.h"
#include "sim/models/ranging.h"
#include "sim/models/real_time_unit.h"
#include "sim/models/sensor_hub.h"
#include "sim/models/system_state.h"

namespace sim {

// All that the device consists of. Reached through Device::Access alone.
struct Components {
    Components(std::unique_ptr<FileSystem> files, Timeline& timeline);

    // Null for none.
    ImageSensor* sensor(hal::imx_te type);
    // Brings every model up to the time: the real-time unit and all that follows its triggers, the motor,
    // and the sensor hub where nobody listens to it.
    void advance(Time to);
    void describe(Properties& all);

    // Off, the modules forget all that they do not keep in a memory of their own, and answer no operation. What
    // surrounds the device, and what was set by hand to break it, stays.
    void set_power(bool on);
    bool powered() const { return powered_; }
    // How often the power has been set: what takes time finds another number where it went meanwhile.
    unsigned long power_changes() const { return power_changes_; }

    Time now{0};                   // to which they have been brought
    unsigned int last_object = 0;  // number of the last object that a program constructed
    Properties properties;
    Nodes nodes;
    FaultRules faults;
    Journal journal;
    Observers observers;
    SystemState system;
    ModuleInfo modules;
    RealTimeUnit rtu;
    ImageSensor imx296{imx296_facts()};
    ImageSensor imx567{imx567_facts()};
    Illumination illumination;
    Autofocus autofocus;
    Ranging ranging;
    SensorHub hub;
    SampleDelivery samples{hub};
    ButtonDelivery presses;
    Timeline& timeline;

private:
    bool powered_ = true;
    unsigned long power_changes_ = 0;
};

class Device {
public:
    explicit Device(std::unique_ptr<FileSystem> files);
    Device(Device const&) = delete;
    Device& operator=(Device const&) = delete;
    ~Device() { timeline.stop(); }

    // Guards itself. No event of it runs with the lock held.
    Timeline timeline;

    class Access;
    // Blocks until nobody else has it.
    Access access();
    // Wakes those who wait in Access::wait_until.
    void notify() { changed_.notify_all(); }

private:
    FairMutex mutex_;
    std::condition_variable_any changed_;
    Components components_;
};

// The lock: who holds one has the device to himself. Its models are up to the time at which it was taken, which is the
// time of all that is done with it; what then falls due is set when it is given back.
class Device::Access {
public:
    explicit Access(Device& device);
    Access(Access const&) = delete;
    Access& operator=(Access const&) = delete;
    ~Access();

    Components* operator->() const { return &device_.components_; }
    Components& operator*() const { return device_.components_; }
    Time now() const { return device_.components_.now; }

    // Lets time pass, and others have the device meanwhile. Nothing that was read before need still hold. `arrived` and
    // `given_up` are for the timeline.
    void pass(Duration length, std::function<void()> const& arrived = {}, std::function<bool()> const& given_up = {});
    // The same until `done`, which is looked at whenever Device::notify() was called.
    void wait_until(std::function<bool()> const& done);
    // At most for `longest` of the host's time; what `done` says then.
    bool wait_until(std::function<bool()> const& done, std::chrono::milliseconds longest);

private:
    void arrive();
    void leave();

    Device& device_;
    std::unique_lock<FairMutex> lock_;
};

}  // namespace sim
