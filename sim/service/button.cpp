// The push button.
#include <algorithm>

#include "sim/service/handlers.h"

namespace sim {

namespace {

using ButtonTarget = CallTarget<ButtonObject>;

}  // namespace

int handlers::button_t::constructor(ButtonTarget& t, Text const& chip, long line, bool, unsigned long debounce_us) {
    auto const longest = static_cast<unsigned long>(kLongestDuration.count());
    return t.construct<ButtonObject>(chip, line, Duration(std::min(debounce_us, longest)));
}

int handlers::button_t::destructor(ButtonTarget& t) {
    t.object->hold(true);
    t.call.silence(*t.object);
    return 0;
}

int handlers::button_t::irq_callback_hold(ButtonTarget& t, bool hold) {
    t.object->hold(hold);
    if (hold) {
        t.call.silence(*t.object);
    }
    return 0;
}

int handlers::button_t::irq_read(ButtonTarget& t, bool& pressed) {
    pressed = t.object->sees_button() && t->presses.button().pressed();
    return 0;
}

}  // namespace sim
