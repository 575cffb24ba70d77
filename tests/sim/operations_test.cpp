// Tests that the gate and the table of operations name the same ones.
#include "sim/device/operations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

// Whether a quoted text is the name of an operation. Callbacks are journaled under the names of the fields that hold
// them.
bool is_operation(std::string const& text) {
    auto const is_name_character = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == ':' || c == '~';
    };
    bool const is_callback = text.find("_records") != std::string::npos || text.find("::on_") != std::string::npos;
    return text.find("_t::") != std::string::npos && !is_callback &&
           std::all_of(text.begin(), text.end(), is_name_character);
}

// All that stands between double quotes.
std::vector<std::string> quoted_texts(std::string const& source) {
    std::vector<std::string> texts;
    std::istringstream parts(source);
    std::string part;
    for (bool quoted = false; std::getline(parts, part, '"'); quoted = !quoted) {
        if (quoted) {
            texts.push_back(part);
        }
    }
    return texts;
}

std::set<std::string> operations_in_sources() {
    std::set<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(R47_SOURCE_DIR "/sim/library")) {
        std::ifstream file(entry.path());
        for (std::string line; std::getline(file, line);) {
            for (std::string const& text : quoted_texts(line)) {
                if (is_operation(text)) {
                    names.insert(text);
                }
            }
        }
    }
    return names;
}

TEST(OperationsTest, EveryOperationPassesTheGateUnderItsName) {
    std::set<std::string> listed(sim::operations().begin(), sim::operations().end());
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
