// The way of the device's events to one program's thread for them.
#include "sim/service/event_lane.h"

#include <algorithm>

#include "sim/service/objects.h"

namespace sim {

void EventLane::attach(Connection* connection, EventProgress progress) {
    connection_ = connection;
    progress_ = std::move(progress);
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
    forgets_rest_ = forgets_rest_ || runs(object);
}

void EventLane::drop(ServedObject const& object) {
    forget(object);
    if (runs(object)) {
        running_->object = nullptr;
    }
}

void EventLane::done(Done const& done) {
    if (running_) {
        finish(done);
        pump();
    }
}

void EventLane::look() {
    if (running_ && progress_.is_over()) {
        finish({});
    }
}

void EventLane::finish(Done const& done) {
    Occurrence finished = *running_;
    running_.reset();
    repeats_ = false;
    if (finished.object == nullptr) {
        return;
    }
    finished.object->told(finished, done);
    if (finished.kind == EventKind::sample_for_records && done.next_record != 0 && !forgets_rest_) {
        finished.index = done.next_record;
        queue_.push_front(finished);
    }
}

void EventLane::pump() {
    while (attached() && !queue_.empty() && !closed_) {
        look();
        if (running_) {
            return;
        }
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
        forgets_rest_ = false;
        progress_.begin();
        // Where the program has gone, its connection's own thread notices.
        connection_->send_at_once(message_of(MessageKind::event, event));
    }
}

}  // namespace sim
