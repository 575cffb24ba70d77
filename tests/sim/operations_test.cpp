// Tests that the gate and the table of operations name the same ones.
#include "sim/device/operations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>

namespace {

std::set<std::string> operations_in_sources() {
    std::set<std::string> names;
    std::regex const name("\"([a-z0-9_]+_t::~?[a-z0-9_]+)\"");
    for (auto const& entry : std::filesystem::directory_iterator(R47_SOURCE_DIR "/sim/hal")) {
        std::ifstream file(entry.path());
        std::string const text(std::istreambuf_iterator<char>(file), {});
        for (std::sregex_iterator match(text.begin(), text.end(), name), end; match != end; ++match) {
            std::string const operation = (*match)[1];
            // Callbacks are journaled under the names of the fields that hold them.
            bool const is_callback = std::regex_search(operation, std::regex("_records$|::on_"));
            if (!is_callback) {
                names.insert(operation);
            }
        }
    }
    return names;
}

TEST(OperationsTest, EveryOperationPassesTheGateUnderItsName) {
    std::set<std::string> listed(sim::operations().begin(), sim::operations().end());
    // Their constructors are the program's own: the gate makes up the names.
    listed.erase("autofocus_t::autofocus_t");
    listed.erase("base_t::base_t");
    std::set<std::string> const found = operations_in_sources();
    std::vector<std::string> differences;
    std::set_symmetric_difference(found.begin(), found.end(), listed.begin(), listed.end(),
                                  std::back_inserter(differences));
    EXPECT_EQ(differences, std::vector<std::string>{});
}

TEST(OperationsTest, TheTableIsSortedAndHasNoDoubles) {
    auto const& names = sim::operations();
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
    EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end());
}

}  // namespace
