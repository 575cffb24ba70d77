// Tests of r47-sim, from the outside: programs inside the device, and commands to it.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <utility>

#include "sim/control/control_socket.h"
#include "tests/sim/shell.h"
#include "tests/sim/temporary_directory.h"

namespace {

class RunTest : public testing::Test {
protected:
    // r47-sim run with a control socket of this test's own.
    Result run(std::string const& options, std::string const& command) {
        return shell(sim_ + " run --control " + socket_ + " " + options + " -- " + command);
    }

    // Runs the shell script `meanwhile` beside a device whose program waits until that is done, and then tells its
    // state; `command` starts the device.
    Result beside(std::string const& command, std::string const& meanwhile) {
        return shell("cd " + directory_.path() + " && mkfifo go said && { " + command + " " + probe_ +
                     " wait <go >said & } && exec 8>go 9<said && read ready <&9 && { " + meanwhile +
                     "; } && echo >&8 && cat <&9 && wait");
    }

    std::string const sim_ = std::string(R47_SIM_EMULATOR) + " " + R47_SIM;
    std::string const probe_ = std::string(R47_EMULATOR) + " " + R47_PROBE;
    TemporaryDirectory directory_;
    std::string const socket_ = directory_.path() + "/control.sock";
};

TEST_F(RunTest, AProgramMeetsTheDevice) {
    EXPECT_EQ(run("", probe_).output, "revision 0: 1.6 state 0: 1\n");
    EXPECT_EQ(run("--without /dev/r47-rtu-driver", probe_).output, "revision -1: 0.0 state -1: 0\n");
}

TEST_F(RunTest, EachModuleIsKnownByItsNode) {
    EXPECT_EQ(run("", probe_ + " modules").output,
              "/dev/r47-rtu-driver status 0: 0 revision 0: 1.6\n"
              "/dev/r47-illumination-driver status 0: 0 revision 0: 2.3\n"
              "/dev/r47-autofocus-driver status 0: 0 revision 0: 1.2\n"
              "/dev/i2c-2 status 0: 0 revision 0: 1.0\n"
              "/dev/imx296 status 0: 0 revision 0: 1.4\n"
              "/dev/imx567 status 0: 0 revision 0: 1.1\n"
              "/dev/r47-tof-driver status -1: 255 revision -1: 0.0\n"
              "/dev/imx296 status 0: 0 revision 0: 1.4\n"
              "/dev/imx567 status 0: 0 revision 0: 1.1\n"
              "/dev/imx296 serial number 0: 296001\n"
              "/dev/imx567 serial number 0: 567001\n"
              "trigger mode 2: -1\n");
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
    Result const result = beside(
        sim_ + " run --control " + socket_ + " --clock stepped --",
        "echo $ready && " + ask + "set system.state 9 && " + ask + "show --json system.state && " + ask +
            "node remove /dev/r47-rtu-driver && " + ask + "node restore /dev/r47-rtu-driver && " + ask + "step 1s && " +
            ask + "clock && echo clock | " + ask + "- && { " + ask + "set system.state 7; echo $?; }");
    EXPECT_EQ(result.output,
              "ready\n{\n  \"system.state\": 9\n}\nstepped\nstepped\n"
              "r47-sim: system.state: not a device state\n1\nrevision 0: 1.6 state 0: 9\n");
    EXPECT_FALSE(std::filesystem::exists(socket_)) << "the socket goes with the device";
}

TEST_F(RunTest, TheOnlyRunningDeviceIsFound) {
    std::string const own_directory = "XDG_RUNTIME_DIR=" + directory_.path() + " ";
    Result const result = beside(own_directory + sim_ + " run --", own_directory + sim_ + " set system.state 4");
    EXPECT_EQ(result.output, "revision 0: 1.6 state 0: 4\n");
    EXPECT_EQ(shell(own_directory + sim_ + " show | cut -d';' -f1").output,
              "r47-sim: no device is running: " + directory_.path() + "/r47-sim has no socket that answers\n");
}

TEST_F(RunTest, OthersAreToldThatRootsDeviceNeedsSudo) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "for root alone, who can be another user";
    }
    // Root's sockets are there from the first device on.
    shell("env -u XDG_RUNTIME_DIR " + sim_ + " run -- true");
    std::string const sim = directory_.path() + "/r47-sim";
    std::filesystem::copy_file(R47_SIM, sim);
    std::filesystem::permissions(directory_.path(), std::filesystem::perms(0755));
    Result const result = shell("cd / && env -u XDG_RUNTIME_DIR setpriv --reuid 65534 --clear-groups " +
                                std::string(R47_SIM_EMULATOR) + " " + sim + " show");
    EXPECT_EQ(result.output,
              "r47-sim: no device is running: /tmp/r47-sim-65534 has no socket that answers"
              "; for a device that root started, use sudo\n");
    EXPECT_EQ(result.status, 1);
}

TEST_F(RunTest, OneOfSeveralDevicesMustBeChosen) {
    std::filesystem::path const sockets = directory_.path() + "/r47-sim";
    sim::Error error;
    int const first = sim::listen_on(sockets / "1.sock", error);
    int const second = sim::listen_on(sockets / "2.sock", error);
    Result const result = shell("XDG_RUNTIME_DIR=" + directory_.path() + " " + sim_ + " show");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "r47-sim: several devices are running, choose one with --control:\n  " +
                                 (sockets / "1.sock").string() + "\n  " + (sockets / "2.sock").string() + "\n");
    ::close(first);
    ::close(second);
}

TEST_F(RunTest, ProgramsInsideTheDeviceControlIt) {
    EXPECT_EQ(run("", sim_ + " clock").output,
              "r47-sim: no device at /r47-sim/control/control.sock: No such file or directory\n")
        << "before a program has loaded the library there is nobody to ask";
    std::string const wait = "mkfifo /tmp/go /tmp/said; " + probe_ + " wait </tmp/go >/tmp/said & ";
    std::string const go = "exec 8>/tmp/go 9</tmp/said; read ready <&9; " + sim_ + " set system.state 3; ";
    EXPECT_EQ(run("", "sh -c '" + wait + go + "echo >&8; cat <&9; wait'").output, "revision 0: 1.6 state 0: 3\n");
    EXPECT_EQ(run("", "sh -c '" + wait + go + probe_ + "; echo >&8; cat <&9; wait'").output,
              "libhal: no control: /r47-sim/control/control.sock is served by another device\n"
              "revision 0: 1.6 state 0: 1\nrevision 0: 1.6 state 0: 3\n")
        << "a second program has a device of its own, without control";
}

// Serves one connection: takes a line and answers with a text.
class OneReply {
public:
    OneReply(std::string const& path, std::string reply) {
        sim::Error error;
        listener_ = sim::listen_on(path, error);
        EXPECT_EQ(error, "");
        server_ = std::thread([this, reply = std::move(reply)] {
            int const connection = ::accept(listener_, nullptr, nullptr);
            for (char c = 0; c != '\n' && ::recv(connection, &c, 1, 0) == 1;) {
            }
            ::send(connection, reply.data(), reply.size(), MSG_NOSIGNAL);  // the client may have gone
            ::close(connection);
        });
    }
    OneReply(OneReply const&) = delete;
    OneReply& operator=(OneReply const&) = delete;
    ~OneReply() {
        server_.join();
        ::close(listener_);
    }

private:
    int listener_ = -1;
    std::thread server_;
};

TEST_F(RunTest, TheJournalIsPrintedUntilTheDeviceEnds) {
    OneReply const device(socket_, "ok\n0.1 1 first\n0.2 1 second\n");
    Result const result = shell(sim_ + " --control " + socket_ + " journal follow");
    EXPECT_EQ(result.output, "0.1 1 first\n0.2 1 second\n");
    EXPECT_EQ(result.status, 0);
}

TEST_F(RunTest, ADeviceThatEndsBeforeItsReplyIsToldOf) {
    OneReply const device(socket_, "half");
    Result const result = shell(sim_ + " --control " + socket_ + " show");
    EXPECT_EQ(result.output, "r47-sim: the device ended\n");
    EXPECT_EQ(result.status, 1);
}

TEST_F(RunTest, ACommandOfSeveralLinesIsRefused) {
    OneReply const device(socket_, "ok\n");
    Result const result = shell(sim_ + " --control " + socket_ + " show 'a\nb'");
    EXPECT_EQ(result.output, "r47-sim: a command is one line\n");
    EXPECT_EQ(result.status, 1);
}

TEST_F(RunTest, NobodyAtTheSocketIsToldOf) {
    Result const result = shell(sim_ + " --control /nowhere.sock show");
    EXPECT_EQ(result.output, "r47-sim: no device at /nowhere.sock: No such file or directory\n");
    EXPECT_EQ(result.status, 1);
}

TEST_F(RunTest, AJournalThatCannotBeWrittenIsToldOf) {
    Result const result = run("--journal /nowhere/journal", "echo started");
    EXPECT_EQ(result.output, "r47-sim: cannot write the journal /nowhere/journal: No such file or directory\n");
    EXPECT_EQ(result.status, 1);
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
