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
    std::optional<Value> operator()(Pixel const&) const { return as_value(parse_pixel(word)); }
};

}  // namespace

std::optional<Supply> parse_supply(std::string const& word) {
    for (Supply const supply : {Supply::dc_24v, Supply::poe}) {
        if (word == name_of(supply)) {
            return supply;
        }
    }
    return std::nullopt;
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

std::optional<Pixel> parse_pixel(std::string const& word) {
    std::size_t const comma = std::min(word.find(','), word.size());
    auto const x = parse_integer_as<unsigned int>(word.substr(0, comma));
    auto const y = comma < word.size() ? parse_integer_as<unsigned int>(word.substr(comma + 1)) : std::nullopt;
    return x && y ? std::optional<Pixel>({*x, *y}) : std::nullopt;
}

std::optional<Value> parse_value(std::string const& word, Value const& like) {
    return std::visit(Parser{word}, like);
}

std::optional<Value> parse_value(std::string const& word, Property const& property) {
    for (Choice const& choice : property.about.choices) {
        if (word == choice.name) {
            return choice.value;
        }
    }
    return parse_value(word, property.get());
}

Error set_property(Properties const& properties, std::string const& name, std::string const& word) {
    Error error = properties.why_not_settable(name);
    if (!error.empty()) {
        return error;
    }
    Property const& property = *properties.find(name);
    auto const value = parse_value(word, property);
    return value ? properties.set(name, *value) : not_legal(name, property, word);
}

}  // namespace sim
