// Arguments and results of operations as the journal writes them, and from the values of a fault rule.
#pragma once

#include <bitset>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "sim/core/numbers.h"
#include "sim/core/text.h"
#include "sim/library/records.h"

namespace sim {

// Stands for another object of the library among the arguments: "#2".
struct ObjectNumber {
    int number;
};

template <typename T>
std::string text_of(T const& value);

inline std::string text_of(bool value) {
    return value ? "true" : "false";
}
inline std::string text_of(float value) {
    return number_text(value);
}
inline std::string text_of(char const* value) {
    return value != nullptr ? quoted(value) : "null";
}
inline std::string text_of(std::string const& value) {
    return quoted(value);
}
inline std::string text_of(ObjectNumber object) {
    return "#" + std::to_string(object.number);
}
template <std::size_t N>
std::string text_of(std::bitset<N> const& bits) {
    return bits.to_string();
}
template <typename Signature>
std::string text_of(std::function<Signature> const& function) {
    return function ? "function" : "null";
}

template <typename Key, typename T>
std::string text_of(std::map<Key, T> const& map);

template <typename... T>
std::string list_of(T const&... values) {
    std::string list;
    ((list += (list.empty() ? "" : ", ") + text_of(values)), ...);
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

// Hands out the values of a fault rule one by one; 0 when there are no more.
class FaultValues {
public:
    explicit FaultValues(std::vector<long double> const& values) : values_(values) {}

    long double next() { return at_ < values_.size() ? values_[at_++] : 0.0L; }

    // Fills `target` field by field. Whole numbers lose the bits that do not fit.
    template <typename T>
    void fill(T& target) {
        if constexpr (is_record<T>::value) {
            std::apply([&](auto&... fields) { (fill(fields), ...); }, Fields<T>::of(target));
        } else if constexpr (std::is_array_v<T>) {
            for (auto& element : target) {
                fill(element);
            }
        } else if constexpr (std::is_same_v<T, bool>) {
            target = next() != 0.0L;
        } else if constexpr (std::is_floating_point_v<T>) {
            target = static_cast<T>(next());
        } else {
            target = static_cast<T>(whole(next()));
        }
    }
    template <std::size_t N>
    void fill(std::bitset<N>& target) {
        target = std::bitset<N>(whole(next()));
    }
    template <typename Key, typename T>
    void fill(std::map<Key, T>& target) {
        for (auto& element : target) {
            fill(element.second);
        }
    }

private:
    static std::uint64_t whole(long double value);

    std::vector<long double> const& values_;
    std::size_t at_ = 0;
};

}  // namespace sim
