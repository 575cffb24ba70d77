// Words of the control grammar as the typed values that the device takes.
#pragma once

#include <optional>
#include <string>

#include "sim/control/command.h"
#include "sim/device/properties.h"
#include "sim/models/scene.h"
#include "sim/models/supply.h"

namespace sim {

// "24v", "poe".
std::optional<Supply> parse_supply(std::string const& word);

// "none", "plane MM", "tilted MM YAW [PITCH]" (degrees), "step LEFT_MM RIGHT_MM", "hole MM [DEPTH_MM]", each but the
// first with "reflectance PERCENT" behind it, if not 50. Nothing for other words, and for a scene that cannot be.
std::optional<Scene> parse_scene(Words const& words);

// "X,Y".
std::optional<Pixel> parse_pixel(std::string const& word);

// The word as a value of the type that `like` has; nothing when it is none.
std::optional<Value> parse_value(std::string const& word, Value const& like);
// The same for a property, whose values may have names.
std::optional<Value> parse_value(std::string const& word, Property const& property);

// Sets the property to what the word means.
Error set_property(Properties const& properties, std::string const& name, std::string const& word);

}  // namespace sim
