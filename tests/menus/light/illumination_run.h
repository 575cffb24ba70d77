// Runs of the illumination menu.
#pragma once

#include <string>
#include <vector>

#include "tests/menus/menu_run.h"
#include "tests/support/screens/light.h"

namespace light {

using namespace menus;

inline std::string const kFailure = "Communication Failure\n";
inline std::string const kPatternPrompt = "Enter a value for the pattern 0 - Strobe, 1 - Continuous:";

}  // namespace light
