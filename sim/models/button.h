// The push button: its contact, and what an observer of its interrupt line makes of a press.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "sim/core/clock.h"

namespace sim {

// The contact. Which of the two interrupt lines it is wired to is the device variant's.
class PushButton {
public:
    static constexpr long kR47Line = 82;
    static constexpr long kOtherLine = 44;

    // Each tells whether it changed anything.
    bool press(Time now);
    bool release();

    bool pressed() const { return pressed_since_.has_value(); }
    // 0 while it is not pressed.
    Duration held(Time now) const { return pressed_since_ ? now - *pressed_since_ : Duration(0); }

private:
    std::optional<Time> pressed_since_;
};

// What an observer sees of the contact: neither openings nor closings that are shorter than the debounce time.
class Debounce {
public:
    explicit Debounce(Duration time) : time_(time) {}

    // The contact moves, and stays so for `lasts`. Whether the observer sees it move.
    bool passes(bool closes, Duration lasts);
    // As at first: it takes the contact for open.
    void reset() { closed_ = false; }

private:
    Duration time_;
    bool closed_ = false;
};

// One observer's records and the events they make. A press shorter than the debounce time is not seen.
class ButtonEvents {
public:
    static constexpr std::size_t kRecords = 5;

    struct Record {
        Duration hold_time{0};
        bool has_action = false;
    };
    struct Event {
        bool press;         // of a press record, not a release record
        std::size_t index;  // of the record
    };
    using Records = Record[kRecords];

    explicit ButtonEvents(Duration debounce) : debounce_(debounce) {}

    // The contact closes. The records hold for this press.
    void press(Time now, Records const& press_records);
    // When the next press record fires, if any does.
    std::optional<Time> next_due() const;
    // The press records that fire up to now, in the order of their hold times; each fires once a press.
    std::vector<Event> advance(Time now);
    // The contact opens: press records that are still to fire up to now, then the release record that fits.
    std::vector<Event> release(Time now, Records const& release_records);
    // Forgets the press.
    void reset();

private:
    struct Due {
        Time time;
        std::size_t index;
    };

    Duration debounce_;
    std::optional<Time> pressed_at_;
    std::vector<Due> due_;  // in the order of time
};

}  // namespace sim
