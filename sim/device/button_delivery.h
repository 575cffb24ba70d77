// The push button of the device and the programs that watch its interrupt line.
#pragma once

#include <deque>
#include <vector>

#include "sim/core/timeline.h"
#include "sim/models/button.h"

namespace sim {

class Device;
class Nodes;

// Somebody who is told when the contact moves, with the device's lock held: it only takes note.
class ContactListener {
public:
    virtual ~ContactListener() = default;
    // `when` is the time of the edge itself. The contact stays as it is now for `lasts`, kLongestDuration where that
    // is not known.
    virtual void contact_moved(Time when, bool closes, Duration lasts) = 0;
};

// All is called with the device's lock held.
class ButtonDelivery {
public:
    // Called once, before all else. `device` must outlive this.
    void start(Device& device) { device_ = &device; }
    void add(ContactListener& listener) { listeners_.push_back(&listener); }
    void remove(ContactListener& listener);
    std::size_t listeners() const { return listeners_.size(); }

    PushButton const& button() const { return button_; }
    // Each tells whether it changed anything. A release ends also a press of press_for().
    bool press(Time now);
    bool release(Time now);
    // Presses it now and releases it after `length`. The contact bounces both times: it goes back for `bounce`, after
    // it has been for as long where it went. `length` must be more than twice that.
    bool press_for(Time now, Duration length, Duration bounce);

private:
    struct Move {
        Time due;
        bool closes;
    };

    void carry_out(Move const& move);
    void make_moves(Time now);

    Device* device_ = nullptr;
    PushButton button_;
    std::vector<ContactListener*> listeners_;
    std::deque<Move> moves_;  // that are still to come
    Timeline::EventId event_ = 0;
};

// The interrupt line to which this variant of the device has its button wired.
long button_line(Nodes const& nodes);

}  // namespace sim
