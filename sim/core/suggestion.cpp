// What a mistyped word was likely meant to be.
#include "sim/core/suggestion.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace sim {

namespace {

constexpr std::size_t kMostMistakes = 3;
constexpr std::size_t kLongestWord = 100;  // of what is compared

bool same(char one, char other) {
    return std::tolower(static_cast<unsigned char>(one)) == std::tolower(static_cast<unsigned char>(other));
}

// Letters that are to be changed, added, taken out or swapped with their neighbour.
std::size_t mistakes(std::string_view word, std::string_view name) {
    // Of the beginnings of both: a row for each length of the word, here the last three of them.
    std::vector<std::size_t> before_last;
    std::vector<std::size_t> last(name.size() + 1);
    for (std::size_t j = 0; j <= name.size(); ++j) {
        last[j] = j;
    }
    for (std::size_t i = 1; i <= word.size(); ++i) {
        std::vector<std::size_t> row{i};
        for (std::size_t j = 1; j <= name.size(); ++j) {
            std::size_t const changed = last[j - 1] + (same(word[i - 1], name[j - 1]) ? 0 : 1);
            row.push_back(std::min({changed, last[j] + 1, row[j - 1] + 1}));
            if (i > 1 && j > 1 && same(word[i - 1], name[j - 2]) && same(word[i - 2], name[j - 1])) {
                row[j] = std::min(row[j], before_last[j - 2] + 1);
            }
        }
        before_last = std::exchange(last, std::move(row));
    }
    return last.back();
}

// Of "system.state" or "rtu_t::get_exposure".
bool is_last_part(std::string_view word, std::string_view name) {
    if (word.empty() || name.size() <= word.size()) {
        return false;
    }
    std::size_t const at = name.size() - word.size();
    return name.substr(at) == word && (name[at - 1] == '.' || name[at - 1] == ':');
}

}  // namespace

std::string did_you_mean(std::string_view word, std::vector<std::string> const& names, std::string otherwise) {
    if (word.size() > kLongestWord) {
        return otherwise;
    }
    std::size_t least = std::min(std::max<std::size_t>(word.size() / 3, 1), kMostMistakes) + 1;
    std::string const* nearest = nullptr;
    for (std::string const& name : names) {
        std::size_t const count = mistakes(word, name);
        if (count < least && count < name.size()) {
            least = count;
            nearest = &name;
        }
    }
    for (std::size_t i = 0; i < names.size() && nearest == nullptr; ++i) {
        nearest = is_last_part(word, names[i]) ? &names[i] : nullptr;
    }
    return nearest != nullptr ? ": did you mean " + *nearest + "?" : otherwise;
}

}  // namespace sim
