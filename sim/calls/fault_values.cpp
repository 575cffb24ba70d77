// Results of an operation out of the values of a fault rule.
#include "sim/calls/fault_values.h"

namespace sim {

std::uint64_t FaultValues::whole(long double value) {
    constexpr long double kMax = 18446744073709551615.0L;
    constexpr long double kMin = -9223372036854775808.0L;
    if (value < 0) {
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(value < kMin ? kMin : value));
    }
    return static_cast<std::uint64_t>(value > kMax ? kMax : value);
}

}  // namespace sim
