// The device's time: how it follows the host's steady clock, or a hand that steps it.
#include "sim/core/clock.h"

#include <array>
#include <cmath>
#include <cstdio>

#include "sim/core/numbers.h"

namespace sim {

namespace {

struct Unit {
    std::string_view name;
    double microseconds;
};

// "ms" and "us" before "s", their last letter.
constexpr std::array<Unit, 5> kUnits{{{"ms", 1e3}, {"us", 1.0}, {"s", 1e6}, {"min", 60e6}, {"h", 3600e6}}};

bool ends_with(std::string_view text, std::string_view end) {
    return text.size() > end.size() && text.substr(text.size() - end.size()) == end;
}

}  // namespace

Time Clock::now(HostTime host) const {
    if (mode_ == Mode::stepped) {
        return origin_;
    }
    std::chrono::duration<double, std::micro> const passed = (host - host_origin_) * factor_;
    return origin_ + std::chrono::duration_cast<Time>(passed);
}

std::optional<Clock::HostTime> Clock::host_time(Time time) const {
    if (mode_ == Mode::stepped) {
        return std::nullopt;
    }
    std::chrono::duration<double, std::micro> const left = (time - origin_) / factor_;
    // One microsecond more, so that the time has surely come when the host's clock shows the result.
    return host_origin_ + std::chrono::duration_cast<HostTime::duration>(left) + std::chrono::microseconds(1);
}

void Clock::run_real(HostTime host) {
    restart(host, Mode::real, 1.0);
}

void Clock::run_scaled(HostTime host, double factor) {
    restart(host, Mode::scaled, factor);
}

void Clock::run_stepped(HostTime host) {
    restart(host, Mode::stepped, 1.0);
}

void Clock::advance_to(Time time) {
    if (time > origin_) {
        origin_ = time;
    }
}

std::string Clock::setting() const {
    switch (mode_) {
        case Mode::real:
            return "real";
        case Mode::scaled:
            return "scaled " + number_text(factor_);
        case Mode::stepped:
            break;
    }
    return "stepped";
}

void Clock::restart(HostTime host, Mode mode, double factor) {
    origin_ = now(host);
    host_origin_ = host;
    mode_ = mode;
    factor_ = factor;
}

std::optional<Duration> parse_duration(std::string_view text) {
    for (Unit const& unit : kUnits) {
        if (!ends_with(text, unit.name)) {
            continue;
        }
        auto const number = parse_float(text.substr(0, text.size() - unit.name.size()));
        if (!number || text.front() == '+' || text.front() == '-' ||
            *number * unit.microseconds > static_cast<double>(kLongestDuration.count())) {
            return std::nullopt;
        }
        return Duration(std::llround(*number * unit.microseconds));
    }
    return std::nullopt;
}

std::string seconds(Time time) {
    std::array<char, 32> text{};
    auto const microseconds = static_cast<long long>(time.count());
    std::snprintf(text.data(), text.size(), "%lld.%06lld", microseconds / 1000000, microseconds % 1000000);
    return text.data();
}

}  // namespace sim
