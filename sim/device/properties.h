// The table of everything in the device's state that a user may see or set, by dotted names.
#pragma once

#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

namespace sim {

using Value = std::variant<bool, long long, double, std::string>;

// The value as `show` prints it.
std::string value_text(Value const& value);
// The value as JSON.
std::string value_json(Value const& value);

// An error message; empty: done.
using Error = std::string;

struct Property {
    std::string help;  // one line: what it is, its unit, its range
    std::function<Value()> get;
    std::function<Error(std::string const& text)> set;  // empty: read only
};

// Getters and setters are called with the device's lock held. A setter that answers an error changed nothing.
class Properties {
public:
    // `get` answers a bool, an integer, an enumerator, a floating-point number or a text.
    template <typename Get>
    void add(std::string name, std::string help, Get get);
    // `set` takes what `get` answers. It answers nothing, where it takes every value, or an Error.
    template <typename Get, typename Set>
    void add(std::string name, std::string help, Get get, Set set);
    // `set` answers a status; one other than 0 is a refusal, which `refusal` explains.
    template <typename Get, typename Set>
    void add(std::string name, std::string help, Get get, Set set, std::string refusal);
    // The same where `set` refuses what is outside of `min` to `max`.
    template <typename Get, typename Set, typename T>
    void add(std::string name, std::string help, Get get, Set set, T min, T max);
    // A variable of the state that takes every value.
    template <typename T>
    void add_variable(std::string name, std::string help, T& variable);

    Error set(std::string const& name, std::string const& text) const;
    // The properties whose name is `prefix` or begins with `prefix` and a dot; all for an empty one. As a table of
    // name, value and help; empty when there is none.
    std::string table(std::string_view prefix) const;
    // The same as one JSON object.
    std::string json(std::string_view prefix) const;
    std::map<std::string, Property> const& all() const { return properties_; }

private:
    std::map<std::string, Property> select(std::string_view prefix) const;

    std::map<std::string, Property> properties_;
};

// What the text means as a T; nothing when it is no T.
template <typename T>
std::optional<T> parse_value(std::string const& text);

namespace detail {

std::optional<bool> parse_bool(std::string const& text);
std::optional<long long> parse_long(std::string const& text);
std::optional<double> parse_double(std::string const& text);

template <typename T>
Value to_value(T const& value) {
    if constexpr (std::is_same_v<T, bool>) {
        return value;
    } else if constexpr (std::is_enum_v<T> || std::is_integral_v<T>) {
        return static_cast<long long>(value);
    } else if constexpr (std::is_floating_point_v<T>) {
        return static_cast<double>(value);
    } else {
        return std::string(value);
    }
}

template <typename Int>
bool fits(long long number) {
    if constexpr (std::is_unsigned_v<Int>) {
        return number >= 0 && static_cast<unsigned long long>(number) <= std::numeric_limits<Int>::max();
    } else {
        return number >= std::numeric_limits<Int>::min() && number <= std::numeric_limits<Int>::max();
    }
}

template <typename T, bool = std::is_enum_v<T>>
struct integer_of {
    using type = T;
};
template <typename T>
struct integer_of<T, true> {
    using type = std::underlying_type_t<T>;
};

}  // namespace detail

template <typename T>
std::optional<T> parse_value(std::string const& text) {
    if constexpr (std::is_same_v<T, bool>) {
        return detail::parse_bool(text);
    } else if constexpr (std::is_enum_v<T> || std::is_integral_v<T>) {
        auto const number = detail::parse_long(text);
        if (!number || !detail::fits<typename detail::integer_of<T>::type>(*number)) {
            return std::nullopt;
        }
        return static_cast<T>(*number);
    } else if constexpr (std::is_floating_point_v<T>) {
        auto const number = detail::parse_double(text);
        return number ? std::optional<T>(static_cast<T>(*number)) : std::nullopt;
    } else {
        return text;
    }
}

template <typename Get>
void Properties::add(std::string name, std::string help, Get get) {
    properties_[std::move(name)] = Property{std::move(help), [get] { return detail::to_value(get()); }, {}};
}

template <typename Get, typename Set>
void Properties::add(std::string name, std::string help, Get get, Set set) {
    using T = std::decay_t<decltype(get())>;
    auto const set_text = [set](std::string const& text) -> Error {
        auto const value = parse_value<T>(text);
        if (!value) {
            return "not a value of this property: " + text;
        }
        if constexpr (std::is_void_v<decltype(set(*value))>) {
            set(*value);
            return {};
        } else {
            return set(*value);
        }
    };
    properties_[std::move(name)] = Property{std::move(help), [get] { return detail::to_value(get()); }, set_text};
}

template <typename Get, typename Set>
void Properties::add(std::string name, std::string help, Get get, Set set, std::string refusal) {
    using T = std::decay_t<decltype(get())>;
    add(std::move(name), std::move(help), get,
        [set, refusal = std::move(refusal)](T const& value) { return set(value) == 0 ? Error() : refusal; });
}

template <typename Get, typename Set, typename T>
void Properties::add(std::string name, std::string help, Get get, Set set, T min, T max) {
    add(std::move(name), std::move(help), get, set,
        "out of range " + value_text(detail::to_value(min)) + " to " + value_text(detail::to_value(max)));
}

template <typename T>
void Properties::add_variable(std::string name, std::string help, T& variable) {
    add(
        std::move(name), std::move(help), [&variable] { return variable; },
        [&variable](T const& value) { variable = value; });
}

}  // namespace sim
