// Numbers as they are typed: which characters belong to one, and what it is worth.
#pragma once

#include <algorithm>
#include <limits>
#include <optional>
#include <string>

// Each of the classes takes one number, character by character and without white space before it: take() tells whether
// the character belongs to it, and value() has nothing where the text does not convert.

// White space as the C and C++ readers skip it.
bool is_space(char c);

// A decimal number of the type. A negative one wraps into an unsigned type.
template <typename Integer>
class typed_integer {
public:
    bool take(char c) {
        if (empty_ && (c == '-' || c == '+')) {
            empty_ = false;
            negative_ = c == '-';
            return true;
        }
        if (c < '0' || c > '9') {
            return false;
        }
        empty_ = false;
        converts_ = true;
        magnitude_ = std::min(magnitude_ * 10 + (c - '0'), kTooLarge);
        return true;
    }

    std::optional<Integer> value() const {
        long long const value = negative_ ? -magnitude_ : magnitude_;
        if (!converts_ || value < kLowest || value > kHighest) {
            return std::nullopt;
        }
        return static_cast<Integer>(value);
    }

private:
    static constexpr long long kHighest = std::numeric_limits<Integer>::max();
    static constexpr long long kLowest = std::numeric_limits<Integer>::is_signed ? -kHighest - 1 : -kHighest;
    static constexpr long long kTooLarge = kHighest + 2;  // for either sign

    bool empty_ = true;
    bool negative_ = false;
    bool converts_ = false;
    long long magnitude_ = 0;
};

// A decimal floating-point number as operator>> takes it. One that is too large does not convert.
class typed_float {
public:
    bool take(char c);
    std::optional<float> value() const;

private:
    std::string text_;
};

// A floating-point number as scanf("%f") takes it: the longest text that begins one, decimal, hexadecimal, "inf" or
// "nan". One that is too large is infinite. What only begins a number ("0x", "1e", "infi") does not convert.
class scanned_float {
public:
    bool take(char c);
    std::optional<float> value() const;

private:
    std::string text_;
};

// The number that the text begins with, after white space.
std::optional<int> scan_int(char const* text);
