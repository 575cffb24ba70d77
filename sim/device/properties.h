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
#include <vector>

#include "sim/core/error.h"
#include "sim/core/numbers.h"
#include "sim/models/pixel.h"
#include "sim/models/scene.h"
#include "sim/models/supply.h"

namespace sim {

using Value = std::variant<bool, long long, float, double, std::string, Supply, Scene, Pixel>;

// The value as `show` prints it.
std::string value_text(Value const& value);

// Both ends are legal.
struct ValueRange {
    double min;
    double max;
    double step = 0;  // legal values are multiples of it; 0: all
};

// A legal value and how it is called.
struct Choice {
    Value value;
    std::string name;
};

// What a property is, beside its name and its type.
struct About {
    About(char const* what, std::string in_unit = "") : meaning(what), unit(std::move(in_unit)) {}

    About within(double min, double max, double step = 0) const;
    // For limits that follow the device's state.
    About within(std::function<ValueRange()> limits) const;
    // There are no other values than these.
    About among(std::vector<Choice> all) const;
    // What a setter means that refuses a legal value.
    About unless(std::string reason) const;

    std::string meaning;  // one line
    std::string unit;     // empty: none
    std::function<ValueRange()> range;
    std::vector<Choice> choices;
    std::string refusal = "refused";
};

struct Property {
    About about;
    std::function<Value()> get;
    std::function<Error(Value const& value)> set;  // of the type that `get` answers; empty: read only
};

// The value with the name that it has as one of the property's choices.
std::string value_with_name(Property const& property, Value const& value);
// "boolean", "integer", "number", "choice", "text", "scene" or "pixel".
std::string type_name(Property const& property);
// What can be set, as in "an integer from 0 to 14".
std::string legal_values(Property const& property);

// Getters and setters are called with the device's lock held. A setter that answers an error changed nothing.
class Properties {
public:
    // `get` answers what Value holds, an integer or an enumerator.
    template <typename Get>
    void add(std::string name, About about, Get get);
    // `set` takes what is legal after `about`, where nothing is said there every value of the type that `get` answers.
    // It answers nothing, or a status; one other than 0 is a refusal.
    template <typename Get, typename Set>
    void add(std::string name, About about, Get get, Set set);
    // A variable of the state.
    template <typename T>
    void add_variable(std::string name, About about, T& variable);

    // A value that is not legal is refused; the error says which are.
    Error set(std::string const& name, Value const& value) const;
    // Why no property of that name can be set; empty where it can.
    Error why_not_settable(std::string const& name) const;
    // What is said of a name that there is not, with the nearest that there is; of a prefix, too.
    Error unknown(std::string const& name, bool is_prefix = false) const;
    // Null for an unknown name.
    Property const* find(std::string const& name) const;
    // The properties whose name is one of `prefixes`, or begins with one of them and a dot; all where there are none.
    std::map<std::string, Property> select(std::vector<std::string> const& prefixes) const;
    std::map<std::string, Property> const& all() const { return properties_; }

private:
    std::map<std::string, Property> properties_;
};

// The error where `value` is not legal.
Error not_legal(std::string const& name, Property const& property, std::string const& value);

namespace detail {

template <typename T, typename... Ts>
constexpr bool is_one_of = (std::is_same_v<T, Ts> || ...);

// The type by which Value holds a T: its own, that of whole numbers, or a text.
template <typename T>
using Held = std::conditional_t<is_one_of<T, bool, float, double, Supply, Scene, Pixel>, T,
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

// All values of the type, where they have an end that anybody might reach.
template <typename T>
About within_type(About about) {
    if constexpr (std::is_same_v<Held<T>, long long> && std::is_integral_v<T> && sizeof(T) <= sizeof(int)) {
        if (!about.range && about.choices.empty()) {
            return about.within(static_cast<double>(std::numeric_limits<T>::min()),
                                static_cast<double>(std::numeric_limits<T>::max()));
        }
    }
    return about;
}

}  // namespace detail

template <typename Get>
void Properties::add(std::string name, About about, Get get) {
    properties_.insert_or_assign(std::move(name),
                                 Property{std::move(about), [get] { return detail::to_value(get()); }, {}});
}

template <typename Get, typename Set>
void Properties::add(std::string name, About about, Get get, Set set) {
    using T = std::decay_t<decltype(get())>;
    auto const set_value = [set, refusal = about.refusal](Value const& value) -> Error {
        T const wanted = *detail::from_value<T>(value);
        if constexpr (std::is_void_v<decltype(set(wanted))>) {
            set(wanted);
            return {};
        } else {
            return set(wanted) == 0 ? Error() : refusal;
        }
    };
    properties_.insert_or_assign(std::move(name), Property{detail::within_type<T>(std::move(about)),
                                                           [get] { return detail::to_value(get()); }, set_value});
}

template <typename T>
void Properties::add_variable(std::string name, About about, T& variable) {
    add(
        std::move(name), std::move(about), [&variable] { return variable; },
        [&variable](T const& value) { variable = value; });
}

}  // namespace sim
