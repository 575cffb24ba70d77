// Journals that were written to files.
#include "sim/tool/journal_files.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>

#include "sim/core/clock.h"
#include "sim/core/text.h"
#include "sim/tool/exit_status.h"
#include "sim/tool/terminal.h"

namespace sim {

namespace {

enum Field { start, took, sequence, kind, program, thread, object, error, rule, text, fields };

// As the text has them, "-" for none.
using Entry = std::array<std::string, fields>;

constexpr std::array<char const*, fields> kMembers{"start",  "took",   "sequence", "kind", "program",
                                                   "thread", "object", "error",    "rule", "text"};

std::optional<Entry> entry_of_text(std::string const& line) {
    Entry entry;
    std::size_t at = 0;
    for (std::size_t field = 0; field < text; ++field) {
        std::size_t const end = line.find(' ', at);
        if (end == std::string::npos || end == at) {
            return std::nullopt;
        }
        entry[field] = line.substr(at, end - at);
        at = end + 1;
    }
    entry[text] = line.substr(at);
    return entry;
}

std::optional<Entry> entry_of_json(std::string const& line) {
    auto const json = nlohmann::json::parse(line, nullptr, false);
    if (!json.is_object()) {
        return std::nullopt;
    }
    Entry entry;
    for (std::size_t field = 0; field < fields; ++field) {
        auto const member = json.find(kMembers[field]);
        if (member == json.end()) {
            entry[field] = "-";
        } else if (field == start || field == took) {
            double const number = member->is_number() ? member->get<double>() : 0.0;
            entry[field] = seconds(Time(std::llround(number * 1e6)));
        } else {
            entry[field] = member->is_string() ? member->get<std::string>() : member->dump();
        }
    }
    // The text has no thread where a program's callbacks run.
    entry[thread] = entry[thread] == "0" ? "-" : entry[thread];
    return entry;
}

std::string line_of(Entry const& entry) {
    std::string line;
    for (std::string const& field : entry) {
        line += (line.empty() ? "" : " ") + field;
    }
    return line;
}

// False, and says why, where it is no journal.
bool read_journal(std::string const& file, std::vector<Entry>& journal) {
    std::ifstream opened;
    if (file != "-") {
        opened.open(file);
        if (!opened) {
            fail(kFailed, "cannot read " + file + ": " + std::strerror(errno));
            return false;
        }
    }
    std::istream& input = file == "-" ? std::cin : opened;
    std::string line;
    for (int number = 1; std::getline(input, line); ++number) {
        auto const entry = line.compare(0, 1, "{") == 0 ? entry_of_json(line) : entry_of_text(line);
        if (!entry) {
            fail(kFailed, file + ", line " + std::to_string(number) + ": no line of a journal");
            return false;
        }
        journal.push_back(*entry);
    }
    return true;
}

constexpr char const* kReset = "\x1B[0m";
constexpr char const* kDim = "\x1B[2m";
constexpr char const* kRed = "\x1B[31m";
constexpr char const* kGreen = "\x1B[32m";

char const* colour_of(Entry const& entry) {
    if (entry[error] != "-" || entry[kind] == "lost") {
        return kRed;
    }
    if (entry[kind] == "callback") {
        return "\x1B[36m";
    }
    return entry[kind] == "command" ? "\x1B[33m" : entry[kind] == "program" ? "\x1B[35m" : "";
}

void print_entry(Entry const& entry, bool colours) {
    std::string line = printable(line_of(entry));
    if (colours) {
        // Times and number step back behind what happened.
        std::size_t const head = entry[start].size() + entry[took].size() + entry[sequence].size() + 2;
        line = kDim + line.substr(0, head) + kReset + colour_of(entry) + line.substr(head) + kReset;
    }
    std::printf("%s\n", line.c_str());
}

bool takes(JournalFilter const& filter, Entry const& entry) {
    bool const has_text = filter.text.find('*') == std::string::npos
                              ? entry[text].find(filter.text) != std::string::npos
                              : matches(filter.text, entry[text]);
    return (filter.kind.empty() || entry[kind] == filter.kind) &&
           (filter.program.empty() || entry[program] == filter.program) && (!filter.failed || entry[error] != "-") &&
           has_text;
}

// What of it counts.
std::vector<std::string> essence_of(std::vector<Entry> const& journal, bool times) {
    std::vector<std::string> lines;
    for (Entry entry : journal) {
        entry[sequence] = "";
        if (!times) {
            entry[start] = entry[took] = "";
        }
        lines.push_back(line_of(entry));
    }
    return lines;
}

}  // namespace

int show_journal(std::string const& file, JournalFilter const& filter) {
    std::vector<Entry> journal;
    if (!read_journal(file, journal)) {
        return kFailed;
    }
    bool const colours = terminal_has_colours();
    for (Entry const& entry : journal) {
        if (takes(filter, entry)) {
            print_entry(entry, colours);
        }
    }
    return 0;
}

int diff_journals(std::string const& one, std::string const& other, bool times) {
    std::vector<Entry> first;
    std::vector<Entry> second;
    if (!read_journal(one, first) || !read_journal(other, second)) {
        return kFailed;
    }
    bool const colours = terminal_has_colours();
    bool differs = false;
    for (Difference const& difference : compare(essence_of(first, times), essence_of(second, times))) {
        if (difference.side == Difference::Side::both) {
            continue;
        }
        bool const is_first = difference.side == Difference::Side::first;
        std::string const line =
            (is_first ? "- " : "+ ") + printable(line_of((is_first ? first : second)[difference.line]));
        std::printf("%s\n", colours ? ((is_first ? kRed : kGreen) + line + kReset).c_str() : line.c_str());
        differs = true;
    }
    return differs ? 1 : 0;
}

// After E. W. Myers, An O(ND) Difference Algorithm: for each number of differences the furthest that each diagonal
// comes to, and then the way back.
std::vector<Difference> compare(std::vector<std::string> const& one, std::vector<std::string> const& other) {
    using Side = Difference::Side;
    auto const n = static_cast<std::ptrdiff_t>(one.size());
    auto const m = static_cast<std::ptrdiff_t>(other.size());
    auto const same = [&](std::ptrdiff_t x, std::ptrdiff_t y) {
        return x < n && y < m && one[static_cast<std::size_t>(x)] == other[static_cast<std::size_t>(y)];
    };
    using Row = std::vector<std::ptrdiff_t>;  // of d differences: x on the diagonals -d - 1 to d + 1
    auto const at = [](Row const& row, std::ptrdiff_t d, std::ptrdiff_t k) {
        return row[static_cast<std::size_t>(k + d + 1)];
    };
    // Whether the best way to diagonal k, after the row of d - 1 differences, takes a line of the second.
    auto const goes_down = [&](Row const& before, std::ptrdiff_t d, std::ptrdiff_t k) {
        return k == -d || (k != d && at(before, d - 1, k - 1) < at(before, d - 1, k + 1));
    };
    std::vector<Row> rows;
    std::ptrdiff_t d = 0;
    for (bool arrived = false; !arrived; ++d) {
        Row row(static_cast<std::size_t>(2 * d + 3), -1);
        for (std::ptrdiff_t k = -d; k <= d; k += 2) {
            std::ptrdiff_t x = 0;
            if (d > 0) {
                Row const& before = rows.back();
                x = goes_down(before, d, k) ? at(before, d - 1, k + 1) : at(before, d - 1, k - 1) + 1;
            }
            while (same(x, x - k)) {
                ++x;
            }
            row[static_cast<std::size_t>(k + d + 1)] = x;
            arrived = arrived || (x >= n && x - k >= m);
        }
        rows.push_back(std::move(row));
    }
    std::vector<Difference> way;
    std::ptrdiff_t x = n;
    std::ptrdiff_t y = m;
    for (--d; d > 0; --d) {
        std::ptrdiff_t const k = x - y;
        Row const& before = rows[static_cast<std::size_t>(d - 1)];
        bool const down = goes_down(before, d, k);
        std::ptrdiff_t const from = down ? at(before, d - 1, k + 1) : at(before, d - 1, k - 1);
        for (; x > (down ? from : from + 1); --x, --y) {
            way.push_back({Side::both, static_cast<std::size_t>(x - 1)});
        }
        if (down) {
            way.push_back({Side::second, static_cast<std::size_t>(--y)});
        } else {
            way.push_back({Side::first, static_cast<std::size_t>(--x)});
        }
    }
    for (; x > 0; --x) {
        way.push_back({Side::both, static_cast<std::size_t>(x - 1)});
    }
    std::reverse(way.begin(), way.end());
    return way;
}

}  // namespace sim
