// Shows or changes one named unsigned setting of a module.
#pragma once

#include <functional>
#include <string>

// Reads the setting into its argument, or writes it from there; 0 is success. Must not be empty.
using setting_accessor = std::function<int(unsigned int&)>;

// Prints the value that `get` reads, or that it could not be read.
void sensor_get(setting_accessor const& get, std::string const& name);

// Asks for a value, always at the terminal, and hands it to `set`; text that is no number stands for 0.
// Throws no_answer.
void sensor_set(setting_accessor const& set, std::string const& name);
