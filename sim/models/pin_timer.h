// The delays and the pulse of one digital I/O pin: how its state follows its signal in time.
#pragma once

#include <optional>

#include "sim/core/clock.h"

namespace sim {

// What is absent has no effect.
struct PinTiming {
    std::optional<Duration> on_delay;   // the signal must be on for so long before the state is
    std::optional<Duration> off_delay;  // the state stays on for so long after the signal
    std::optional<Duration> pulse;      // the state is on for exactly so long, whatever the signal does meanwhile
};

// Times given to it never go backwards. What is due must have been carried out (change()) before the next signal.
class PinTimer {
public:
    // Takes the signal as having been there for ever: nothing is pending, and a pulse is long over.
    void reset(PinTiming const& timing, bool signal);
    void set_signal(bool signal, Time now);

    bool state() const { return state_; }
    // When the state changes by itself.
    std::optional<Time> next_change() const { return due_; }
    // Carries that change out.
    void change();

    // Whether it is what `earlier` was a period ago: the same follows at the same distance.
    bool repeats(PinTimer const& earlier, Duration period) const;
    // What is due comes so much later.
    void postpone(Duration length);

private:
    void follow_signal(Time now);
    void set_state(bool state, Time now);

    PinTiming timing_;
    bool signal_ = false;
    bool state_ = false;
    std::optional<Time> due_;
};

}  // namespace sim
