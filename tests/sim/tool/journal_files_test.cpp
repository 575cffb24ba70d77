// Tests of what r47-sim does with journals in files.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tests/sim/temporary_directory.h"
#include "tests/sim/tool/shell.h"

namespace {

using Lines = std::vector<std::string>;

class JournalFilesTest : public testing::Test {
protected:
    Result journal(std::string const& words) const {
        return shell(std::string(R47_SIM_EMULATOR) + " " R47_SIM " journal " + words);
    }

    std::string file(std::string const& name, std::string const& content) const {
        std::string path = directory_.path() + "/" + name;
        std::ofstream(path) << content;
        return path;
    }
    std::string file(std::string const& name, Lines const& calls) const {
        std::string content;
        for (std::string const& call : calls) {
            content += "0.000000 0.000000 1 call p.1 1 1 - - " + call + "\n";
        }
        return file(name, content);
    }

    TemporaryDirectory directory_;
};

constexpr char const* kText =
    "0.000000 0.000000 1 command - - - - - clock stepped\n"
    "0.000000 0.000000 2 program r47-console.1 - - - - connected\n"
    "0.500000 0.020000 3 call r47-console.1 1 1 EIO 2 rtu_t::get_exposure() = -1\n"
    "0.520000 0.000000 4 callback r47-console.1 - 2 - - gyro_delegate_t(37)\n";
constexpr char const* kJson =
    "{\"sequence\": 1, \"start\": 0.000000, \"took\": 0.000000, \"kind\": \"command\", \"text\": \"clock stepped\"}\n"
    "{\"sequence\": 2, \"start\": 0.000000, \"took\": 0.000000, \"kind\": \"program\", \"program\": \"r47-console.1\", "
    "\"text\": \"connected\"}\n"
    "{\"sequence\": 3, \"start\": 0.500000, \"took\": 0.020000, \"kind\": \"call\", \"program\": \"r47-console.1\", "
    "\"thread\": 1, \"object\": 1, \"error\": \"EIO\", \"rule\": 2, \"text\": \"rtu_t::get_exposure() = -1\"}\n"
    "{\"sequence\": 4, \"start\": 0.520000, \"took\": 0.000000, \"kind\": \"callback\", \"program\": "
    "\"r47-console.1\", "
    "\"thread\": 0, \"object\": 2, \"text\": \"gyro_delegate_t(37)\"}\n";

TEST_F(JournalFilesTest, TextAndJsonShowTheSame) {
    EXPECT_EQ(journal("show " + file("text", kText)).output, kText);
    EXPECT_EQ(journal("show " + file("json", kJson)).output, kText);
    EXPECT_EQ(journal("show - <" + file("json", kJson)).output, kText);
    EXPECT_EQ(journal("diff --times " + file("text", kText) + " " + file("json", kJson)).output, "");
}

TEST_F(JournalFilesTest, OnlyWhatTheFilterTakesIsShown) {
    std::string const path = file("text", kText);
    auto const numbers = [&](std::string const& options) {
        std::istringstream lines(journal("show " + options + " " + path).output);
        std::string all;
        for (std::string start, took, number, rest; lines >> start >> took >> number && std::getline(lines, rest);) {
            all += number;
        }
        return all;
    };
    EXPECT_EQ(numbers(""), "1234");
    EXPECT_EQ(numbers("--kind callback"), "4");
    EXPECT_EQ(numbers("--program r47-console.1"), "234");
    EXPECT_EQ(numbers("--failed"), "3");
    EXPECT_EQ(numbers("--text get_"), "3");
    EXPECT_EQ(numbers("--text '*t*ped'"), "1");
    EXPECT_EQ(numbers("--text 'get_*'"), "");
    EXPECT_EQ(numbers("--kind call --program other.1"), "");
}

TEST_F(JournalFilesTest, ATerminalGetsColours) {
    std::string const command = std::string(R47_SIM_EMULATOR) + " " R47_SIM " journal show " + file("text", kText);
    std::string const shown = shell("TERM=xterm script -qc '" + command + "' /dev/null </dev/null").output;
    EXPECT_NE(shown.find("\x1B[31m call r47-console.1 1 1 EIO"), std::string::npos) << shown;
    std::string const plain = shell("NO_COLOR=1 TERM=xterm script -qc '" + command + "' /dev/null </dev/null").output;
    EXPECT_EQ(plain.find('\x1B'), std::string::npos) << plain;
}

TEST_F(JournalFilesTest, TimesCountOnlyWhenTheyAreAskedFor) {
    std::string const one = file("one", kText);
    std::string late = kText;
    late.replace(late.find("0.520000"), 8, "0.530000");
    std::string const other = file("other", late);
    Result const same = journal("diff " + one + " " + other);
    EXPECT_EQ(same.output, "");
    EXPECT_EQ(same.status, 0);
    Result const differ = journal("diff --times " + one + " " + other);
    EXPECT_EQ(differ.output,
              "- 0.520000 0.000000 4 callback r47-console.1 - 2 - - gyro_delegate_t(37)\n"
              "+ 0.530000 0.000000 4 callback r47-console.1 - 2 - - gyro_delegate_t(37)\n");
    EXPECT_EQ(differ.status, 1);
}

TEST_F(JournalFilesTest, WhatIsNewAndWhatIsGoneIsTold) {
    Result const result = journal("diff " + file("a", Lines{"one()", "two()", "three()"}) + " " +
                                  file("b", Lines{"two()", "new()", "three()", "four()"}));
    EXPECT_EQ(result.status, 1);
    std::string const head = " 0.000000 0.000000 1 call p.1 1 1 - - ";
    EXPECT_EQ(result.output, "-" + head + "one()\n+" + head + "new()\n+" + head + "four()\n");
}

std::size_t most_common(Lines const& one, Lines const& other) {
    std::vector<std::vector<std::size_t>> common(one.size() + 1, std::vector<std::size_t>(other.size() + 1));
    for (std::size_t i = 1; i <= one.size(); ++i) {
        for (std::size_t j = 1; j <= other.size(); ++j) {
            common[i][j] =
                one[i - 1] == other[j - 1] ? common[i - 1][j - 1] + 1 : std::max(common[i - 1][j], common[i][j - 1]);
        }
    }
    return common[one.size()][other.size()];
}

TEST_F(JournalFilesTest, TheDifferenceLeadsFromOneToTheOtherAndIsTheLeast) {
    std::mt19937 random(47);
    for (int round = 0; round < 20; ++round) {
        auto const any = [&] {
            Lines lines(random() % 30);
            std::generate(lines.begin(), lines.end(), [&] { return "call" + std::to_string(random() % 5); });
            return lines;
        };
        Lines const one = any();
        Lines const other = any();
        std::istringstream difference(journal("diff " + file("one", one) + " " + file("other", other)).output);
        Lines gone;
        Lines come;
        for (std::string line; std::getline(difference, line);) {
            (line.front() == '-' ? gone : come).push_back(line.substr(line.rfind(' ') + 1));
        }
        std::size_t const common = most_common(one, other);
        EXPECT_EQ(gone.size(), one.size() - common);
        EXPECT_EQ(come.size(), other.size() - common);
        // What is left of both is the same.
        auto const left_of = [](Lines lines, Lines const& taken) {
            std::sort(lines.begin(), lines.end());
            for (std::string const& line : taken) {
                auto const found = std::find(lines.begin(), lines.end(), line);
                EXPECT_NE(found, lines.end());
                if (found != lines.end()) {
                    lines.erase(found);
                }
            }
            return lines;
        };
        EXPECT_EQ(left_of(one, gone), left_of(other, come));
    }
}

TEST_F(JournalFilesTest, WhatIsNoJournalIsRefused) {
    std::string const bad = file("bad", std::string(kText) + "nonsense\n");
    EXPECT_EQ(journal("show " + bad).output, "r47-sim: " + bad + ", line 5: no line of a journal\n");
    EXPECT_EQ(journal("show " + bad).status, 125);
    EXPECT_EQ(journal("show " + file("worse", std::string("{\"start\": }\n"))).status, 125);
    EXPECT_EQ(journal("diff " + bad + " " + directory_.path() + "/nothing").status, 125);
    Result const missing = journal("show " + directory_.path() + "/nothing");
    EXPECT_EQ(missing.output, "r47-sim: cannot read " + directory_.path() + "/nothing: No such file or directory\n");
    EXPECT_EQ(journal("diff " + bad).status, 125);
    EXPECT_EQ(journal("show --nonsense " + bad).status, 125);
}

}  // namespace
