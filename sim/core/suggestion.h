// What a mistyped word was likely meant to be.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sim {

// The end of an error message about `word`: ": did you mean NAME?" with the name that is nearest to it, or whose last
// part it is, the first of several. `otherwise` where there is none: near is a name where at most a third of the word's
// letters, and no more than three, are wrong, missing, too many or swapped with their neighbour. Upper and lower case
// are the same.
std::string did_you_mean(std::string_view word, std::vector<std::string> const& names, std::string otherwise = "");

}  // namespace sim
