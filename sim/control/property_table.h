// The device's properties as a table for people.
#pragma once

#include <string>

namespace sim {

struct TableStyle {
    std::size_t width = 0;  // columns of the terminal, to which lines are cut; 0: no limit
    bool colour = false;    // escape sequences
};

// `json`: what properties_json() answers, with values. A line for each property: name, value with the name that it has
// and its unit, "set" where it can be set, type and range, meaning with the choices.
std::string property_table(std::string const& json, TableStyle const& style = {});

}  // namespace sim
