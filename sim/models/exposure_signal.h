// The exposure signal: what the real-time unit tells the light.
#pragma once

namespace sim {

struct ExposureSignal {
    double rate;           // Hz, at which exposures come; 0: none comes
    unsigned int time_us;  // of one exposure
};

inline bool operator==(ExposureSignal const& one, ExposureSignal const& other) {
    return one.rate == other.rate && one.time_us == other.time_us;
}

}  // namespace sim
