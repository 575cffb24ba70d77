// The way of the device's events to one program's thread for them.
#include "sim/service/event_lane.h"

#include <algorithm>

#include "sim/service/objects.h"

namespace sim {

void EventLane::attach(Connection* connection) {
    connection_ = connection;
    running_.reset();
    repeats_ = false;
    passing_time_ = false;
    if (connection == nullptr) {
        queue_.clear();
        closed_ = true;
    }
    pump();
}

bool EventLane::post(Occurrence const& occurrence) {
    if (closed_ || !attached()) {
        return true;
    }
    if (queue_.size() == kLongestQueue) {
        return false;
    }
    queue_.push_back(occurrence);
    pump();
    return true;
}

void EventLane::forget(ServedObject const& object) {
    auto const is_its = [&](Occurrence const& occurrence) { return occurrence.object == &object; };
    queue_.erase(std::remove_if(queue_.begin(), queue_.end(), is_its), queue_.end());
}

void EventLane::drop(ServedObject const& object) {
    forget(object);
    if (runs(object)) {
        running_->object = nullptr;
    }
}

void EventLane::done(Done const& done) {
    if (!running_) {
        return;
    }
    Occurrence const finished = *running_;
    running_.reset();
    repeats_ = false;
    if (finished.object != nullptr) {
        finished.object->told(finished, done);
    }
    pump();
}

void EventLane::pump() {
    while (attached() && !running_ && !queue_.empty() && !closed_) {
        Occurrence const occurrence = queue_.front();
        queue_.pop_front();
        Event event{
            occurrence.kind, occurrence.object->number(), occurrence.index, {}, occurrence.object->is_watched()};
        if (!occurrence.object->prepare(occurrence, event)) {
            continue;
        }
        running_ = occurrence;
        running_->kind = event.kind;
        running_->index = event.index;
        // Where the program has gone, its connection's own thread notices.
        connection_->send_at_once(message_of(MessageKind::event, event));
    }
}

}  // namespace sim
