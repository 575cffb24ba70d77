// The table of everything in the device's state that a user may see or set, by dotted names.
#include "sim/device/properties.h"

#include <algorithm>

#include "sim/core/numbers.h"
#include "sim/core/text.h"

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
};

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

}  // namespace

std::string value_text(Value const& value) {
    return std::visit(Writer(), value);
}

std::string value_json(Value const& value) {
    bool const is_bare = std::holds_alternative<bool>(value) || std::holds_alternative<long long>(value) ||
                         std::holds_alternative<float>(value) || std::holds_alternative<double>(value);
    return is_bare ? value_text(value) : json_text(value_text(value));
}

Error Properties::set(std::string const& name, Value const& value) const {
    Property const* const property = find(name);
    if (property == nullptr) {
        return "unknown property " + name;
    }
    if (!property->set) {
        return name + " is read only";
    }
    Error const error = property->set(value);
    return error.empty() ? error : name + ": " + error;
}

Property const* Properties::find(std::string const& name) const {
    auto const found = properties_.find(name);
    return found == properties_.end() ? nullptr : &found->second;
}

std::string Properties::table(std::string_view prefix) const {
    auto const selected = select(prefix);
    std::size_t name_width = 0;
    std::size_t value_width = 0;
    for (auto const& [name, property] : selected) {
        name_width = std::max(name_width, name.size());
        value_width = std::max(value_width, value_text(property.get()).size());
    }
    std::string table;
    for (auto const& [name, property] : selected) {
        table += padded(name, name_width) + "  " + padded(value_text(property.get()), value_width) + "  " +
                 property.help + "\n";
    }
    return table;
}

std::string Properties::json(std::string_view prefix) const {
    std::string json;
    for (auto const& [name, property] : select(prefix)) {
        json += (json.empty() ? "{\n  " : ",\n  ") + json_text(name) + ": " + value_json(property.get());
    }
    return json.empty() ? "{}\n" : json + "\n}\n";
}

std::map<std::string, Property> Properties::select(std::string_view prefix) const {
    std::map<std::string, Property> selected;
    std::string const branch = std::string(prefix) + ".";
    for (auto const& [name, property] : properties_) {
        if (prefix.empty() || name == prefix || name.compare(0, branch.size(), branch) == 0) {
            selected.emplace(name, property);
        }
    }
    return selected;
}

}  // namespace sim
