// The push button.
#include "hal/button.h"

#include "sim/device/button_feed.h"
#include "sim/library/gate.h"
#include "sim/library/subscribe.h"

namespace hal {

using sim::construct;
using sim::destroy;
using sim::Device;
using sim::gate;
using sim::in;
using sim::out;

struct button_t::impl : sim::Object {
    using Object::Object;

    // Whether the button is on the object's line. Device's lock held.
    bool sees_button() const { return ready() && line == Device::instance().presses.line(); }

    long line = 0;
    std::shared_ptr<sim::ButtonFeed> feed;
};

button_t::button_t(char const* device, long line, bool active_low, unsigned long debounce_us)
    : impl_(new impl({device})) {
    construct(*impl_, "button_t::button_t", in(device, line, active_low, debounce_us));
    impl_->line = line;
    auto const note = [number = impl_->number](sim::ButtonEvents::Event event) {
        sim::journal_callback(number, event.press ? "button_t::press_records" : "button_t::release_records",
                              in(event.index));
    };
    impl_->feed = std::make_shared<sim::ButtonFeed>(
        Device::instance().timeline, sim::subscribe(true),
        sim::ButtonFeed::Owner{this, [object = impl_] { return object->sees_button(); }, note},
        sim::Duration(debounce_us));
    auto const lock = Device::instance().lock();
    Device::instance().presses.add(impl_->feed);
}

button_t::~button_t() {
    impl_->feed->close();
    {
        auto const lock = Device::instance().lock();
        Device::instance().presses.remove(impl_->feed);
    }
    destroy(*impl_, "button_t::~button_t");
    delete impl_;
}

int button_t::irq_callback_hold(bool hold) {
    return gate(impl_, "button_t::irq_callback_hold", in(hold), [&](Device& d) {
        d.unlocked([&] { impl_->feed->hold(hold); });
        return 0;
    });
}

int button_t::irq_read(bool& state) {
    return gate(impl_, "button_t::irq_read", out(state), [&](Device& d, auto& pressed) {
        pressed = impl_->sees_button() && d.button.pressed();
        return 0;
    });
}

}  // namespace hal
