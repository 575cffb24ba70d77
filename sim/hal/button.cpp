// The push button.
#include "hal/button.h"

#include "sim/hal/gate.h"

namespace hal {

using sim::construct;
using sim::destroy;
using sim::Device;
using sim::gate;
using sim::in;
using sim::no_model;
using sim::out;

struct button_t::impl : sim::Object {
    using Object::Object;
};

button_t::button_t(char const* device, long line, bool active_low, unsigned long debounce_us)
    : impl_(new impl({device})) {
    construct(*impl_, "button_t::button_t", in(device, line, active_low, debounce_us));
}

button_t::~button_t() {
    destroy(*impl_, "button_t::~button_t");
    delete impl_;
}

int button_t::irq_callback_hold(bool hold) {
    return gate(impl_, "button_t::irq_callback_hold", in(hold), [](Device&) { return no_model(); });
}

int button_t::irq_read(bool& state) {
    return gate(impl_, "button_t::irq_read", out(state), [](Device&, auto&) { return no_model(); });
}

}  // namespace hal
