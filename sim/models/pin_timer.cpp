// The delays and the pulse of one digital I/O pin: how its state follows its signal in time.
#include "sim/models/pin_timer.h"

namespace sim {

void PinTimer::reset(PinTiming const& timing, bool signal) {
    timing_ = timing;
    signal_ = signal;
    state_ = signal && !timing.pulse;
    due_.reset();
}

void PinTimer::set_signal(bool signal, Time now) {
    if (signal == signal_) {
        return;
    }
    signal_ = signal;
    bool const pulse_runs = timing_.pulse && state_;
    if (!pulse_runs) {
        follow_signal(now);
    }
}

void PinTimer::change() {
    Time const now = *due_;
    set_state(!state_, now);
}

bool PinTimer::repeats(PinTimer const& earlier, Duration period) const {
    bool const same_due = due_.has_value() == earlier.due_.has_value() && (!due_ || *due_ == *earlier.due_ + period);
    return signal_ == earlier.signal_ && state_ == earlier.state_ && same_due;
}

void PinTimer::postpone(Duration length) {
    if (due_) {
        *due_ += length;
    }
}

void PinTimer::follow_signal(Time now) {
    due_.reset();
    if (signal_ == state_) {
        return;  // the signal went back before its delay was over
    }
    std::optional<Duration> const& delay = signal_ ? timing_.on_delay : timing_.off_delay;
    if (delay) {
        due_ = now + *delay;
    } else {
        set_state(signal_, now);
    }
}

void PinTimer::set_state(bool state, Time now) {
    state_ = state;
    due_.reset();
    if (state && timing_.pulse) {
        due_ = now + *timing_.pulse;
    }
}

}  // namespace sim
