// The threads of the library that run the program's callbacks.
#pragma once

#include <functional>

#include "sim/calls/connection.h"
#include "sim/library/object.h"

namespace sim {

// What an event does in the library, in its thread.
class EventTurn {
public:
    explicit EventTurn(bool announced) : announced_(announced) {}

    // Calls a function of the program, once, or as often as a fault rule of the device's will have it. Where the device
    // wants that, each call is announced before: the device has it in its journal then. `function` must not need its
    // object, which it may destroy.
    void call(std::function<void()> const& function);
    // Whether call() announces.
    bool announced() const { return announced_; }

    Done done{};  // what the device is answered

private:
    bool const announced_;
};

// An object with callbacks.
class EventTaker {
public:
    virtual ~EventTaker() = default;
    // Called on the thread of its lane. What it reads of its object it must read before it calls the user's function,
    // which may destroy the object.
    virtual void take(Event const& event, EventTurn& turn) = 0;
};

// Starts the lane's thread, if it does not run yet. Before the object is constructed on the device.
void open_lane(Lane lane);
// From now on events of the object go to `taker`. Before the object has any.
void attach(Object const& object, EventTaker& taker);
// The object has been destroyed on the device, so there are none any more. Where the device has gone, a callback may
// still run: returns when it has, unless it is called from one.
void detach(Object const& object);

}  // namespace sim
