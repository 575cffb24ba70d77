// Numbers as they are typed: which characters belong to one, and what it is worth.
#include "app/typed_numbers.h"

#include <cmath>
#include <cstdlib>
#include <iterator>

namespace {

constexpr std::size_t kLongestFloat = 1024;  // characters; longer text does not convert

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// The number that the whole text is.
std::optional<float> whole_float(std::string const& text) {
    char* end = nullptr;
    float const number = std::strtof(text.c_str(), &end);
    if (text.empty() || text.size() >= kLongestFloat || end != text.c_str() + text.size()) {
        return std::nullopt;
    }
    return number;
}

// Whether the character goes on with the beginning of a decimal number.
bool continues_decimal(std::string const& text, char c) {
    std::size_t const exponent = text.find_first_of("eE");
    switch (c) {
        case '+':
        case '-':
            return text.empty() || exponent == text.size() - 1;
        case '.':
            return exponent == std::string::npos && text.find('.') == std::string::npos;
        case 'e':
        case 'E':
            return exponent == std::string::npos && text.find_first_of("0123456789") != std::string::npos;
        default:
            return is_digit(c);
    }
}

// Whether the text begins a number, that is whether one of the possible endings makes it one.
bool begins_float(std::string const& text) {
    constexpr char const* kEndings[] = {"", "0", "nf", "f", "nity", "ity", "ty", "y", "an", "n", ")"};
    return std::any_of(std::begin(kEndings), std::end(kEndings), [&text](char const* ending) {
        std::string const ended = text + ending;
        char* end = nullptr;
        std::strtof(ended.c_str(), &end);
        return end == ended.c_str() + ended.size();
    });
}

}  // namespace

bool is_space(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool typed_float::take(char c) {
    bool const taken = text_.size() < kLongestFloat && continues_decimal(text_, c);
    if (taken) {
        text_ += c;
    }
    return taken;
}

std::optional<float> typed_float::value() const {
    auto const number = whole_float(text_);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

bool scanned_float::take(char c) {
    bool const taken = text_.size() < kLongestFloat && begins_float(text_ + c);
    if (taken) {
        text_ += c;
    }
    return taken;
}

std::optional<float> scanned_float::value() const {
    return whole_float(text_);
}

std::optional<int> scan_int(char const* text) {
    while (is_space(*text)) {
        ++text;
    }
    typed_integer<int> number;
    while (number.take(*text)) {
        ++text;
    }
    return number.value();
}
