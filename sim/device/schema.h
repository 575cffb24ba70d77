// The properties for programs: what each of them is, and its value.
#pragma once

#include <string>
#include <vector>

#include "sim/core/clock.h"
#include "sim/device/properties.h"

namespace sim {

// One JSON object, a line for each of the properties that Properties::select answers, which is an object itself:
//   value    as number, truth value or text; only with `values`
//   name     of the value, where it is a choice; only with `values`
//   type     "boolean", "integer", "number", "choice", "text", "scene" or "pixel"
//   unit     left out where there is none
//   range    {min, max, step}, as the device is now; left out where there is none, step also where all between counts
//   choices  [{value, name}, ...], of a choice
//   settable whether it can be set
//   meaning  one line
std::string properties_json(Properties const& properties, std::vector<std::string> const& prefixes, bool values);

// One line: an object with the members time (s), property, value and, of a choice, name.
std::string change_json(Time time, std::string const& name, Property const& property, Value const& value);

}  // namespace sim
