// What the fuzzers assert, and the second library of whoever calls it.
#pragma once

#include <cstdlib>
#include <iostream>

// Ends the process where the condition does not hold; a fuzzer keeps the input that led here.
inline void require(bool holds, char const* what) {
    if (!holds) {
        std::cerr << "NOT TRUE: " << what << std::endl;
        std::abort();
    }
}

// As require, for two values that must be the same; shows both.
template <typename Value>
void require_equal(Value const& found, Value const& expected, char const* what) {
    if (!(found == expected)) {
        std::cerr << "DIFFERS: " << what << "\n  found:    " << found << "\n  expected: " << expected << std::endl;
        std::abort();
    }
}
