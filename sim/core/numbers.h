// Numbers as the control grammar and the journal write them.
#pragma once

#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace sim {

// The whole of `text` as a number: decimal, with a sign or a fraction, or hexadecimal after 0x; "true" and
// "false" count as 1 and 0 where a truth value is meant. Nothing when it is none or not finite.
std::optional<long double> parse_number(std::string_view text);
std::optional<double> parse_float(std::string_view text);
// Decimal or 0x hexadecimal; nothing outside the range of long long.
std::optional<long long> parse_integer(std::string_view text);
// Whether the number is one of type Int; the same text as such a number.
template <typename Int>
bool fits(long long number) {
    if constexpr (std::is_unsigned_v<Int>) {
        return number >= 0 && static_cast<unsigned long long>(number) <= std::numeric_limits<Int>::max();
    } else {
        return number >= std::numeric_limits<Int>::min() && number <= std::numeric_limits<Int>::max();
    }
}
template <typename Int>
std::optional<Int> parse_integer_as(std::string_view text) {
    auto const number = parse_integer(text);
    return number && fits<Int>(*number) ? std::optional<Int>(static_cast<Int>(*number)) : std::nullopt;
}
// true, false, on, off, 1, 0.
std::optional<bool> parse_truth(std::string_view text);

// The shortest decimal number that reads back as the same value of that type: plain digits from 0.0001 to below 1e16,
// an exponent otherwise.
std::string number_text(float value);
std::string number_text(double value);
std::string number_text(long double value);

// The nearest multiple of a `parts`-th, for values whose last digits are but the noise of reckoning.
double to_nearest_part(double value, double parts);

}  // namespace sim
