// Tests of r47-sim, from the outside: programs inside the device, and commands to it.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/sim/temporary_directory.h"

namespace {

struct Result {
    int status;
    std::string output;
};

// Runs a shell command; standard error goes with the output.
Result shell(std::string const& command) {
    FILE* const pipe = ::popen(("exec 2>&1; " + command).c_str(), "r");
    std::string output;
    std::array<char, 4096> bytes{};
    for (std::size_t count = 0; (count = std::fread(bytes.data(), 1, bytes.size(), pipe)) > 0;) {
        output.append(bytes.data(), count);
    }
    int const status = ::pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

std::string read(std::string const& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

class RunTest : public testing::Test {
protected:
    // r47-sim run with a control socket of this test's own.
    Result run(std::string const& options, std::string const& command) {
        return shell(sim_ + " run --control " + socket_ + " " + options + " -- " + command);
    }

    std::string const sim_ = std::string(R47_SIM_EMULATOR) + " " + R47_SIM;
    std::string const probe_ = std::string(R47_EMULATOR) + " " + R47_PROBE;
    TemporaryDirectory directory_;
    std::string const socket_ = directory_.path() + "/control.sock";
};

TEST_F(RunTest, TheDevicesFilesAreThere) {
    Result const result = run("",
                              "sh -c 'for f in /dev/r47-rtu-driver /dev/r47-illumination-driver "
                              "/dev/r47-autofocus-driver /dev/r47-tof-driver /dev/imx296 /dev/imx567 /dev/i2c-2 "
                              "/dev/gpiochip1 /opt/kelvora/libhal/fw/kelvora-260AP_1.6.fw "
                              "/opt/kelvora/libhal/fw/kelvora-260AB_turbo-1.x.fw; do [ -r $f ] || echo missing $f; "
                              "done; cat /sys/class/gpio/gpio481/value; echo 481 > /sys/class/gpio/export; "
                              "echo 481 > /sys/class/gpio/unexport; stat -c %a /dev/imx296'");
    EXPECT_EQ(result.output, "0\n600\n");
    EXPECT_EQ(result.status, 0);
}

TEST_F(RunTest, FilesCanBeLeftOut) {
    Result const result = run("--without /dev/imx296 --without /sys/class/gpio/gpio481/value",
                              "sh -c 'ls /dev/imx296 /dev/imx567 /sys/class/gpio/gpio481/value 2>/dev/null'");
    EXPECT_EQ(result.output, "/dev/imx567\n");
}

TEST_F(RunTest, TheUserCountsAsRoot) {
    EXPECT_EQ(run("", "id -u").output, "0\n");
    EXPECT_EQ(run("", "id -g").output, "0\n");
}

TEST_F(RunTest, TheHostIsReadOnlyAndItsTmpHidden) {
    std::string const mark = "/tmp/r47-sim-run-test-" + std::to_string(::getpid());
    Result const result =
        run("", "sh -c 'touch /usr/" + std::to_string(::getpid()) + " || echo refused; ls -A /tmp | grep run-test-" +
                    std::to_string(::getpid()) + "; echo private > " + mark + "; cat " + mark + "' 2>/dev/null");
    EXPECT_EQ(result.output, "refused\nprivate\n");
    EXPECT_FALSE(std::filesystem::exists(mark));
}

TEST_F(RunTest, TheWorkingDirectoryStaysAndCanBeWritten) {
    Result const result = shell("cd " + directory_.path() + " && " + sim_ + " run --control " + socket_ +
                                " -- sh -c 'pwd; echo kept > file'");
    EXPECT_EQ(result.output, directory_.path() + "\n");
    EXPECT_EQ(read(directory_.path() + "/file"), "kept\n");
}

TEST_F(RunTest, TheExitStatusPassesThrough) {
    EXPECT_EQ(run("", "sh -c 'exit 7'").status, 7);
    EXPECT_EQ(run("", "sh -c 'kill -9 $$'").status, 128 + 9);
}

TEST_F(RunTest, InputAndOutputPassThrough) {
    Result const result =
        shell("echo text | " + sim_ + " run --control " + socket_ + " -- sh -c 'cat; echo error >&2'");
    EXPECT_EQ(result.output, "text\nerror\n");
}

TEST_F(RunTest, ANetworkOfItsOwnHasOnlyLoopback) {
    EXPECT_EQ(run("--private-network", "sh -c 'tail -n +3 /proc/self/net/dev | cut -d: -f1 | tr -d \" \"'").output,
              "lo\n");
}

TEST_F(RunTest, RunsInsideItself) {
    Result const result = run("", sim_ + " run -- sh -c 'id -u; ls /dev/imx296; exit 3'");
    EXPECT_EQ(result.output, "0\n/dev/imx296\n");
    EXPECT_EQ(result.status, 3);
}

TEST_F(RunTest, AProgramMeetsTheDevice) {
    EXPECT_EQ(run("", probe_).output, "revision 0: 1.6 state 0: 1\n");
    EXPECT_EQ(run("--without /dev/r47-rtu-driver", probe_).output, "revision -1: 0.0 state -1: 0\n");
}

TEST_F(RunTest, CallsAreJournaled) {
    std::string const journal = directory_.path() + "/journal";
    std::ofstream(journal) << "old\n";
    run("--journal " + journal, probe_);
    Result const lines = shell("sed 's/^[0-9]*\\.[0-9]* //' " + journal);
    EXPECT_EQ(lines.output,
              "1 rtu_t::rtu_t(\"/dev/r47-rtu-driver\", 2)\n"
              "2 system_t::system_t(\"/dev/r47-rtu-driver\", 2)\n"
              "1 rtu_t::get_revision() = 0 [{1, 6, 0, 2, 22, 14}]\n"
              "2 system_t::get_device_status() = 0 [1]\n"
              "2 system_t::~system_t()\n"
              "1 rtu_t::~rtu_t()\n");
}

TEST_F(RunTest, AScenarioActsBeforeTheProgramsFirstCall) {
    std::string const scenario = directory_.path() + "/scenario";
    std::ofstream(scenario) << "set system.state 6\nfault add rtu_t::get_revision value 9,8\n";
    EXPECT_EQ(run("--scenario " + scenario, probe_).output, "revision 0: 9.8 state 0: 6\n");
}

TEST_F(RunTest, AScenarioMayRestoreWhatWasLeftOut) {
    std::string const scenario = directory_.path() + "/scenario";
    std::ofstream(scenario) << "node restore /dev/r47-rtu-driver\n";
    EXPECT_EQ(run("--without /dev/r47-rtu-driver --scenario " + scenario, probe_).output,
              "revision 0: 1.6 state 0: 1\n");
}

TEST_F(RunTest, ABadScenarioStartsNothing) {
    std::string const scenario = directory_.path() + "/scenario";
    std::ofstream(scenario) << "set system.state 6\n1s nonsense\n";
    Result const result = run("--scenario " + scenario, "echo started");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "r47-sim: scenario " + scenario + ", line 2: unknown command \"nonsense\": try help\n");
}

TEST_F(RunTest, ABadScenarioEndsAProgramThatLoadsTheLibrary) {
    std::string const scenario = directory_.path() + "/scenario";
    std::ofstream(scenario) << "nonsense\n";
    Result const result = shell("R47_SIM_SCENARIO=" + scenario + " " + probe_);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "libhal: scenario " + scenario + ", line 1: unknown command \"nonsense\": try help\n");
}

TEST_F(RunTest, ARunningDeviceIsControlled) {
    std::string const ask = sim_ + " --control " + socket_ + " ";
    // The probe waits on the pipe until it has been told its state.
    Result const result = shell("cd " + directory_.path() + " && mkfifo go said && { " + sim_ + " run --control " +
                                socket_ + " --clock stepped -- " + probe_ +
                                " wait <go >said & } && exec 8>go 9<said && read ready <&9 && echo $ready && " + ask +
                                "set system.state 9 && " + ask + "show --json system.state && " + ask +
                                "node remove /dev/r47-rtu-driver && " + ask + "node restore /dev/r47-rtu-driver && " +
                                ask + "step 1s && " + ask + "clock && echo clock | " + ask + "- && { " + ask +
                                "set system.state 7; echo $?; } && echo >&8 && cat <&9 && wait");
    EXPECT_EQ(result.output,
              "ready\n{\n  \"system.state\": 9\n}\nstepped\nstepped\n"
              "r47-sim: system.state: not a device state\n1\nrevision 0: 1.6 state 0: 9\n");
    EXPECT_FALSE(std::filesystem::exists(socket_)) << "the socket goes with the device";
}

TEST_F(RunTest, TheOnlyRunningDeviceIsFound) {
    std::string const in_directory =
        "cd " + directory_.path() + " && export XDG_RUNTIME_DIR=$PWD && mkfifo go said && ";
    Result const result = shell(in_directory + "{ " + sim_ + " run -- " + probe_ +
                                " wait <go >said & } && exec 8>go 9<said && read ready <&9 && " + sim_ +
                                " set system.state 4 && echo >&8 && cat <&9 && wait; " + sim_ + " show; echo $?");
    EXPECT_EQ(result.output, "revision 0: 1.6 state 0: 4\nr47-sim: no device is running: " + directory_.path() +
                                 "/r47-sim has no socket that answers\n1\n");
}

TEST_F(RunTest, DescriptorZeroStaysTheProgramsOwn) {
    EXPECT_EQ(run("", probe_ + " fd").output, "0\nrevision 0: 1.6 state 0: 1\n");
}

TEST_F(RunTest, WhatIsNotUnderstoodIsRefused) {
    struct Case {
        char const* options;
        char const* message;
    };
    for (Case const& bad : {Case{"--without /dev/null", "r47-sim: /dev/null is no file of the device\n"},
                            Case{"--clock fast", "r47-sim: usage: clock [real | scaled FACTOR | stepped]\n"},
                            Case{"--clock scaled 0", "r47-sim: bad factor 0: 0.001 to 1000\n"},
                            Case{"--frobnicate", "r47-sim: unknown option --frobnicate: try r47-sim help\n"}}) {
        Result const result = run(bad.options, "echo started");
        EXPECT_EQ(result.status, 2) << bad.options;
        EXPECT_EQ(result.output, bad.message);
    }
    EXPECT_EQ(shell(sim_ + " run").status, 2);
    EXPECT_EQ(shell(sim_ + " run -- ").status, 2);
    EXPECT_EQ(shell(sim_ + " run --journal").status, 2);
    EXPECT_EQ(shell(sim_).status, 2);
    EXPECT_EQ(shell(sim_ + " --control").status, 2);
    EXPECT_EQ(shell(sim_ + " --frobnicate").status, 2);
}

TEST_F(RunTest, ADirectoryForOthersIsRefusedForControl) {
    Result const result = shell(sim_ + " run --control /tmp/r47-sim-never.sock -- echo started");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "r47-sim: /tmp must belong to this user, and nobody else may enter it (mode 0700)\n");
}

TEST_F(RunTest, HelpNamesOptionsAndCommands) {
    Result const result = shell(sim_ + " help");
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.output.find("--without PATH"), std::string::npos);
    EXPECT_NE(result.output.find("fault add OPERATION"), std::string::npos);
    EXPECT_EQ(shell(sim_ + " --help").output, result.output);
}

}  // namespace
