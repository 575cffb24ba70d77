// What supplies the device.
#pragma once

namespace sim {

// The digital I/O has power from the 24 V alone.
enum class Supply { dc_24v, poe };

// "24v", "poe".
constexpr char const* name_of(Supply supply) {
    return supply == Supply::dc_24v ? "24v" : "poe";
}

}  // namespace sim
