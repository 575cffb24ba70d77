// The way of the device's events to one program's thread for them.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <utility>

#include "sim/calls/connection.h"
#include "sim/calls/event_progress.h"
#include "sim/models/sensor_hub.h"

namespace sim {

class ServedObject;

// Something that an object of the program may have to be told of.
struct Occurrence {
    ServedObject* object;
    EventKind kind;
    std::uint8_t index;
    SensorHub::Sample sample;
};

// Keeps what happens until the program's thread is free, and tells it of one thing at a time. All is called with the
// device's lock held.
class EventLane {
public:
    // The program's thread is there, or has gone (null).
    void attach(Connection* connection, EventProgress progress = {});
    bool attached() const { return connection_ != nullptr; }
    // Where nobody is there to be told, an occurrence is over. Beyond kLongestQueue it is dropped; false then.
    bool post(Occurrence const& occurrence);
    // Forgets what waits to be told of the object, with the rest of what the program is just being told.
    void forget(ServedObject const& object);
    // Forgets the object, also where the program is just being told of it.
    void drop(ServedObject const& object);

    // The program's thread says that it is ready for more.
    void done(Done const& done);

    // Looks whether the program's thread is done with what it has been told of. Where it is not, done() will be called:
    // so whoever looks is let know.
    void look();
    // What the program's thread has been told of and, when last looked, was not done with.
    std::optional<Occurrence> const& running() const { return running_; }
    bool runs(ServedObject const& object) const { return running_ && running_->object == &object; }
    // Null where there is none, and where the object has gone meanwhile.
    ServedObject* running_object() const { return running_ ? running_->object : nullptr; }
    bool at_rest() {
        look();
        return (!running_ && queue_.empty()) || passing_time_;
    }
    // That the callback which runs is made once more; whether it was to be, which is then forgotten.
    void repeat() { repeats_ = true; }
    bool take_repeat() { return std::exchange(repeats_, false); }
    // Whether the callback that runs has asked for something that takes the device's time.
    void set_passing_time(bool passing) { passing_time_ = passing; }
    // No event any more.
    void close() {
        closed_ = true;
        forgets_rest_ = true;
        queue_.clear();
    }

private:
    static constexpr std::size_t kLongestQueue = 4096;

    void pump();
    void finish(Done const& done);

    Connection* connection_ = nullptr;
    EventProgress progress_;
    std::deque<Occurrence> queue_;
    std::optional<Occurrence> running_;
    bool forgets_rest_ = false;  // of what runs
    bool passing_time_ = false;
    bool repeats_ = false;
    bool closed_ = false;
};

}  // namespace sim
