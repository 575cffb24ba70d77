// Numbers as the control grammar and the journal write them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sim {

// The whole of `text` as a number: decimal, with a sign or a fraction, or hexadecimal after 0x; "true" and
// "false" count as 1 and 0 where a truth value is meant. Nothing when it is none or not finite.
std::optional<long double> parse_number(std::string_view text);
std::optional<double> parse_float(std::string_view text);
// Decimal or 0x hexadecimal; nothing outside the range of long long.
std::optional<long long> parse_integer(std::string_view text);
// true, false, on, off, 1, 0.
std::optional<bool> parse_truth(std::string_view text);

// The shortest decimal form with up to six significant digits, as printf's %g.
std::string number_text(double value);

}  // namespace sim
