// Conditions on the device's state, as the control grammar has them.
#pragma once

#include <string>

#include "sim/control/command.h"
#include "sim/device/properties.h"

namespace sim {

struct Condition {
    enum class Relation { equal, unequal, less, at_most, greater, at_least };

    std::string name;  // of the property
    Relation relation = Relation::equal;
    Value value;
    std::string text;  // as it was given
};

// Reads "NAME OP VALUE": OP is ==, !=, and for numbers also <, <=, > and >=; VALUE is as `set` takes it.
Error parse_condition(Properties const& properties, Words const& words, Condition& condition);

bool holds(Condition const& condition, Properties const& properties);

// The value of the property, with the name that it has.
std::string value_of(Condition const& condition, Properties const& properties);

}  // namespace sim
