// The push button.
#include "hal/button.h"

#include <iterator>

#include "sim/library/call.h"
#include "sim/library/callbacks.h"

namespace hal {

using sim::call;
using sim::in;
using sim::out;
namespace operations = sim::operations;

namespace {

// What the device needs to know of the program's records to tell when they fire.
template <std::size_t N>
void describe(button_t::action_record const (&from)[N], sim::ButtonRecord (&to)[N]) {
    for (std::size_t i = 0; i < N; ++i) {
        to[i] = {from[i].hold_time_ms, static_cast<bool>(from[i].action)};
    }
}

}  // namespace

struct button_t::impl : sim::Object, sim::EventTaker {
    explicit impl(button_t const& owner) : button(owner) {}

    void take(sim::Event const& event, sim::EventTurn& turn) override {
        if (event.kind == sim::EventKind::contact_moved) {
            describe(button.press_records, turn.done.records.press);
            describe(button.release_records, turn.done.records.release);
            return;
        }
        bool const press = event.kind == sim::EventKind::press_record;
        auto const action = (press ? button.press_records : button.release_records)[event.index].action;
        if (action) {
            turn.call(action);
        }
    }

    button_t const& button;
};

button_t::button_t(char const* device, long line, bool active_low, unsigned long debounce_us) : impl_(new impl(*this)) {
    sim::open_lane(sim::Lane::button);
    sim::construct<operations::button_t::constructor>(*impl_, in(device, line, active_low, debounce_us));
    sim::attach(*impl_, *impl_);
}

button_t::~button_t() {
    sim::destroy<operations::button_t::destructor>(*impl_);
    sim::detach(*impl_);
    delete impl_;
}

int button_t::irq_callback_hold(bool hold) {
    return call<operations::button_t::irq_callback_hold>(impl_, in(hold));
}

int button_t::irq_read(bool& state) {
    return call<operations::button_t::irq_read>(impl_, out(state));
}

}  // namespace hal
