// The table of everything in the device's state that a user may see or set, by dotted names.
#include "sim/device/properties.h"

#include <algorithm>
#include <cmath>

#include "sim/core/numbers.h"
#include "sim/core/suggestion.h"

namespace sim {

namespace {

struct Writer {
    std::string operator()(bool truth) const { return truth ? "true" : "false"; }
    std::string operator()(long long number) const { return std::to_string(number); }
    std::string operator()(float number) const { return number_text(number); }
    std::string operator()(double number) const { return number_text(number); }
    std::string operator()(std::string const& text) const { return text; }
    std::string operator()(Supply supply) const { return name_of(supply); }
    std::string operator()(Scene const& scene) const { return scene.text(); }
    std::string operator()(Pixel const& pixel) const { return std::to_string(pixel.x) + "," + std::to_string(pixel.y); }
};

struct TypeNamer {
    char const* operator()(bool) const { return "boolean"; }
    char const* operator()(long long) const { return "integer"; }
    char const* operator()(float) const { return "number"; }
    char const* operator()(double) const { return "number"; }
    char const* operator()(std::string const&) const { return "text"; }
    char const* operator()(Supply) const { return "choice"; }
    char const* operator()(Scene const&) const { return "scene"; }
    char const* operator()(Pixel const&) const { return "pixel"; }
};

bool is_within(double number, ValueRange const& range) {
    return number >= range.min && number <= range.max && (range.step == 0 || std::fmod(number, range.step) == 0);
}

// Whether the range takes the value; what is no number has none.
struct RangeTaker {
    ValueRange range;

    bool operator()(long long number) const { return is_within(static_cast<double>(number), range); }
    bool operator()(float number) const { return is_within(static_cast<double>(number), range); }
    bool operator()(double number) const { return is_within(number, range); }
    template <typename Other>
    bool operator()(Other const&) const {
        return true;
    }
};

bool is_legal(Property const& property, Value const& value) {
    auto const& [about, get, set] = property;
    if (value.index() != get().index()) {
        return false;
    }
    // A choice of texts may have other words for them, which its setter knows.
    if (!about.choices.empty() && !std::holds_alternative<std::string>(value)) {
        return std::any_of(about.choices.begin(), about.choices.end(),
                           [&](Choice const& choice) { return choice.value == value; });
    }
    return !about.range || std::visit(RangeTaker{about.range()}, value);
}

std::string list_of(std::vector<Choice> const& choices) {
    std::string list;
    for (Choice const& choice : choices) {
        std::string const value = value_text(choice.value);
        list += (list.empty() ? "" : ", ") + value + (choice.name == value ? "" : " " + choice.name);
    }
    return list;
}

}  // namespace

About About::within(double min, double max, double step) const {
    return within([=] { return ValueRange{min, max, step}; });
}

About About::within(std::function<ValueRange()> limits) const {
    About about = *this;
    about.range = std::move(limits);
    return about;
}

About About::among(std::vector<Choice> all) const {
    About about = *this;
    about.choices = std::move(all);
    return about;
}

About About::unless(std::string reason) const {
    About about = *this;
    about.refusal = std::move(reason);
    return about;
}

std::string value_text(Value const& value) {
    return std::visit(Writer(), value);
}

std::string value_with_name(Property const& property, Value const& value) {
    std::string text = value_text(value);
    for (Choice const& choice : property.about.choices) {
        if (choice.value == value && choice.name != text) {
            return text + " " + choice.name;
        }
    }
    return text;
}

std::string type_name(Property const& property) {
    return property.about.choices.empty() ? std::visit(TypeNamer(), property.get()) : "choice";
}

std::string legal_values(Property const& property) {
    About const& about = property.about;
    std::string const type = type_name(property);
    if (type == "choice") {
        return "one of " + list_of(about.choices);
    }
    if (type == "boolean") {
        return "true or false";
    }
    if (type == "scene") {
        return "a scene, as the command scene has it";
    }
    if (type == "pixel") {
        return "X,Y, each as its own property takes it";
    }
    std::string const unit = about.unit.empty() ? "" : " " + about.unit;
    if (!about.range) {
        return (type == "integer" ? "an " : "a ") + type + unit;
    }
    ValueRange const range = about.range();
    std::string const what = range.step != 0     ? "a multiple of " + number_text(range.step)
                             : type == "integer" ? "an integer"
                                                 : "a number";
    return what + " from " + number_text(range.min) + " to " + number_text(range.max) + unit;
}

Error not_legal(std::string const& name, Property const& property, std::string const& value) {
    return name + ": " + value + " is not " + legal_values(property);
}

Error Properties::set(std::string const& name, Value const& value) const {
    Error error = why_not_settable(name);
    if (!error.empty()) {
        return error;
    }
    Property const& property = *find(name);
    if (!is_legal(property, value)) {
        return not_legal(name, property, value_text(value));
    }
    error = property.set(value);
    if (error.empty()) {
        return error;
    }
    // That true or false would do helps nobody.
    bool const has_range = !std::holds_alternative<bool>(value);
    return name + ": " + error + (has_range ? "; it takes " + legal_values(property) : "");
}

Error Properties::why_not_settable(std::string const& name) const {
    Property const* const property = find(name);
    if (property == nullptr) {
        return unknown(name);
    }
    return property->set ? Error() : name + " is read only";
}

Error Properties::unknown(std::string const& name, bool is_prefix) const {
    std::vector<std::string> names;
    for (auto const& [known, property] : properties_) {
        for (std::size_t dot = known.find('.'); is_prefix && dot != std::string::npos; dot = known.find('.', dot + 1)) {
            names.push_back(known.substr(0, dot));
        }
        names.push_back(known);
    }
    return "unknown property " + name + did_you_mean(name, names);
}

Property const* Properties::find(std::string const& name) const {
    auto const found = properties_.find(name);
    return found == properties_.end() ? nullptr : &found->second;
}

std::map<std::string, Property> Properties::select(std::vector<std::string> const& prefixes) const {
    auto const is_in = [](std::string const& name, std::string const& prefix) {
        return name.compare(0, prefix.size(), prefix) == 0 &&
               (name.size() == prefix.size() || name[prefix.size()] == '.');
    };
    std::map<std::string, Property> selected;
    for (auto const& [name, property] : properties_) {
        bool const wanted = std::any_of(prefixes.begin(), prefixes.end(),
                                        [&, &of = name](std::string const& prefix) { return is_in(of, prefix); });
        if (prefixes.empty() || wanted) {
            selected.emplace(name, property);
        }
    }
    return selected;
}

}  // namespace sim
