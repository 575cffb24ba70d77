// The device's properties as a table for people.
#include "sim/control/property_table.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <vector>

#include "sim/core/text.h"

namespace sim {

namespace {

using Json = nlohmann::ordered_json;

enum Column { name_column, value_column, set_column, type_column, meaning_column, columns };

using Row = std::array<std::string, columns>;

constexpr char const* kGap = "  ";
constexpr char const* kReset = "\x1B[0m";
constexpr std::array<char const*, columns> kColours{"\x1B[36m", "\x1B[1m", "\x1B[32m", "\x1B[2m", ""};

std::string plain_text(Json const& value) {
    return printable(value.is_string() ? value.get<std::string>() : value.dump());
}

std::string member(Json const& property, char const* name, std::string const& before) {
    return property.contains(name) ? before + plain_text(property[name]) : "";
}

std::string type_and_range(Json const& property) {
    std::string text = plain_text(property["type"]);
    if (property.contains("range")) {
        Json const& range = property["range"];
        text += " " + plain_text(range["min"]) + " to " + plain_text(range["max"]) + member(range, "step", " by ");
    }
    return text;
}

std::string meaning_with_choices(Json const& property) {
    std::string text = plain_text(property["meaning"]);
    char const* before = ": ";
    for (Json const& choice : property.value("choices", Json::array())) {
        std::string const value = plain_text(choice["value"]);
        std::string const name = plain_text(choice["name"]);
        text += before + value + (name == value ? "" : " " + name);
        before = ", ";
    }
    return text;
}

Row row_of(std::string const& name, Json const& property) {
    std::string const value = plain_text(property["value"]);
    std::string const called = member(property, "name", " ");
    return {printable(name), value + (called == " " + value ? "" : called) + member(property, "unit", " "),
            property["settable"] == true ? "set" : "", type_and_range(property), meaning_with_choices(property)};
}

// Of UTF-8.
bool continues_character(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80;
}

std::size_t length_of(std::string const& text) {
    return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), continues_character));
}

void cut(std::string& text, std::size_t length) {
    while (length_of(text) > length) {
        while (continues_character(text.back())) {
            text.pop_back();
        }
        text.pop_back();
    }
}

std::string line_of(Row const& row, std::array<std::size_t, columns> const& widths, TableStyle const& style) {
    std::string line;
    std::size_t left = style.width == 0 ? std::string::npos : style.width;
    for (std::size_t i = 0; i < columns && left > 0; ++i) {
        std::string cell = row[i];
        if (i + 1 < columns) {
            cell.append(widths[i] - length_of(cell), ' ');
        }
        cell = (i == 0 ? "" : kGap) + cell;
        cut(cell, left);
        left -= style.width == 0 ? 0 : length_of(cell);
        line += style.colour && !row[i].empty() ? kColours[i] + cell + kReset : cell;
    }
    return line + "\n";
}

}  // namespace

std::string property_table(std::string const& json, TableStyle const& style) {
    std::vector<Row> rows;
    std::array<std::size_t, columns> widths{};
    Json const properties = Json::parse(json);
    for (auto const& [name, property] : properties.items()) {
        rows.push_back(row_of(name, property));
        for (std::size_t i = 0; i < columns; ++i) {
            widths[i] = std::max(widths[i], length_of(rows.back()[i]));
        }
    }
    std::string table;
    for (Row const& row : rows) {
        table += line_of(row, widths, style);
    }
    return table;
}

}  // namespace sim
