// The device's time: how it follows the host's steady clock, or a hand that steps it.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace sim {

// Time since the device started, and a length of it. Resolution: one microsecond.
using Time = std::chrono::microseconds;
using Duration = std::chrono::microseconds;

// Which way the time passes. A plain value without a lock: core/timeline.h keeps the device's clock.
// Stepped at first, at 0; a change of mode keeps the time that has been reached.
class Clock {
public:
    using HostTime = std::chrono::steady_clock::time_point;
    enum class Mode { real, scaled, stepped };

    explicit Clock(HostTime host) : host_origin_(host) {}

    Time now(HostTime host) const;
    // When `time` comes, on the host's clock; nothing while the clock is stepped by hand.
    std::optional<HostTime> host_time(Time time) const;

    void run_real(HostTime host);
    // `factor` device seconds pass in one second of the host; above 0.
    void run_scaled(HostTime host, double factor);
    void run_stepped(HostTime host);
    // Only while stepped; never backwards.
    void advance_to(Time time);

    Mode mode() const { return mode_; }
    // As the control grammar writes it: "real", "scaled 10", "stepped".
    std::string setting() const;

private:
    void restart(HostTime host, Mode mode, double factor);

    Mode mode_ = Mode::stepped;
    double factor_ = 1.0;
    HostTime host_origin_;
    Time origin_{0};
};

// So that a device that triggers all the while keeps up, and no sum of times overflows.
constexpr Duration kLongestDuration = std::chrono::hours(24);

// "3s", "250ms", "10us", "5min", "2h", also with decimals as in "1.5s"; nothing for any other text, for one with a
// sign, or beyond kLongestDuration.
std::optional<Duration> parse_duration(std::string_view text);
// Seconds with six decimals, as the journal writes them.
std::string seconds(Time time);

}  // namespace sim
