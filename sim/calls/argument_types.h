// What goes to the device in place of the parameters that cannot: pointers, objects, functions.
#pragma once

#include <optional>
#include <string>
#include <type_traits>

namespace sim {

// A char const* parameter; nothing for a null pointer.
using Text = std::optional<std::string>;

// Another object of the library: its number. 0: one that the device does not know.
struct ObjectNumber {
    unsigned int number = 0;
};

// A std::function parameter: whether there is one.
struct FunctionGiven {
    bool given = false;
};

// Goes along with a call without being a parameter of it: neither the journal nor a fault rule knows it.
template <typename T>
struct Hidden {
    T value{};
};

template <typename T>
struct is_hidden : std::false_type {};
template <typename T>
struct is_hidden<Hidden<T>> : std::true_type {};

}  // namespace sim
