// The options of the long proofs.
#pragma once

#include <string>
#include <vector>

namespace proof {

// Each takes the option `name` out of the arguments, with the value behind it where it has one.

// `fallback` where it is not given. Throws std::invalid_argument where the value is missing or no number.
unsigned long take_option(std::vector<std::string>& arguments, std::string const& name, unsigned long fallback);
// Empty where it is not given. Throws std::invalid_argument where the value is missing.
std::string take_word(std::vector<std::string>& arguments, std::string const& name);
// Whether it is given.
bool take_flag(std::vector<std::string>& arguments, std::string const& name);

}  // namespace proof
