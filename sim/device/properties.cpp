// The table of everything in the device's state that a user may see or set, by dotted names.
#include "sim/device/properties.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "sim/core/numbers.h"

namespace sim {

namespace {

std::string json_text(std::string const& text) {
    std::string json = "\"";
    for (char const c : text) {
        if (c == '"' || c == '\\') {
            json += '\\';
            json += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            std::array<char, 8> code{};
            std::snprintf(code.data(), code.size(), "\\u%04x", static_cast<unsigned>(c));
            json += code.data();
        } else {
            json += c;
        }
    }
    return json + "\"";
}

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

}  // namespace

std::string value_text(Value const& value) {
    if (auto const* truth = std::get_if<bool>(&value)) {
        return *truth ? "true" : "false";
    }
    if (auto const* number = std::get_if<long long>(&value)) {
        return std::to_string(*number);
    }
    if (auto const* number = std::get_if<double>(&value)) {
        return number_text(*number);
    }
    return std::get<std::string>(value);
}

std::string value_json(Value const& value) {
    auto const* text = std::get_if<std::string>(&value);
    return text != nullptr ? json_text(*text) : value_text(value);
}

Error Properties::set(std::string const& name, std::string const& text) const {
    auto const found = properties_.find(name);
    if (found == properties_.end()) {
        return "unknown property " + name;
    }
    if (!found->second.set) {
        return name + " is read only";
    }
    Error const error = found->second.set(text);
    return error.empty() ? error : name + ": " + error;
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

namespace detail {

std::optional<bool> parse_bool(std::string const& text) {
    return parse_truth(text);
}

std::optional<long long> parse_long(std::string const& text) {
    return parse_integer(text);
}

std::optional<double> parse_double(std::string const& text) {
    return parse_float(text);
}

}  // namespace detail
}  // namespace sim
