// Tests of the panel's command line.
#include <gtest/gtest.h>

#include <string>

#include "tests/sim/tool/shell.h"

namespace {

std::string const kPanel = R47_PANEL_PROGRAM;
std::string const kNoDevice = " --device /no/such/device";

TEST(PanelProgramTest, HelpNamesTheOptions) {
    for (char const* const word : {" -h", " --help"}) {
        auto const [status, output] = shell(kPanel + word);
        EXPECT_EQ(status, 0);
        EXPECT_NE(output.find("usage: r47-panel [OPTION...]\n"), std::string::npos) << output;
        for (char const* const option : {"--device NAME", "--port N", "--beside PID"}) {
            EXPECT_NE(output.find(option), std::string::npos) << output;
        }
    }
}

TEST(PanelProgramTest, VersionIsThatOfTheProject) {
    auto const [status, output] = shell(kPanel + " --version");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(output.find("r47-panel "), 0U) << output;
    EXPECT_EQ(shell(std::string(R47_SIM) + " --version").output.substr(8), output.substr(10));
}

TEST(PanelProgramTest, WhatItDoesNotUnderstandIsSaid) {
    struct Case {
        char const* words;
        char const* error;
    };
    for (auto const& [words, error] :
         {Case{" --prot 1", "r47-sim: unknown option --prot: did you mean --port?\n"},
          Case{" --port 0", "r47-sim: bad port 0: 1 to 65535\n"},
          Case{" --port 65536", "r47-sim: bad port 65536: 1 to 65535\n"},
          Case{" --beside me", "r47-sim: bad process me\n"}, Case{" --beside 0", "r47-sim: bad process 0\n"}}) {
        auto const result = shell(kPanel + kNoDevice + words + " 2>&1");
        EXPECT_EQ(result.output, error);
        EXPECT_EQ(result.status, 125);
    }
    EXPECT_EQ(shell(kPanel + " --port 2>&1").status, 125);
}

}  // namespace
