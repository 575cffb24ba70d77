// The push button: its contact, and what an observer of its interrupt line makes of a press.
#include "sim/models/button.h"

#include <algorithm>

namespace sim {

bool PushButton::press(Time now) {
    if (pressed_since_) {
        return false;
    }
    pressed_since_ = now;
    return true;
}

bool PushButton::release() {
    bool const was_pressed = pressed_since_.has_value();
    pressed_since_.reset();
    return was_pressed;
}

bool Debounce::passes(bool closes, Duration lasts) {
    if (lasts < time_ || closes == closed_) {
        return false;
    }
    closed_ = closes;
    return true;
}

void ButtonEvents::press(Time now, Records const& press_records) {
    pressed_at_ = now;
    due_.clear();
    for (std::size_t i = 0; i < kRecords; ++i) {
        if (press_records[i].has_action) {
            due_.push_back({now + std::max(press_records[i].hold_time, debounce_), i});
        }
    }
    std::stable_sort(due_.begin(), due_.end(), [](Due const& a, Due const& b) { return a.time < b.time; });
}

std::optional<Time> ButtonEvents::next_due() const {
    return due_.empty() ? std::nullopt : std::optional<Time>(due_.front().time);
}

std::vector<ButtonEvents::Event> ButtonEvents::advance(Time now) {
    auto const end = std::find_if(due_.begin(), due_.end(), [now](Due const& due) { return due.time > now; });
    std::vector<Event> events;
    std::for_each(due_.begin(), end, [&](Due const& due) { events.push_back({true, due.index}); });
    due_.erase(due_.begin(), end);
    return events;
}

std::vector<ButtonEvents::Event> ButtonEvents::release(Time now, Records const& release_records) {
    std::vector<Event> events = advance(now);
    due_.clear();
    if (!pressed_at_) {
        return events;
    }
    Duration const held = now - *pressed_at_;
    pressed_at_.reset();
    Record const* fitting = nullptr;
    for (Record const& record : release_records) {
        bool const set = record.has_action || record.hold_time > Duration(0);
        bool const fits = set && held >= debounce_ && record.hold_time <= held;
        if (fits && (fitting == nullptr || record.hold_time > fitting->hold_time)) {
            fitting = &record;
        }
    }
    if (fitting != nullptr && fitting->has_action) {
        events.push_back({false, static_cast<std::size_t>(fitting - release_records)});
    }
    return events;
}

void ButtonEvents::reset() {
    pressed_at_.reset();
    due_.clear();
}

}  // namespace sim
