// Arguments and results of operations as the journal writes them, and from the values of a fault rule.
#include "sim/library/text.h"

#include <array>
#include <cstdio>

namespace sim {

std::string quoted(std::string const& text) {
    std::string quoted = "\"";
    for (char const c : text) {
        auto const byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (c == '\n') {
            quoted += "\\n";
        } else if (byte < 0x20 || byte >= 0x7F) {
            std::array<char, 8> code{};
            std::snprintf(code.data(), code.size(), "\\x%02X", static_cast<unsigned>(byte));
            quoted += code.data();
        } else {
            quoted += c;
        }
    }
    return quoted + "\"";
}

std::uint64_t FaultValues::whole(long double value) {
    constexpr long double kMax = 18446744073709551615.0L;
    constexpr long double kMin = -9223372036854775808.0L;
    if (value < 0) {
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(value < kMin ? kMin : value));
    }
    return static_cast<std::uint64_t>(value > kMax ? kMax : value);
}

}  // namespace sim
