// The device's push button.
#pragma once

#include <functional>

namespace hal {

// Actions run on a thread of the library. They are held from construction until irq_callback_hold(false).
class button_t {
public:
    struct action_record {
        unsigned int hold_time_ms = 0;
        std::function<void()> action;  // empty: none
    };

    // `line` is the interrupt line on the GPIO chip `device`. `active_low` and `debounce_us` are handed to
    // the library; the console always passes true and 2000.
    button_t(char const* device, long line, bool active_low, unsigned long debounce_us);
    button_t(button_t const&) = delete;
    button_t& operator=(button_t const&) = delete;
    // Returns only when no action is running, unless it is called from one.
    ~button_t();

    // True holds the delivery of button events, false releases it. With true it returns only when no action
    // is running, unless it is called from one.
    int irq_callback_hold(bool hold);
    // The state of the interrupt line: true while the button is pressed.
    int irq_read(bool& state);

    // A press record fires while the button is held, at its hold time. Of the release records, the one with
    // the longest hold time not above the time held fires on release. To be set while events are held.
    action_record press_records[5];
    action_record release_records[5];

private:
    struct impl;
    impl* impl_;
};

}  // namespace hal
