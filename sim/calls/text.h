// Arguments and results of operations as the journal writes them.
#pragma once

#include <bitset>
#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "sim/calls/argument_types.h"
#include "sim/calls/records.h"
#include "sim/core/numbers.h"
#include "sim/core/text.h"

namespace sim {

template <typename T>
std::string text_of(T const& value);

inline std::string text_of(bool value) {
    return value ? "true" : "false";
}
inline std::string text_of(float value) {
    return number_text(value);
}
inline std::string text_of(std::string const& value) {
    return sim::quoted(value);  // not that of <iomanip>
}
inline std::string text_of(Text const& value) {
    return value ? sim::quoted(*value) : "null";
}
inline std::string text_of(ObjectNumber object) {
    return "#" + std::to_string(object.number);
}
inline std::string text_of(FunctionGiven function) {
    return function.given ? "function" : "null";
}
template <std::size_t N>
std::string text_of(std::bitset<N> const& bits) {
    return bits.to_string();
}
template <typename Key, typename T>
std::string text_of(std::map<Key, T> const& map);

template <typename T>
void add_to_list(std::string& list, T const& value) {
    if constexpr (!is_hidden<T>::value) {
        list += (list.empty() ? "" : ", ") + text_of(value);
    }
}

// Each for itself.
template <typename... T>
std::vector<std::string> texts_of(T const&... values) {
    std::vector<std::string> texts;
    [[maybe_unused]] auto const add = [&](auto const& value) {
        if constexpr (!is_hidden<std::decay_t<decltype(value)>>::value) {
            texts.push_back(text_of(value));
        }
    };
    (add(values), ...);
    return texts;
}

template <typename... T>
std::string list_of(T const&... values) {
    std::string list;
    (add_to_list(list, values), ...);
    return list;
}

template <typename T>
std::string text_of(T const& value) {
    if constexpr (is_flags<T>) {
        return "{" + std::apply([](auto... flags) { return list_of((flags != 0)...); }, Fields<T>::of(value)) + "}";
    } else if constexpr (is_record<T>::value) {
        return "{" + std::apply([](auto const&... fields) { return list_of(fields...); }, Fields<T>::of(value)) + "}";
    } else if constexpr (std::is_array_v<T>) {
        std::string list;
        for (auto const& element : value) {
            list += (list.empty() ? "" : ", ") + text_of(element);
        }
        return "{" + list + "}";
    } else if constexpr (std::is_enum_v<T>) {
        return std::to_string(static_cast<std::underlying_type_t<T>>(value));
    } else {
        static_assert(std::is_integral_v<T>);
        return std::to_string(value);
    }
}

// Pin lines: "{0: 46, 1: 48}".
template <typename Key, typename T>
std::string text_of(std::map<Key, T> const& map) {
    std::string list;
    for (auto const& [key, value] : map) {
        list += (list.empty() ? "" : ", ") + text_of(key) + ": " + text_of(value);
    }
    return "{" + list + "}";
}

}  // namespace sim
