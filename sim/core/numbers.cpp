// Numbers as the control grammar and the journal write them.
#include "sim/core/numbers.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace sim {

namespace {

bool starts_like_a_number(std::string_view text) {
    std::size_t const first = text.find_first_not_of("+-");
    return first <= 1 && (std::string_view("0123456789.").find(text[first]) != std::string_view::npos);
}

template <typename Float>
std::string shortest(Float value) {
    Float const magnitude = std::fabs(value);
    bool const plain =
        magnitude == 0 || (magnitude >= static_cast<Float>(1e-4) && magnitude < static_cast<Float>(1e16));
    std::array<char, 64> text{};
    auto const format = plain ? std::chars_format::fixed : std::chars_format::scientific;
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value, format).ptr};
}

}  // namespace

std::optional<long double> parse_number(std::string_view text) {
    if (text == "true") {
        return 1.0L;
    }
    if (text == "false") {
        return 0.0L;
    }
    if (!starts_like_a_number(text)) {
        return std::nullopt;
    }
    std::string const copy(text);
    char* end = nullptr;
    long double const value = std::strtold(copy.c_str(), &end);
    if (end != copy.c_str() + copy.size() || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

std::optional<double> parse_float(std::string_view text) {
    if (!starts_like_a_number(text)) {
        return std::nullopt;
    }
    auto const value = parse_number(text);
    if (!value || !std::isfinite(static_cast<double>(*value))) {
        return std::nullopt;
    }
    return static_cast<double>(*value);
}

std::optional<long long> parse_integer(std::string_view text) {
    if (!starts_like_a_number(text)) {
        return std::nullopt;
    }
    std::string const copy(text);
    bool const hexadecimal = copy.find_first_of("xX") != std::string::npos;
    char* end = nullptr;
    errno = 0;
    long long const value = std::strtoll(copy.c_str(), &end, hexadecimal ? 16 : 10);
    if (end != copy.c_str() + copy.size() || errno == ERANGE) {
        return std::nullopt;
    }
    return value;
}

std::optional<bool> parse_truth(std::string_view text) {
    if (text == "true" || text == "on" || text == "1") {
        return true;
    }
    if (text == "false" || text == "off" || text == "0") {
        return false;
    }
    return std::nullopt;
}

std::string number_text(float value) {
    return shortest(value);
}

std::string number_text(double value) {
    return shortest(value);
}

std::string number_text(long double value) {
    return shortest(value);
}

double to_nearest_part(double value, double parts) {
    return std::round(value * parts) / parts + 0.0;  // never -0
}

}  // namespace sim
