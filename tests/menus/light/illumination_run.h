// Runs of the illumination menu.
#pragma once

#include <string>
#include <vector>

#include "tests/menus/menu_run.h"
#include "tests/support/screens/light.h"

namespace light {

using namespace menus;

inline Menu const kIllumination{'c',
                                "",
                                screens::illumination_menu,
                                {"base_t::base_t(\"/dev/r47-illumination-driver\", 2)"},
                                {"base_t::~base_t()"}};

inline std::string const kFailure = "Communication Failure\n";
inline std::string const kPatternPrompt = "Enter a value for the pattern 0 - Strobe, 1 - Continuous:";

}  // namespace light
