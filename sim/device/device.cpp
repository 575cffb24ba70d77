// The virtual device: its components, the one lock before them, and its clock.
#include "sim/device/device.h"

#include "sim/device/describe.h"

namespace sim {

Components::Components(std::unique_ptr<FileSystem> files, Timeline& device_timeline)
    : nodes(std::move(files)), timeline(device_timeline) {
    rtu.follow_signal([this](Time until, ExposureSignal const& signal) { illumination.advance(until, signal); });
    describe(properties);
}

ImageSensor* Components::sensor(hal::imx_te type) {
    for (ImageSensor* const sensor : {&imx296, &imx567}) {
        if (sensor->facts().type == type) {
            return sensor;
        }
    }
    return nullptr;
}

void Components::advance(Time to) {
    now = to;
    rtu.advance(now, sensor(nodes.fitted_sensor()));
    illumination.advance(now, rtu.exposure_signal());
    autofocus.advance(now);
    samples.pass_unheard(now);
}

void Components::set_power(bool on) {
    powered_ = on;
    ++power_changes_;
    // Also when it comes: what was set by hand meanwhile, or triggered from outside, met nobody.
    system.lose_power();
    rtu.lose_power();
    imx296.lose_power();
    imx567.lose_power();
    illumination.lose_power();
    autofocus.lose_power();
    ranging.lose_power();
    hub.reset();
    if (on) {
        rtu.gain_power();
        autofocus.gain_power();
    }
}

void Components::describe(Properties& all) {
    auto const time = [this] { return now; };
    all.add("clock.time", About("time since the start", "s"),
            [this] { return static_cast<double>(now.count()) / 1e6; });
    all.add("clock.mode", "how the time passes", [this] { return timeline.clock_setting(); });
    all.add("power", "whether the device has power", [this] { return powered_; });
    all.add("camera.fitted", About("fitted image sensor").among(imager_choices()),
            [this] { return nodes.fitted_sensor(); });
    sim::describe(all, system, time);
    sim::describe(all, modules);
    sim::describe(all, rtu);
    sim::describe(all, imx296);
    sim::describe(all, imx567);
    sim::describe(all, illumination);
    sim::describe(all, autofocus);
    all.add("autofocus.doe.active", "whether it shines now", [this] { return autofocus.doe_active(rtu.exposing()); });
    sim::describe(all, ranging);
    sim::describe(all, hub, time);
    all.add("button.pressed", "whether the button is pressed", [this] { return presses.button().pressed(); });
    all.add("button.held", About("how long it has been held; 0: not pressed", "s"),
            [this] { return static_cast<double>(presses.button().held(now).count()) / 1e6; });
    all.add("button.line", "interrupt line that it is wired to", [this] { return button_line(nodes); });
}

Device::Device(std::unique_ptr<FileSystem> files) : components_(std::move(files), timeline) {
    components_.samples.start(*this);
    components_.presses.start(*this);
}

Device::Access Device::access() {
    return Access(*this);
}

Device::Access::Access(Device& device) : device_(device), lock_(device.mutex_) {
    arrive();
}

Device::Access::~Access() {
    leave();
}

void Device::Access::arrive() {
    device_.components_.advance(device_.timeline.now());
}

void Device::Access::leave() {
    device_.components_.observers.look(now());
    device_.components_.samples.schedule();
}

void Device::Access::pass(Duration length, std::function<void()> const& arrived,
                          std::function<bool()> const& given_up) {
    // Begun with the lock held: who is let on by others who take it does not find the clock beyond that time.
    auto const taking = device_.timeline.begin_taking(length, arrived);
    leave();
    lock_.unlock();
    device_.timeline.finish_taking(*taking, given_up);
    lock_.lock();
    arrive();
}

void Device::Access::wait_until(std::function<bool()> const& done) {
    leave();
    device_.changed_.wait(lock_, done);
    arrive();
}

bool Device::Access::wait_until(std::function<bool()> const& done, std::chrono::milliseconds longest) {
    leave();
    bool const is_done = device_.changed_.wait_for(lock_, longest, done);
    arrive();
    return is_done;
}

}  // namespace sim
