// Words of the control grammar as the typed values that the device takes.
#include "sim/control/value_words.h"

#include <algorithm>

#include "sim/core/numbers.h"

namespace sim {

namespace {

std::optional<std::vector<double>> parse_floats(Words::const_iterator from, Words::const_iterator to) {
    std::vector<double> numbers;
    for (; from != to; ++from) {
        auto const number = parse_float(*from);
        if (!number) {
            return std::nullopt;
        }
        numbers.push_back(*number);
    }
    return numbers;
}

// `numbers`: those between the name and the reflectance.
std::optional<Scene> make_scene(std::string const& name, std::vector<double> const& numbers, double reflectance) {
    auto const has = [&](char const* wanted, std::size_t least, std::size_t most) {
        return name == wanted && numbers.size() >= least && numbers.size() <= most;
    };
    double const last = numbers.empty() ? 0.0 : numbers.back();
    if (has("plane", 1, 1)) {
        return Scene::plane(numbers[0], reflectance);
    }
    if (has("tilted", 2, 3)) {
        return Scene::tilted(numbers[0], numbers[1], numbers.size() == 3 ? last : 0.0, reflectance);
    }
    if (has("step", 2, 2)) {
        return Scene::step(numbers[0], numbers[1], reflectance);
    }
    if (has("hole", 1, 2)) {
        return Scene::hole(numbers[0], numbers.size() == 2 ? last : 0.0, reflectance);
    }
    return std::nullopt;
}

template <typename T>
std::optional<Value> as_value(std::optional<T> const& parsed) {
    return parsed ? std::optional<Value>(*parsed) : std::nullopt;
}

// Reads a word as the type of the value that it visits.
struct Parser {
    std::string const& word;

    std::optional<Value> operator()(bool) const { return as_value(parse_truth(word)); }
    std::optional<Value> operator()(long long) const { return as_value(parse_integer(word)); }
    std::optional<Value> operator()(float) const {
        auto const number = parse_float(word);
        return number ? std::optional<Value>(static_cast<float>(*number)) : std::nullopt;
    }
    std::optional<Value> operator()(double) const { return as_value(parse_float(word)); }
    std::optional<Value> operator()(std::string const&) const { return word; }
    std::optional<Value> operator()(Supply) const { return as_value(parse_supply(word)); }
    std::optional<Value> operator()(Scene const&) const {
        Words words;
        return split_words(word, words) ? as_value(parse_scene(words)) : std::nullopt;
    }
};

Error bad_value(std::string const& word, Value const& like) {
    if (std::holds_alternative<Supply>(like)) {
        return supply_error();
    }
    return (std::holds_alternative<Scene>(like) ? "not a scene: " : "not a value of this property: ") + word;
}

}  // namespace

std::optional<Supply> parse_supply(std::string const& word) {
    for (Supply const supply : {Supply::dc_24v, Supply::poe}) {
        if (word == name_of(supply)) {
            return supply;
        }
    }
    return std::nullopt;
}

Error supply_error() {
    return "a power source is 24v or poe";
}

std::optional<Scene> parse_scene(Words const& words) {
    if (words == Words{"none"}) {
        return Scene::nothing();
    }
    bool const told = words.size() > 2 && words[words.size() - 2] == "reflectance";
    auto const reflectance = told ? parse_float(words.back()) : Scene::kUsualReflectance;
    auto const numbers = words.empty() ? std::nullopt : parse_floats(words.begin() + 1, words.end() - (told ? 2 : 0));
    return numbers && reflectance ? make_scene(words.front(), *numbers, *reflectance) : std::nullopt;
}

std::optional<Value> parse_value(std::string const& word, Value const& like) {
    return std::visit(Parser{word}, like);
}

Error set_property(Properties const& properties, std::string const& name, std::string const& word) {
    Property const* const property = properties.find(name);
    if (property == nullptr || !property->set) {
        return properties.set(name, word);  // which says why not
    }
    Value const like = property->get();
    auto const value = parse_value(word, like);
    return value ? properties.set(name, *value) : name + ": " + bad_value(word, like);
}

}  // namespace sim
