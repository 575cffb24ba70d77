// What the function that answers an operation works on.
#include "sim/service/target.h"

namespace sim {

// The clock waits for a callback, but not while that waits for the clock: it stops when the callback's time has come.
void CallContext::pass(Duration length) {
    auto const ended = [this] { return program.ended(); };
    if (lane_ == nullptr) {
        device.pass(length, {}, ended);
        return;
    }
    lane_->set_passing_time(length > Duration(0));
    program.device().notify();
    auto const arrived = [this] {
        auto const access = program.device().access();
        lane_->set_passing_time(false);
    };
    device.pass(length, arrived, ended);
    lane_->set_passing_time(false);
}

void CallContext::silence(ServedObject& object) {
    EventLane* const callbacks = object.lane();
    if (callbacks == nullptr) {
        return;
    }
    callbacks->forget(object);
    wait_for(*callbacks, [&](ServedObject const& running) { return &running == &object; });
}

void CallContext::silence_all(GyroObject& gyro) {
    gyro.hold(true);
    wait_for(*gyro.lane(), [&](ServedObject const& running) { return &running == &gyro || gyro.has(running); });
}

void CallContext::wait_for(EventLane& callbacks, std::function<bool(ServedObject const&)> const& is_concerned) {
    if (&callbacks != lane_) {
        device.wait_until([&] {
            callbacks.look();
            auto const& running = callbacks.running();
            return !running || running->object == nullptr || !is_concerned(*running->object);
        });
    }
}

}  // namespace sim
