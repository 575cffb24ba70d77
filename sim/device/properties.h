// The table of everything in the device's state that a user may see or set, by dotted names.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

#include "sim/core/error.h"
#include "sim/core/numbers.h"
#include "sim/models/scene.h"
#include "sim/models/supply.h"

namespace sim {

using Value = std::variant<bool, long long, float, double, std::string, Supply, Scene>;

// The value as `show` prints it.
std::string value_text(Value const& value);
// The value as JSON.
std::string value_json(Value const& value);

struct Property {
    std::string help;  // one line: what it is, its unit, its range
    std::function<Value()> get;
    std::function<Error(Value const& value)> set;  // of the type that `get` answers; empty: read only
};

// Getters and setters are called with the device's lock held. A setter that answers an error changed nothing.
class Properties {
public:
    // `get` answers what Value holds, an integer or an enumerator.
    template <typename Get>
    void add(std::string name, std::string help, Get get);
    // `set` takes every value of the type that `get` answers, and answers nothing.
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

    // A value that has not the property's type is refused too.
    Error set(std::string const& name, Value const& value) const;
    // Null for an unknown name.
    Property const* find(std::string const& name) const;
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

namespace detail {

template <typename T, typename... Ts>
constexpr bool is_one_of = (std::is_same_v<T, Ts> || ...);

// The type by which Value holds a T: its own, that of whole numbers, or a text.
template <typename T>
using Held = std::conditional_t<is_one_of<T, bool, float, double, Supply, Scene>, T,
                                std::conditional_t<std::is_enum_v<T> || std::is_integral_v<T>, long long, std::string>>;

template <typename T>
Value to_value(T const& value) {
    return static_cast<Held<T>>(value);
}

template <typename T, bool = std::is_enum_v<T>>
struct integer_of {
    using type = T;
};
template <typename T>
struct integer_of<T, true> {
    using type = std::underlying_type_t<T>;
};

// Nothing where the value is no T.
template <typename T>
std::optional<T> from_value(Value const& value) {
    auto const* const held = std::get_if<Held<T>>(&value);
    if constexpr (std::is_same_v<Held<T>, long long>) {
        bool const is_one = held != nullptr && fits<typename integer_of<T>::type>(*held);
        return is_one ? std::optional<T>(static_cast<T>(*held)) : std::nullopt;
    } else {
        return held != nullptr ? std::optional<T>(*held) : std::nullopt;
    }
}

}  // namespace detail

template <typename Get>
void Properties::add(std::string name, std::string help, Get get) {
    properties_[std::move(name)] = Property{std::move(help), [get] { return detail::to_value(get()); }, {}};
}

template <typename Get, typename Set>
void Properties::add(std::string name, std::string help, Get get, Set set) {
    using T = std::decay_t<decltype(get())>;
    auto const set_always = [set](T const& value) {
        set(value);
        return 0;
    };
    add(std::move(name), std::move(help), get, set_always, "");
}

template <typename Get, typename Set>
void Properties::add(std::string name, std::string help, Get get, Set set, std::string refusal) {
    using T = std::decay_t<decltype(get())>;
    auto const set_value = [set, refusal = std::move(refusal)](Value const& value) -> Error {
        auto const wanted = detail::from_value<T>(value);
        if (!wanted) {
            return "not a value of this property: " + value_text(value);
        }
        return set(*wanted) == 0 ? Error() : refusal;
    };
    properties_[std::move(name)] = Property{std::move(help), [get] { return detail::to_value(get()); }, set_value};
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
