// What the menus return to whoever called them, through r47-entry-points: at the console nobody looks.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/menus/menu_run.h"

namespace {

TEST(MenuResultsTest, MenuThatIsLeftReturnsNought) {
    support::SessionOptions options;
    options.entry_point = "menu_results";
    constexpr std::size_t kMenus = 12;
    auto const run = support::run_console(std::string(kMenus, 'x'), options);
    EXPECT_EQ(menus::lines_with("returned", run.output), std::vector<std::string>(kMenus, "returned 0\n"));
}

}  // namespace
