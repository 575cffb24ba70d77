// The virtual device: its whole state, one lock and one clock.
#pragma once

#include <memory>
#include <mutex>

#include "sim/core/timeline.h"
#include "sim/device/button_feed.h"
#include "sim/device/faults.h"
#include "sim/device/journal.h"
#include "sim/device/nodes.h"
#include "sim/device/properties.h"
#include "sim/device/sample_feed.h"
#include "sim/models/autofocus.h"
#include "sim/models/button.h"
#include "sim/models/illumination.h"
#include "sim/models/image_sensor.h"
#include "sim/models/module_info.h"
#include "sim/models/ranging.h"
#include "sim/models/real_time_unit.h"
#include "sim/models/sensor_hub.h"
#include "sim/models/system_state.h"

namespace sim {

// The members below `lock` are touched with the lock held only; `timeline` and `journal` guard themselves.
class Device {
public:
    explicit Device(std::unique_ptr<FileSystem> files);
    Device(Device const&) = delete;
    Device& operator=(Device const&) = delete;
    ~Device() { timeline.stop(); }

    // The device of this process. It is never destroyed: exit() may come from any menu while threads run.
    static Device& instance();

    Timeline timeline;
    Journal journal;

    using Lock = std::unique_lock<std::mutex>;
    Lock lock() { return Lock(mutex_); }

    Properties properties;
    Nodes nodes;
    FaultRules faults;
    SystemState system;
    ModuleInfo modules;
    RealTimeUnit rtu;
    ImageSensor imx296{imx296_facts()};
    ImageSensor imx567{imx567_facts()};
    Illumination illumination;
    Autofocus autofocus;
    Ranging ranging;
    SensorHub hub;
    PushButton button;
    SampleDelivery samples{*this};
    ButtonDelivery presses{*this};

    Time now() const { return timeline.now(); }
    // Brings every model up to the present.
    void advance();
    // Brings the real-time unit and all that follows its triggers up to the present: the sensors, of which the fitted
    // one takes the frames, and the illumination.
    void advance_imaging();
    // Null for none.
    ImageSensor* sensor(hal::imx_te type);

    // Called with the lock held, once: does `work` without it.
    template <typename Work>
    void unlocked(Work work) {
        mutex_.unlock();
        work();
        mutex_.lock();
    }
    // Called with the lock held, once: lets `length` pass without it. For operations that take time.
    void take_time(Duration length) {
        unlocked([&] { timeline.take_time(length); });
    }

private:
    void describe();

    std::mutex mutex_;
};

}  // namespace sim
