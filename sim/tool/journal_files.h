// Journals that were written to files.
#pragma once

#include <string>
#include <vector>

namespace sim {

// Of both, lines of text or of JSON: see docs/virtual-device.md. Empty: all.
struct JournalFilter {
    std::string kind;
    std::string program;
    std::string text;  // a pattern, or without a * a part of it
    bool failed = false;
};

// Prints the lines of a file, "-" for standard input, that the filter takes, coloured on a terminal. Answers the exit
// status.
int show_journal(std::string const& file, JournalFilter const& filter);

// Prints what differs between two files, as `diff` does: lines of the first alone with -, of the second alone with +.
// Their numbers do not count, and their times only with `times`. Answers the exit status: 0 nothing differs, 1
// something does.
int diff_journals(std::string const& one, std::string const& other, bool times);

struct Difference {
    enum class Side { both, first, second };
    Side side;
    std::size_t line;  // of the first, for `second` of the second, from 0
};

// The lines of both in their order, as many of them common as can be.
std::vector<Difference> compare(std::vector<std::string> const& one, std::vector<std::string> const& other);

}  // namespace sim
