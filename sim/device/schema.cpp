// The properties for programs: what each of them is, and its value.
#include "sim/device/schema.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "sim/core/text.h"

namespace sim {

namespace {

using Json = nlohmann::ordered_json;

// Whole numbers without a fraction.
Json number_json(double number) {
    constexpr double kExact = 9e15;
    bool const is_whole = std::trunc(number) == number && std::fabs(number) < kExact;
    return is_whole ? Json(static_cast<long long>(number)) : Json(number);
}

struct JsonMaker {
    Json operator()(bool truth) const { return truth; }
    Json operator()(long long number) const { return number; }
    // The same digits as in a text, not those of the nearest double.
    Json operator()(float number) const { return number_json(*parse_float(number_text(number))); }
    Json operator()(double number) const { return number_json(number); }
    template <typename Other>
    Json operator()(Other const& other) const {
        return utf8_text(value_text(other));
    }
};

Json value_json(Value const& value) {
    return std::visit(JsonMaker(), value);
}

void add_value(Json& json, Property const& property, Value const& value) {
    json["value"] = value_json(value);
    for (Choice const& choice : property.about.choices) {
        if (choice.value == value) {
            json["name"] = choice.name;
        }
    }
}

Json range_json(ValueRange const& range) {
    Json json{{"min", number_json(range.min)}, {"max", number_json(range.max)}};
    if (range.step != 0) {
        json["step"] = number_json(range.step);
    }
    return json;
}

Json property_json(Property const& property, bool with_value) {
    About const& about = property.about;
    Json json;
    if (with_value) {
        add_value(json, property, property.get());
    }
    json["type"] = type_name(property);
    if (!about.unit.empty()) {
        json["unit"] = about.unit;
    }
    if (about.range) {
        json["range"] = range_json(about.range());
    }
    for (Choice const& choice : about.choices) {
        json["choices"].push_back({{"value", value_json(choice.value)}, {"name", choice.name}});
    }
    json["settable"] = static_cast<bool>(property.set);
    json["meaning"] = about.meaning;
    return json;
}

}  // namespace

std::string properties_json(Properties const& properties, std::vector<std::string> const& prefixes, bool values) {
    std::string json;
    for (auto const& [name, property] : properties.select(prefixes)) {
        json += (json.empty() ? "{\n  " : ",\n  ") + json_text(name) + ": " + property_json(property, values).dump();
    }
    return json.empty() ? "{}\n" : json + "\n}\n";
}

std::string change_json(Time time, std::string const& name, Property const& property, Value const& value) {
    Json json{{"time", static_cast<double>(time.count()) / 1e6}, {"property", name}};
    add_value(json, property, value);
    return json.dump() + "\n";
}

}  // namespace sim
