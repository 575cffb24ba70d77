// Tests of the sandbox that r47-sim makes, from the inside: the same with each tool.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/sim/temporary_directory.h"
#include "tests/sim/tool/shell.h"

namespace {

#ifdef R47_UNTRACEABLE
constexpr bool kTraceable = false;
#else
constexpr bool kTraceable = true;
#endif
char const* const kNoProot = "proot is not installed, or cannot trace programs of this build";

bool proot_can_trace() {
    return kTraceable && shell("command -v proot").status == 0;
}

class SandboxTest : public testing::Test {
protected:
    // The devices of a test are in a directory of its own.
    SandboxTest() {
        std::filesystem::create_directory(programs_);
        ::setenv("XDG_RUNTIME_DIR", directory_.path().c_str(), 1);
        ::unsetenv("R47_SIM_DEVICE");
    }
    ~SandboxTest() override { ::setenv("PATH", path_.c_str(), 1); }

    Result run(std::string const& options, std::string const& command) {
        return shell(sim_ + " run " + options + " -- " + command);
    }

    // From now on this program is found in place of the host's own.
    void replace_program(std::string const& name, std::string const& script) {
        std::ofstream(programs_ + "/" + name) << "#!/bin/sh\n" << script << "\n";
        std::filesystem::permissions(programs_ + "/" + name, std::filesystem::perms(0755));
        ::setenv("PATH", (programs_ + ":" + path_).c_str(), 1);
    }
    // From now on only the replaced programs, and the emulator, are found.
    void hide_programs() {
        shell("ln -s $(command -v " R47_SIM_EMULATOR ") " + programs_);
        ::setenv("PATH", programs_.c_str(), 1);
    }

    std::string const path_ = std::getenv("PATH");
    std::string const sim_ = std::string(R47_SIM_EMULATOR) + " " + R47_SIM;
    std::string const probe_ = std::string(R47_EMULATOR) + " " + R47_PROBE;
    TemporaryDirectory directory_;
    std::string const programs_ = directory_.path() + "/bin";
};

// With bubblewrap, and with proot as on a host without namespaces.
class EverySandboxTest : public SandboxTest, public testing::WithParamInterface<char const*> {
protected:
    void SetUp() override {
        if (by_proot() && !proot_can_trace()) {
            GTEST_SKIP() << kNoProot;
        }
        if (!by_proot() && !host_allows_namespaces()) {
            GTEST_SKIP() << kNoNamespaces;
        }
        if (by_proot()) {
            replace_program("bwrap", "exit 1");
        }
    }

    bool by_proot() const { return std::string(GetParam()) == "Proot"; }
};

TEST_P(EverySandboxTest, TheDevicesFilesAreThere) {
    Result const result = run("",
                              "sh -c 'for f in /dev/r47-rtu-driver /dev/r47-illumination-driver "
                              "/dev/r47-autofocus-driver /dev/r47-tof-driver /dev/imx296 /dev/imx567 /dev/i2c-2 "
                              "/dev/gpiochip1 /opt/kelvora/libhal/fw/kelvora-260AP_1.6.fw "
                              "/opt/kelvora/libhal/fw/kelvora-260AB_turbo-1.x.fw; do [ -r $f ] || echo missing $f; "
                              "done; cat /sys/class/gpio/gpio481/value; echo 481 > /sys/class/gpio/export; "
                              "echo 481 > /sys/class/gpio/unexport; stat -L -c %a /dev/imx296'");
    EXPECT_EQ(result.output, "0\n600\n");
    EXPECT_EQ(result.status, 0);
}

TEST_P(EverySandboxTest, FilesCanBeLeftOut) {
    Result const result = run("--without /dev/imx296 --without /sys/class/gpio/gpio481/value",
                              "sh -c 'for f in /dev/imx296 /dev/imx567 /sys/class/gpio/gpio481/value; do "
                              "[ ! -e $f ] || echo $f; done'");
    EXPECT_EQ(result.output, "/dev/imx567\n");
}

TEST_P(EverySandboxTest, TheUserCountsAsRoot) {
    EXPECT_EQ(run("", "id -u").output, "0\n");
    EXPECT_EQ(run("", "id -g").output, "0\n");
}

TEST_P(EverySandboxTest, TheHostIsReadOnlyAndItsTmpHidden) {
    std::string const mark = "/tmp/r47-sim-run-test-" + std::to_string(::getpid());
    Result const result =
        run("", "sh -c 'touch /usr/" + std::to_string(::getpid()) + " || echo refused; ls -A /tmp | grep run-test-" +
                    std::to_string(::getpid()) + "; echo private > " + mark + "; cat " + mark + "' 2>/dev/null");
    EXPECT_EQ(result.output, "refused\nprivate\n");
    EXPECT_FALSE(std::filesystem::exists(mark));
}

TEST_P(EverySandboxTest, TheWorkingDirectoryStaysAndCanBeWritten) {
    Result const result = shell("cd " + directory_.path() + " && " + sim_ + " run -- sh -c 'pwd; echo kept > file'");
    EXPECT_EQ(result.output, directory_.path() + "\n");
    EXPECT_EQ(read(directory_.path() + "/file"), "kept\n");
}

TEST_P(EverySandboxTest, TheExitStatusPassesThrough) {
    EXPECT_EQ(run("", "sh -c 'exit 7'").status, 7);
    EXPECT_EQ(run("", "sh -c 'kill -9 $$'").status, 128 + 9);
}

TEST_P(EverySandboxTest, InputAndOutputPassThrough) {
    Result const result = shell("echo text | " + sim_ + " run -- sh -c 'cat; echo error >&2'");
    EXPECT_EQ(result.output, "text\nerror\n");
}

TEST_P(EverySandboxTest, RunsInsideItself) {
    Result const result = run("", sim_ + " run -- sh -c 'id -u; ls /dev/imx296; exit 3'");
    EXPECT_EQ(result.output, "0\n/dev/imx296\n");
    EXPECT_EQ(result.status, 3);
}

TEST_P(EverySandboxTest, AProgramIsFoundInADirectoryThatIsHidden) {
    for (std::string const& program : {directory_.path() + "/program", directory_.path() + "-program"}) {
        std::ofstream(program) << "#!/bin/sh\necho started\n";
        std::filesystem::permissions(program, std::filesystem::perms(0755));
        Result const result = run("", program);
        EXPECT_EQ(result.output, "started\n") << program;
        std::filesystem::remove(program);
    }
}

TEST_P(EverySandboxTest, AnInstalledLibraryIsFoundBehindTheCallers) {
    std::string const bin = directory_.path() + "/usr/bin";
    std::string const library = std::filesystem::path(bin + "/" R47_LIBRARY_DIRECTORY).lexically_normal();
    std::filesystem::create_directories(bin);
    std::filesystem::create_directories(library);
    std::filesystem::copy(R47_SIM, bin);
    std::string const run = std::string(R47_SIM_EMULATOR) + " " + bin + "/r47-sim run -- sh -c ";
    std::string const tell = "'cat ${LD_LIBRARY_PATH##*:}/libhal.so.2; echo $LD_LIBRARY_PATH'";
    EXPECT_EQ(shell("LD_LIBRARY_PATH=/other " + run + "'echo $LD_LIBRARY_PATH'").output, "/other\n");
    std::ofstream(library + "/libhal.so.2") << "the library\n";
    EXPECT_EQ(shell("LD_LIBRARY_PATH= " + run + tell).output, "the library\n" + library + "\n");
    EXPECT_EQ(shell("LD_LIBRARY_PATH=/other " + run + tell).output, "the library\n/other:" + library + "\n");
}

TEST_P(EverySandboxTest, DescriptorZeroStaysTheProgramsOwn) {
    EXPECT_EQ(run("", probe_ + " fd").output, "0\nrevision 0: 1.6 state 0: 1\n");
}

TEST_P(EverySandboxTest, ACommandThatIsNotFoundIsToldOf) {
    Result const result = run("", "no-such-command");
    EXPECT_EQ(result.output, "r47-sim: no-such-command: no such command\n");
    EXPECT_EQ(result.status, 127);
}

TEST_P(EverySandboxTest, ACommandThatCannotBeExecutedIsToldOf) {
    std::string const file = directory_.path() + "/text";
    std::ofstream(file) << "no program\n";
    Result const result = run("", file);
    EXPECT_EQ(result.output, "r47-sim: " + file + ": Permission denied\n");
    EXPECT_EQ(result.status, 126);
}

TEST_P(EverySandboxTest, WhatIsNoProgramIsToldOf) {
    Result result = run("", directory_.path());
    EXPECT_EQ(result.output, "r47-sim: " + directory_.path() + ": no program\n");
    EXPECT_EQ(result.status, 126);
    std::string const file = directory_.path() + "/script";
    std::ofstream(file) << "#! /no/such/shell -x\n";
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    result = run("", file);
    EXPECT_EQ(result.output, "r47-sim: " + file + ": its interpreter /no/such/shell: No such file or directory\n");
    EXPECT_EQ(result.status, 126);
}

TEST_P(EverySandboxTest, ProgramWhoseLoaderIsMissingIsToldOf) {
    std::string program = read(R47_PROBE);
    std::size_t const loader = program.find(std::string("\0/lib", 5));  // its path stands before all other texts
    ASSERT_NE(loader, std::string::npos);
    program.replace(loader, 5, std::string("\0/no/", 5));
    std::string const file = directory_.path() + "/program";
    std::ofstream(file) << program;
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    Result const result = run("", file);
    EXPECT_EQ(result.output.find("r47-sim: " + file + ": its loader /no/"), 0U) << result.output;
    EXPECT_EQ(result.status, 126);
    std::string const script = directory_.path() + "/script";
    std::ofstream(script) << "#!" << file << "\n";
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    EXPECT_EQ(run("", script).output.find("r47-sim: " + script + ": its interpreter " + file + ": its loader /no/"),
              0U);
}

TEST_P(EverySandboxTest, WhatNobodyMayReadIsNotRead) {
    if (by_proot() && ::geteuid() != 0) {
        GTEST_SKIP() << "proot gives a user all his own files";
    }
    EXPECT_EQ(run("", "sh -c 'chmod 000 /dev/imx296; cat /dev/imx296 2>/dev/null || echo refused'").output,
              "refused\n");
}

TEST_P(EverySandboxTest, ToolsSeeTheSandboxsFilesByNewSystemCallsToo) {
    EXPECT_EQ(run("", "stat -c %s /sys/class/gpio/gpio481/value").output, "2\n") << "statx";
    EXPECT_EQ(run("", "mv /dev/imx296 /dev/imx567").output, "") << "renameat2";
    EXPECT_EQ(run("", "test -r /dev/imx296").status, 0) << "faccessat2";
}

INSTANTIATE_TEST_SUITE_P(, EverySandboxTest, testing::Values("Bubblewrap", "Proot"),
                         [](auto const& tool) { return std::string(tool.param); });

TEST_F(SandboxTest, ANetworkOfItsOwnHasOnlyLoopback) {
    if (!host_allows_namespaces()) {
        GTEST_SKIP() << kNoNamespaces;
    }
    EXPECT_EQ(run("--private-network", "sh -c 'tail -n +3 /proc/self/net/dev | cut -d: -f1 | tr -d \" \"'").output,
              "lo\n");
}

TEST_F(SandboxTest, ANetworkOfItsOwnNeedsNamespaces) {
    replace_program("bwrap", "exit 1");
    Result const result = run("--private-network", "echo started");
    EXPECT_EQ(result.output,
              "r47-sim: --private-network needs bwrap and a host that allows network namespaces; this one does not\n");
    EXPECT_EQ(result.status, 125);
}

TEST_F(SandboxTest, AKilledSandboxTakesItsProgramsAndFilesAlong) {
    if (!proot_can_trace()) {
        GTEST_SKIP() << kNoProot;
    }
    std::string real = shell("command -v proot").output;
    real.pop_back();  // the line end
    replace_program("bwrap", "exit 1");
    // The last word behind -r is the sandbox's root directory.
    replace_program("proot",
                    "[ \"$3\" != -r ] || echo \"$4\" $$ >" + directory_.path() + "/root; exec " + real + " \"$@\"");
    // The command is mute: whose tracer is killed in one of its system calls can be left with a torn stack, and abort.
    Result const result = shell(
        "cd " + directory_.path() + " && mkfifo began && { " + sim_ +
        " run -- sh -c 'exec 2>/dev/null; echo $$ >began; exec sleep 1000' & } && read program <began && read root "
        "proot <root && "
        "[ -d $root ] && ls /tmp/prooted-$proot-* >/dev/null && kill -9 $! && for try in $(seq 6000); do "
        "[ -e $root ] || [ -e /proc/$program ] || ls /tmp/prooted-$proot-* 2>/dev/null || { echo gone; break; }; "
        "sleep 0.01; done | grep -v prooted");
    EXPECT_EQ(result.output, "gone\n");
}

TEST_F(SandboxTest, WhatIsMissingOrForbiddenIsToldOf) {
    struct Case {
        char const* bwrap;
        char const* proot;
        char const* message;
    };
    constexpr char const* kNone = nullptr;
    for (Case const& host :
         {Case{kNone, kNone, "r47-sim: bwrap is missing: install the package bubblewrap\n"},
          Case{"exit 1", kNone,
               "r47-sim: this host lets this user make no namespaces, and proot is missing: install the package "
               "proot\n"},
          Case{"exit 1", "exit 1",
               "r47-sim: this host allows neither namespaces (bwrap) nor tracing (proot): start the container with "
               "--cap-add SYS_PTRACE or --security-opt seccomp=unconfined, or use another host\n"}}) {
        if (host.bwrap != kNone) {
            replace_program("bwrap", host.bwrap);
        }
        if (host.proot != kNone) {
            replace_program("proot", host.proot);
        }
        hide_programs();
        Result const result = run("", "/bin/echo started");
        EXPECT_EQ(result.output, host.message);
        EXPECT_EQ(result.status, 125);
        ::setenv("PATH", path_.c_str(), 1);
    }
}

TEST_F(SandboxTest, RootNeedsNoUserNamespaces) {
    if (::geteuid() != 0 || !host_allows_namespaces()) {
        GTEST_SKIP() << "for root with namespaces alone";
    }
    std::string real = shell("command -v bwrap").output;
    real.pop_back();  // the line end
    replace_program("bwrap", "case \" $* \" in *' --unshare-user '*) exit 1 ;; esac\nexec " + real + " \"$@\"");
    replace_program("proot", "exit 1");
    EXPECT_EQ(run("", probe_).output, "revision 0: 1.6 state 0: 1\n");
}

}  // namespace
