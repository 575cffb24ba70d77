// The files of the page that the panel shows, as they stand in sim/panel/page/; the build makes the source of this.
#pragma once

#include <string_view>
#include <vector>

namespace sim {

struct PageFile {
    std::string_view name;  // as its address ends; empty: the page itself
    char const* type;       // for the browser
    std::string_view text;
};

std::vector<PageFile> const& page_files();

}  // namespace sim
