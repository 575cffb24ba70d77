// Tests of r47-sim, from the outside: devices, programs inside them, and commands to them.
#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "sim/calls/connection.h"
#include "sim/core/socket_server.h"
#include "sim/core/unix_socket.h"
#include "tests/sim/temporary_directory.h"
#include "tests/sim/tool/shell.h"

namespace {

// A command that runs beside the test, with both ends of its input and output, errors among the latter.
class Process {
public:
    static constexpr int kLimit = 60000;  // ms, that no working run ever reaches

    explicit Process(std::string const& command) {
        int in[2];
        int out[2];
        EXPECT_EQ(::pipe2(in, O_CLOEXEC), 0);
        EXPECT_EQ(::pipe2(out, O_CLOEXEC), 0);
        pid_ = ::fork();
        if (pid_ == 0) {
            ::dup2(in[0], STDIN_FILENO);
            ::dup2(out[1], STDOUT_FILENO);
            ::dup2(out[1], STDERR_FILENO);
            ::execl("/bin/sh", "sh", "-c", ("exec " + command).c_str(), nullptr);
            ::_exit(127);
        }
        ::close(in[0]);
        ::close(out[1]);
        input_ = in[1];
        output_ = out[0];
    }
    Process(Process const&) = delete;
    Process& operator=(Process const&) = delete;
    ~Process() {
        if (pid_ > 0) {
            end(SIGKILL);
        }
        ::close(input_);
        ::close(output_);
    }

    // One line without its line end; empty at the end, or after the limit.
    std::string line() {
        std::string line;
        for (char c = 0; read_byte(c) && c != '\n';) {
            line += c;
        }
        return line;
    }
    std::string rest() {
        std::string rest;
        for (char c = 0; read_byte(c);) {
            rest += c;
        }
        return rest;
    }
    void send(std::string const& text) const {
        EXPECT_EQ(::write(input_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void signal(int number) const { ::kill(pid_, number); }
    // The exit status; 128 + number for a signal.
    int wait() {
        int status = 0;
        ::waitpid(std::exchange(pid_, -1), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    int end(int number) {
        signal(number);
        return wait();
    }

private:
    bool read_byte(char& c) const {
        pollfd readable{output_, POLLIN, 0};
        return ::poll(&readable, 1, kLimit) == 1 && ::read(output_, &c, 1) == 1;
    }

    pid_t pid_ = -1;
    int input_ = -1;
    int output_ = -1;
};

class RunTest : public testing::Test {
protected:
    // The devices of a test are in a directory of its own.
    RunTest() {
        ::setenv("XDG_RUNTIME_DIR", directory_.path().c_str(), 1);
        ::unsetenv("R47_SIM_DEVICE");
    }

    Result run(std::string const& options, std::string const& command) const {
        return shell(sim_ + " run " + options + " -- " + command);
    }
    // A command to the device of the test, if it has only one.
    Result control(std::string const& command) const { return shell(sim_ + " " + command); }
    // Its output, which ends without a line end.
    std::string value(std::string const& property) const {
        std::string const table = control("show " + property).output;
        std::size_t const from = table.find_first_not_of(' ', property.size());
        return table.substr(std::min(from, table.size()), table.find(' ', from) - from);
    }

    // Starts a device and waits until it is there.
    std::unique_ptr<Process> start_device(std::string const& options) const {
        auto device = std::make_unique<Process>(sim_ + " device " + options);
        EXPECT_EQ(device->line().substr(0, 8), "device /");
        return device;
    }
    // Starts the probe in the device of that name and waits until it says so.
    std::unique_ptr<Process> start_probe(std::string const& device, std::string const& arguments) const {
        auto program = std::make_unique<Process>(sim_ + " run --device " + device + " -- " + probe_ + " " + arguments);
        EXPECT_EQ(program->line(), "ready");
        return program;
    }
    std::string scenario(std::string const& lines) const {
        std::string path = directory_.path() + "/scenario";
        std::ofstream(path) << lines;
        return path;
    }
    // The journal's lines that hold one of the words, from their sixth field on where they are of programs.
    std::string journal(std::string const& words) const {
        return shell("grep -E '" + words + "' " + journal_ + " | cut -d' ' -f4-").output;
    }
    // Waits until the journal has the text.
    bool journal_has(std::string const& text) const {
        auto const end = std::chrono::steady_clock::now() + std::chrono::milliseconds(Process::kLimit);
        while (read(journal_).find(text) == std::string::npos) {
            if (std::chrono::steady_clock::now() > end) {
                return false;
            }
            std::this_thread::yield();
        }
        return true;
    }

    std::string const sim_ = std::string(R47_SIM_EMULATOR) + " " + R47_SIM;
    std::string const probe_ = std::string(R47_EMULATOR) + " " + R47_PROBE;
    TemporaryDirectory directory_;
    std::string const devices_ = directory_.path() + "/r47-sim";
    std::string const journal_ = directory_.path() + "/journal";
};

TEST_F(RunTest, AProgramMeetsTheDevice) {
    EXPECT_EQ(run("", probe_).output, "revision 0: 1.6 state 0: 1\n");
    EXPECT_EQ(run("--without /dev/r47-rtu-driver", probe_).output, "revision -1: 0.0 state -1: 0\n");
}

TEST_F(RunTest, AProgramOutsideIsToldOnce) {
    EXPECT_EQ(shell(probe_).output,
              "libhal: no device: start the program with r47-sim run\nrevision -1: 0.0 state -1: 0\n");
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
    std::ofstream(journal_) << "old\n";
    run("--journal " + journal_ + " --clock stepped", probe_);
    EXPECT_EQ(read(journal_),
              "0.000000 0.000000 1 command - - - - - clock stepped\n"
              "0.000000 0.000000 2 program sim_probe.1 - - - - connected\n"
              "0.000000 0.000000 3 call sim_probe.1 1 1 - - rtu_t::rtu_t(\"/dev/r47-rtu-driver\", 2)\n"
              "0.000000 0.000000 4 call sim_probe.1 1 2 - - system_t::system_t(\"/dev/r47-rtu-driver\", 2)\n"
              "0.000000 0.000000 5 call sim_probe.1 1 1 - - rtu_t::get_revision() = 0 [{1, 6, 0, 2, 22, 14}]\n"
              "0.000000 0.000000 6 call sim_probe.1 1 2 - - system_t::get_device_status() = 0 [1]\n"
              "0.000000 0.000000 7 call sim_probe.1 1 2 - - system_t::~system_t()\n"
              "0.000000 0.000000 8 call sim_probe.1 1 1 - - rtu_t::~rtu_t()\n"
              "0.000000 0.000000 9 program sim_probe.1 - - - - ended\n");
}

TEST_F(RunTest, TheJournalIsJsonLinesWhereThatIsWanted) {
    run("--json-journal --clock stepped --journal " + journal_ + " --scenario " +
            scenario("fault add rtu_t::get_revision errno EBUSY\n"),
        probe_);
    EXPECT_EQ(shell("grep get_revision " + journal_ + " | tail -n 1").output,
              "{\"sequence\": 6, \"start\": 0.000000, \"took\": 0.000000, \"kind\": \"call\", \"program\": "
              "\"sim_probe.1\", \"thread\": 1, \"object\": 1, \"error\": \"EBUSY\", \"rule\": 1, \"text\": "
              "\"rtu_t::get_revision() = -1\"}\n");
}

TEST_F(RunTest, AScenarioActsBeforeTheProgramsFirstCall) {
    std::string const file = scenario("set system.state 6\nfault add rtu_t::get_revision value 9,8\n");
    EXPECT_EQ(run("--scenario " + file, probe_).output, "revision 0: 9.8 state 0: 6\n");
}

TEST_F(RunTest, AScenarioStepsTheClockBeforeItIsSet) {
    std::string const file = scenario("step 3600s\n");
    for (std::string const clock : {"real", "scaled 1", "stepped"}) {
        Result const result = run("--clock " + clock + " --scenario " + file, sim_ + " show clock.time");
        EXPECT_EQ(result.output.substr(0, 14), "clock.time  36") << clock << ": " << result.output;
        EXPECT_EQ(result.status, 0);
    }
}

TEST_F(RunTest, AScenarioMayRestoreWhatWasLeftOut) {
    std::string const file = scenario("node restore /dev/r47-rtu-driver\n");
    EXPECT_EQ(run("--without /dev/r47-rtu-driver --scenario " + file, probe_).output, "revision 0: 1.6 state 0: 1\n");
}

TEST_F(RunTest, ABadScenarioStartsNothing) {
    std::string const file = scenario("set system.state 6\n1s nonsense\n");
    Result const result = run("--scenario " + file, "echo started");
    EXPECT_EQ(result.status, 125);
    EXPECT_EQ(result.output, "r47-sim: scenario " + file + ", line 2: unknown command \"nonsense\": try help\n");
}

TEST_F(RunTest, ATimedLineThatFailsEndsTheDevice) {
    std::string const file = scenario("100ms node restore /dev/imx296\n");
    Process program(sim_ + " run --without /dev/imx296 --name bench --scenario " + file + " --clock stepped -- " +
                    probe_ + " wait");
    EXPECT_EQ(program.line(), "ready");
    EXPECT_EQ(control("node restore /dev/imx296").status, 0);
    EXPECT_EQ(control("step 1s").status, 1);
    EXPECT_EQ(program.rest(), "r47-sim: scenario line 1: /dev/imx296 is there already\n");
    EXPECT_EQ(program.wait(), 125);
    EXPECT_TRUE(std::filesystem::is_empty(devices_));
}

TEST_F(RunTest, RequiredFaultsThatFiredAreNoFailure) {
    std::string const file = scenario("fault add rtu_t::get_revision status -1\n");
    Result const result = run("--require-faults --scenario " + file, probe_);
    EXPECT_EQ(result.output, "revision -1: 0.0 state 0: 1\n");
    EXPECT_EQ(result.status, 0);
}

TEST_F(RunTest, RequiredFaultsThatNeverFiredFailTheRun) {
    std::string const file = scenario(
        "fault add rtu_t::get_revision status -1\n"
        "fault add rtu_t::get_revision skip 5 status -1\n"
        "fault add tof_t::shot status 1\n"
        "fault clear 3\n");
    std::string const unmet =
        "r47-sim: a fault rule never fired: 3  tof_t::shot status 1\n"
        "r47-sim: a fault rule never fired: 2  rtu_t::get_revision skip 5 status -1\n";
    Result const result = run("--require-faults --scenario " + file, probe_);
    EXPECT_EQ(result.output, "revision -1: 0.0 state 0: 1\n" + unmet);
    EXPECT_EQ(result.status, 125);
    EXPECT_EQ(run("--require-faults --scenario " + file, "sh -c 'exit 3'").status, 3) << "the command's own failure";
    EXPECT_EQ(run("--scenario " + file, probe_).status, 0);
}

TEST_F(RunTest, ALineThatNeverCameHasNotFiredEither) {
    std::string const file = scenario("fault list\n3600s  fault add rtu_t::get_exposure status -1\n");
    Result const result = run("--require-faults --scenario " + file, "true");
    EXPECT_EQ(result.output,
              "r47-sim: a fault rule never fired: line 2 of the scenario, which never came:  "
              "fault add rtu_t::get_exposure status -1\n");
    EXPECT_EQ(result.status, 125);
}

TEST_F(RunTest, ARunningDeviceIsControlled) {
    Process program(sim_ + " run --clock stepped -- " + probe_ + " wait");
    EXPECT_EQ(program.line(), "ready");
    EXPECT_EQ(control("set system.state 9").output, "");
    EXPECT_EQ(value("system.state"), "9");
    EXPECT_EQ(control("node remove /dev/r47-rtu-driver").status, 0);
    EXPECT_EQ(control("node restore /dev/r47-rtu-driver").status, 0);
    EXPECT_EQ(control("step 1s").status, 0);
    EXPECT_EQ(control("clock").output, "stepped\n");
    EXPECT_EQ(shell("echo clock | " + sim_ + " -").output, "stepped\n");
    Result const refused = control("set system.state 7");
    EXPECT_EQ(refused.output.find("r47-sim: system.state: 7 is not one of 1 boot, "), 0U);
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(shell("printf 'set system.state 7\\nclock\\n' | " + sim_ + " -").status, 1) << "the worst of them";
    program.send("\n");
    EXPECT_EQ(program.rest(), "revision 0: 1.6 state 0: 9\n");
    EXPECT_EQ(program.wait(), 0);
    EXPECT_TRUE(std::filesystem::is_empty(devices_)) << "the directory goes with the device";
    EXPECT_EQ(control("show").output, "r47-sim: no device is running\n");
}

TEST_F(RunTest, SettingsOutliveTheProgram) {
    auto const device = start_device("--name bench");
    EXPECT_EQ(run("--device bench", probe_ + " set 5000").status, 0);
    EXPECT_EQ(run("--device bench", probe_ + " exposure").output, "exposure 0: 5000\n");
    EXPECT_EQ(run("", probe_ + " exposure").output, "exposure 0: 10000\n") << "a device of its own";
}

TEST_F(RunTest, ProgramsShareADevice) {
    auto const device = start_device("--name bench --journal " + journal_);
    auto const first = start_probe("bench", "wait");
    EXPECT_EQ(run("--device " + devices_ + "/bench", probe_ + " set 5000").status, 0);
    EXPECT_EQ(value("rtu.exposure.time"), "5000") << "while the first still runs";
    EXPECT_EQ(shell(sim_ + " programs | sed 's/pid [0-9]*/pid N/'").output, "sim_probe.1  pid N  objects 2\n");
    first->send("\n");
    EXPECT_EQ(first->rest(), "revision 0: 1.6 state 0: 1\n");
    EXPECT_TRUE(journal_has("sim_probe.1 - - - - ended\n"));  // the device sees the end after the program's last words
    EXPECT_EQ(journal("ended"), "program sim_probe.2 - - - - ended\nprogram sim_probe.1 - - - - ended\n");
}

TEST_F(RunTest, ProgramsInsideADeviceControlIt) {
    EXPECT_EQ(run("", "sh -c '" + sim_ + " set system.state 3; " + probe_ + "'").output,
              "revision 0: 1.6 state 0: 3\n");
}

TEST_F(RunTest, DevicesAreListedWithTheirPrograms) {
    auto const first = start_device("--name bench");
    auto const second = start_device("--name other");
    auto const program = start_probe("other", "wait");
    EXPECT_EQ(
        shell(sim_ + " list | sed 's/  [0-9]* s  /  AGE  /; s/pid [0-9]*/pid N/'").output,
        "bench  AGE  " + devices_ + "/bench\nother  AGE  " + devices_ + "/other\nsim_probe.1  pid N  objects 2\n");
}

TEST_F(RunTest, ADeviceThatDoesNotAnswerIsListedAllTheSame) {
    auto const first = start_device("--name bench");
    auto const second = start_device("--name other");
    first->signal(SIGSTOP);
    Result const list = shell(sim_ + " list");
    EXPECT_NE(list.output.find("r47-sim: the device did not answer in time\n"), std::string::npos) << list.output;
    EXPECT_NE(list.output.find("other"), std::string::npos) << list.output;
    first->signal(SIGCONT);
}

TEST_F(RunTest, OthersAreToldThatRootsDeviceNeedsSudo) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "for root alone, who can be another user";
    }
    // Root's directory is there from the first device on.
    shell("env -u XDG_RUNTIME_DIR " + sim_ + " run -- true");
    std::string const sim = directory_.path() + "/r47-sim";
    std::filesystem::copy_file(R47_SIM, sim);
    std::filesystem::permissions(directory_.path(), std::filesystem::perms(0755));
    Result const result = shell("cd / && env -u XDG_RUNTIME_DIR setpriv --reuid 65534 --clear-groups " +
                                std::string(R47_SIM_EMULATOR) + " " + sim + " show");
    EXPECT_EQ(result.output, "r47-sim: no device of this user is running; for one of root's, use sudo\n");
    EXPECT_EQ(result.status, 1);
}

TEST_F(RunTest, OneOfSeveralDevicesMustBeChosen) {
    auto const first = start_device("--name bench");
    auto const second = start_device("--name other");
    Result const result = control("show");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "r47-sim: several devices are running, choose one with --device: bench, other\n");
    Process program(sim_ + " run --device bench -- " + probe_ + " wait");
    EXPECT_EQ(program.line(), "ready");
    EXPECT_EQ(control("show").output,
              "r47-sim: several devices are running, choose one with --device: bench (sim_probe.1), other\n");
    EXPECT_EQ(control("--device bench set system.state 4").status, 0);
    EXPECT_NE(control("--device bench show --json system.state").output.find("{\"value\":4,"), std::string::npos);
    EXPECT_NE(control("--device other show --json system.state").output.find("{\"value\":1,"), std::string::npos);
}

TEST_F(RunTest, ATerminalGetsATableOfItsWidthInColours) {
    auto const device = start_device("--clock stepped");
    auto const on_terminal = [&](std::string const& environment) {
        std::string const command = "stty cols 30; " + sim_ + " show system.alive";
        return shell(environment + " script -qc '" + command + "' /dev/null </dev/null").output;
    };
    EXPECT_EQ(on_terminal("NO_COLOR= TERM=xterm"),
              "\x1B[36msystem.alive\x1B[0m\x1B[1m  false\x1B[0m  \x1B[2m  boolean\x1B[0m\r\n");
    EXPECT_EQ(on_terminal("NO_COLOR= TERM=dumb"), "system.alive  false    boolean\r\n");
    EXPECT_EQ(on_terminal("NO_COLOR=1 TERM=xterm"), "system.alive  false    boolean\r\n");
}

TEST_F(RunTest, CommandsOnStandardInputAreNamedByTheirLines) {
    auto const device = start_device("--clock stepped");
    Result const result = shell("printf 'clock\\n\\nset system.alive on\\n# note\\nnonsense\\n' | " + sim_ + " -");
    EXPECT_EQ(result.output,
              "stepped\nr47-sim: line 3: system.alive is read only\n"
              "r47-sim: line 5: unknown command \"nonsense\": try help\n");
    EXPECT_EQ(result.status, 1);
}

TEST_F(RunTest, AWorkingDirectoryThatIsGoneIsToldOf) {
    std::string const gone = directory_.path() + "/gone";
    Result const result =
        shell("mkdir " + gone + " && cd " + gone + " && rmdir " + gone + " && " + sim_ + " run -- true");
    EXPECT_EQ(result.output, "r47-sim: the working directory: No such file or directory\n");
    EXPECT_EQ(result.status, 125);
}

TEST_F(RunTest, ADirectoryHasOneDevice) {
    auto const device = start_device("--name bench");
    Result const second = shell(sim_ + " device --name bench");
    EXPECT_EQ(second.output, "r47-sim: a device runs in " + devices_ + "/bench already\n");
    EXPECT_EQ(second.status, 125);
    EXPECT_EQ(control("clock").output, "real\n") << "the first goes on";
}

TEST_F(RunTest, ADeviceEndsWithASignalAndLeavesNothing) {
    for (int const signal : {SIGTERM, SIGINT, SIGHUP}) {
        auto const device = start_device("--name bench");
        EXPECT_EQ(device->end(signal), 0);
        EXPECT_TRUE(std::filesystem::is_empty(devices_));
    }
}

TEST_F(RunTest, TheDirectoryOfADeviceThatWasKilledIsTakenOver) {
    auto const killed = start_device("--name bench");
    EXPECT_EQ(killed->end(SIGKILL), 128 + SIGKILL);
    EXPECT_TRUE(std::filesystem::exists(devices_ + "/bench/control"));
    EXPECT_EQ(shell(sim_ + " list").output, "") << "it runs no more";
    EXPECT_TRUE(std::filesystem::exists(devices_ + "/bench/control")) << "whoever looks for devices changes nothing";
    auto const device = start_device("--name bench");
    EXPECT_EQ(control("clock").output, "real\n");
}

TEST_F(RunTest, APathThatIsTooLongStartsNothing) {
    std::string const path = directory_.path() + "/" + std::string(100, 'x');
    for (std::string const& command :
         {sim_ + " device --name " + path, sim_ + " run --name " + path + " -- echo ran"}) {
        Result const result = shell(command);
        EXPECT_EQ(result.output,
                  "r47-sim: " + path + " is too long for the sockets of a device: at most 95 characters\n");
        EXPECT_EQ(result.status, 125);
    }
    EXPECT_FALSE(std::filesystem::exists(path));
}

// Its lane's thread would call functions of statics that are gone.
TEST_F(RunTest, NothingIsCalledBehindTheEndOfAProgramThatExits) {
    Result const result = run("--clock stepped", probe_ + " leave");
    EXPECT_EQ(result.output, "80 samples, then 0\n");
    EXPECT_EQ(result.status, 0);
}

// A device that tells of an object which the program has not, and goes: the lane's thread waits for that object.
TEST_F(RunTest, AProgramEndsThoughACallbackWaitsForItsObject) {
    auto const serve = [](int socket) {
        sim::Connection connection(socket);
        std::string_view message;
        while (connection.receive(message)) {
            sim::Decoder bytes(message);
            sim::MessageKind kind{};
            sim::Hello hello{};
            bytes.get(kind);
            if (kind != sim::MessageKind::hello) {
                connection.send(message_of(sim::MessageKind::reply, sim::CallReply{1, 0, true, false}));
                continue;
            }
            bytes.get(hello);
            connection.send(message_of(sim::MessageKind::welcome, sim::Welcome{1}));
            if (hello.lane == sim::Lane::hub) {
                sim::Event event{};
                event.object = 99;
                connection.send(message_of(sim::MessageKind::event, event));
            }
        }
    };
    sim::SocketServer device({serve, [](int, std::string const&) {}}, 100);
    ASSERT_EQ(device.start(directory_.path() + "/calls"), "");
    Process program("env R47_SIM_DEVICE=" + directory_.path() + " " + probe_ + " listen");
    EXPECT_EQ(program.line(), "ready");
    device.stop();
    program.send("\n");
    EXPECT_EQ(program.rest(), "libhal: the device has gone\n0 samples\n");
    EXPECT_EQ(program.wait(), 0);
}

TEST_F(RunTest, AProgramThatIsKilledIsReleased) {
    auto const device = start_device("--name bench --journal " + journal_);
    auto const other = start_probe("bench", "wait");
    auto const program = start_probe("bench", "listen");
    program->end(SIGKILL);
    EXPECT_TRUE(journal_has("sim_probe.2 - - - - ended, 2 objects released\n"));
    EXPECT_EQ(shell(sim_ + " programs | cut -d' ' -f1").output, "sim_probe.1\n");
    other->send("\n");
    EXPECT_EQ(other->rest(), "revision 0: 1.6 state 0: 1\n") << "the others go on";
}

TEST_F(RunTest, AProgramThatCrashesInACallbackIsReleased) {
    auto const device = start_device("--name bench --journal " + journal_ + " --clock stepped");
    auto const other = start_probe("bench", "wait");
    auto const program = start_probe("bench", "listen kill");
    EXPECT_EQ(control("step 1s").output, "") << "nobody is waited for any more";
    EXPECT_EQ(program->wait(), 128 + SIGKILL);
    EXPECT_TRUE(journal_has("sim_probe.2 - - - - ended, 2 objects released\n"));
    EXPECT_EQ(control("step 1s").output, "");
    other->send("\n");
    EXPECT_EQ(other->rest(), "revision 0: 1.6 state 0: 1\n");
}

TEST_F(RunTest, AProgramThatHangsInACallbackDelaysItselfAlone) {
    if (!host_allows_namespaces()) {
        GTEST_SKIP() << "proot takes a stop for its own";
    }
    auto const device = start_device("--name bench --journal " + journal_ + " --clock stepped");
    auto const hanging = start_probe("bench", "listen stop");
    auto const other = start_probe("bench", "listen");
    Process step(sim_ + " step 1s");
    std::string const waiting = step.line();
    EXPECT_EQ(waiting.substr(0, waiting.find(", pid")), "waiting: sim_probe.1");
    EXPECT_EQ(waiting.substr(waiting.find(" is in")), " is in gyro_delegate_t(37) of object 2");
    EXPECT_EQ(value("power"), "true");
    EXPECT_EQ(run("--device bench", probe_).output, "revision 0: 1.6 state 0: 1\n");
    std::string const pid = waiting.substr(waiting.find("pid ") + 4, waiting.find(" is in") - waiting.find("pid ") - 5);
    EXPECT_EQ(shell("kill -KILL " + pid).output, "");
    EXPECT_EQ(step.wait(), 0) << "it waits no more for one that has gone";
    other->send("\n");
    EXPECT_EQ(other->rest(), "12 samples\n");
}

// One line from a control connection without its line end; empty at the end, or after the limit.
std::string line_from(sim::Descriptor const& connection) {
    std::string line;
    pollfd readable{connection.get(), POLLIN, 0};
    for (char c = 0;
         ::poll(&readable, 1, Process::kLimit) == 1 && ::recv(connection.get(), &c, 1, 0) == 1 && c != '\n';) {
        line += c;
    }
    return line;
}

// The first line of the reply, or why there is none.
std::string ask(sim::Descriptor const& connection, std::string const& command) {
    sim::send_all(connection.get(), (command + "\n").data(), command.size() + 1);
    return line_from(connection);
}

// So many control connections, of which each has been made.
std::vector<sim::Descriptor> connect(std::string const& path, int count) {
    std::vector<sim::Descriptor> connections;
    for (int i = 0; i < count; ++i) {
        EXPECT_TRUE(connections.emplace_back(sim::connect_to(path)));
    }
    return connections;
}

// The verbs that the tool's help lists.
std::set<std::string> all_verbs(std::string const& help) {
    std::set<std::string> verbs;
    std::istringstream lines(help.substr(help.find("Control commands:\n") + 18));
    for (std::string line; std::getline(lines, line);) {
        if (line.front() != ' ') {
            verbs.insert(line.substr(0, line.find(' ')));
        }
    }
    return verbs;
}

TEST_F(RunTest, EveryCommandAnswersWhileAProgramHangsInACallback) {
    if (!host_allows_namespaces()) {
        GTEST_SKIP() << "proot takes a stop for its own";
    }
    auto const device = start_device("--name bench --clock stepped");
    auto const hanging = start_probe("bench", "listen stop");
    Process step(sim_ + " step 1s");
    EXPECT_EQ(step.line().substr(0, 20), "waiting: sim_probe.1");
    std::set<std::string> tried{"help"};  // the tool's own
    for (std::string const command : {"show",
                                      "show --json hub",
                                      "set system.state 3",
                                      "fault add rtu_t::get_exposure status -1",
                                      "fault list",
                                      "fault clear",
                                      "node remove /dev/imx296",
                                      "node restore /dev/imx296",
                                      "node list",
                                      "trigger 3",
                                      "trigger 3 at 10",
                                      "drive 0 high",
                                      "power poe",
                                      "fit imx567",
                                      "scene plane 500",
                                      "tilt 0 10 0",
                                      "tilt 0 20 0 over 1s",
                                      "press 1s",
                                      "button up",
                                      "programs",
                                      "power cycle",
                                      "clock",
                                      "operations get_exposure",
                                      "wait camera.fitted == imx567",
                                      "expect camera.fitted == imx567",
                                      "clock scaled 10",
                                      "clock stepped"}) {
        Result const result = control("--timeout 60s " + command);
        EXPECT_EQ(result.status, 0) << command << ": " << result.output;
        tried.insert(command.substr(0, command.find(' ')));
    }
    auto const follower = connect(devices_ + "/bench/control", 1);
    EXPECT_EQ(ask(follower.front(), "journal follow"), "ok");
    auto const watcher = connect(devices_ + "/bench/control", 1);
    EXPECT_EQ(ask(watcher.front(), "watch system"), "ok");
    tried.insert({"journal", "step", "watch"});
    EXPECT_EQ(tried, all_verbs(control("help").output));
    EXPECT_EQ(run("--device bench", probe_ + " exposure").output, "exposure 0: 10000\n");
    std::string const record = line_from(follower.front());
    EXPECT_NE(record.find("program sim_probe.2 - - - - connected"), std::string::npos) << record;
    EXPECT_EQ(shell(sim_ + " list | tail -n +2 | cut -d' ' -f1").output, "sim_probe.1\n");
}

TEST_F(RunTest, ADeviceWithoutPowerIsADeadBusForTheProgramsThatLiveOn) {
    auto const device = start_device("--name bench --journal " + journal_);
    auto const program = start_probe("bench", "wait");
    EXPECT_EQ(control("power off").output, "");
    program->send("\n");
    EXPECT_EQ(program->rest(), "revision -1: 0.0 state -1: 0\n");
    EXPECT_EQ(program->wait(), 0);
    EXPECT_NE(journal("get_").find(" 1 1 EIO - rtu_t::get_revision() = -1\n"), std::string::npos) << journal("get_");
    EXPECT_EQ(control("power on").output, "");
    EXPECT_EQ(run("--device bench", probe_).output, "revision 0: 1.6 state 0: 1\n");
}

TEST_F(RunTest, AProgramThatWasConnectedMeetsTheDeviceAgainAfterAPowerCycle) {
    auto const device = start_device("--name bench");
    EXPECT_EQ(control("set system.state 9").output, "");
    auto const program = start_probe("bench", "wait");
    EXPECT_EQ(control("power cycle").output, "");
    program->send("\n");
    EXPECT_EQ(program->rest(), "revision 0: 1.6 state 0: 1\n");
}

TEST_F(RunTest, CallbacksAreDroppedAndDoubled) {
    auto const device = start_device("--name bench --clock stepped --journal " + journal_);
    auto const program = start_probe("bench", "listen");
    EXPECT_EQ(control("fault add gyro_delegate_t count 2 drop").output, "1\n");
    EXPECT_EQ(control("fault add gyro_delegate_t arg 1 37 skip 1 count 3 double").output, "2\n");
    EXPECT_EQ(control("step 1s").output, "");
    program->send("\n");
    EXPECT_EQ(program->rest(), "13 samples\n") << "12, 2 dropped, 3 doubled";
    EXPECT_EQ(control("fault list").output,
              "1  gyro_delegate_t count 2 drop  fired 2\n2  gyro_delegate_t arg 1 37 skip 1 count 3 double  fired 3\n");
    EXPECT_EQ(shell("grep -cE ' lost sim_probe.1 - 2 - 1 gyro_delegate_t.37.$' " + journal_).output, "2\n");
    EXPECT_EQ(shell("grep -c ' callback ' " + journal_).output, "13\n");
}

TEST_F(RunTest, CallbacksComeLate) {
    auto const device = start_device("--name bench --clock stepped --journal " + journal_);
    auto const program = start_probe("bench", "listen");
    EXPECT_EQ(control("fault add gyro_delegate_t count 1 late 50").output, "1\n");
    EXPECT_EQ(control("step 1s").output, "");
    program->send("\n");
    program->rest();
    EXPECT_EQ(shell("grep ' callback ' " + journal_ + " | head -n 2 | cut -d' ' -f1,9-").output,
              "0.330000 1 gyro_delegate_t(37)\n0.360000 - gyro_delegate_t(37)\n");
}

// Serves one connection: takes a line and answers with a text.
class OneReply {
public:
    OneReply(std::string const& path, std::string reply) {
        sim::Error error;
        listener_ = sim::listen_on(path, error);
        EXPECT_EQ(error, "");
        server_ = std::thread([this, reply = std::move(reply)] {
            sim::Descriptor const connection = sim::accept_from(listener_);
            for (char c = 0; c != '\n' && ::recv(connection.get(), &c, 1, 0) == 1;) {
            }
            sim::send_all(connection.get(), reply.data(), reply.size());  // the client may have gone
        });
    }
    OneReply(OneReply const&) = delete;
    OneReply& operator=(OneReply const&) = delete;
    ~OneReply() { server_.join(); }

private:
    sim::Descriptor listener_;
    std::thread server_;
};

TEST_F(RunTest, TheJournalIsPrintedUntilTheDeviceEnds) {
    OneReply const device(directory_.path() + "/control", "ok\n0.1 1 first\n0.2 1 second\n");
    Result const result = shell(sim_ + " --device " + directory_.path() + " --timeout 10s journal follow");
    EXPECT_EQ(result.output, "0.1 1 first\n0.2 1 second\n");
    EXPECT_EQ(result.status, 0);
}

TEST_F(RunTest, ADeviceThatEndsBeforeItsReplyIsToldOf) {
    OneReply const device(directory_.path() + "/control", "half");
    Result const result = shell(sim_ + " --device " + directory_.path() + " show");
    EXPECT_EQ(result.output, "r47-sim: the device ended\n");
    EXPECT_EQ(result.status, 1);
}

TEST_F(RunTest, ControlCharactersFromADeviceAreMadeVisible) {
    for (std::string const mark : {"", "error: "}) {
        OneReply const device(directory_.path() + "/control", mark + "\x1B[31mred\x07 \xC2\x9B \x9B \xC3\xBC\nok\n");
        Result const result = shell(sim_ + " --device " + directory_.path() + " show");
        EXPECT_EQ(result.output,
                  (mark.empty() ? "" : "r47-sim: ") + std::string("\\x1B[31mred\\x07 \\xC2\\x9B \\x9B \xC3\xBC\n"));
    }
}

TEST_F(RunTest, ACommandOfSeveralLinesIsRefused) {
    OneReply const device(directory_.path() + "/control", "ok\n");
    Result const result = shell(sim_ + " --device " + directory_.path() + " show 'a\nb'");
    EXPECT_EQ(result.output, "r47-sim: a command is one line\n");
    EXPECT_EQ(result.status, 1);
}

TEST_F(RunTest, NobodyAtTheSocketIsToldOf) {
    Result const result = shell(sim_ + " --device " + directory_.path() + " show");
    EXPECT_EQ(result.output, "r47-sim: no device in " + directory_.path() + ": No such file or directory\n");
    EXPECT_EQ(result.status, 1);
}

TEST_F(RunTest, ADeviceThatDoesNotAnswerIsGivenUp) {
    auto const device = start_device("--name bench");
    device->signal(SIGSTOP);
    Result const one = control("--timeout 100ms show");
    EXPECT_EQ(one.output, "r47-sim: the device did not answer in time\n");
    EXPECT_EQ(one.status, 124);
    Result const lines = shell("printf 'show\nshow\n' | " + sim_ + " --timeout 100ms -");
    EXPECT_EQ(lines.output, "r47-sim: line 1: the device did not answer in time\n");
    EXPECT_EQ(lines.status, 124);
    device->signal(SIGCONT);
    EXPECT_EQ(control("--timeout 60s clock").output, "real\n");
}

TEST_F(RunTest, ADeviceThatHasNoDescriptorLeftServesAgainWhenItHas) {
    Process device("sh -c 'ulimit -n 40; exec " + sim_ + " device --name bench'");
    EXPECT_EQ(device.line().substr(0, 8), "device /");
    auto many = connect(devices_ + "/bench/control", 60);
    EXPECT_EQ(ask(many.front(), "clock"), "real");
    Process late(sim_ + " clock");
    many.clear();
    EXPECT_EQ(late.line(), "real");
    EXPECT_EQ(control("clock").output, "real\n");
}

TEST_F(RunTest, AConnectionForWhichThereIsNoDescriptorWaitsUntilThereIs) {
    Process device("sh -c 'ulimit -n 40; exec " + sim_ + " device --name bench'");
    EXPECT_EQ(device.line().substr(0, 8), "device /");
    for (sim::Descriptor& connection : connect(devices_ + "/bench/control", 60)) {
        EXPECT_EQ(ask(connection, "clock"), "real");
        connection = sim::Descriptor();
    }
}

TEST_F(RunTest, ADeviceThatHasNoThreadLeftSaysSoAndGoesOn) {
#ifdef R47_UNTRACEABLE
    GTEST_SKIP() << "a sanitizer and an emulator need more memory than the limit leaves";
#endif
    Process device("sh -c 'ulimit -v 300000; exec " + sim_ + " device --name bench'");  // KiB; a stack takes 8 MiB
    EXPECT_EQ(device.line().substr(0, 8), "device /");
    {
        auto const many = connect(devices_ + "/bench/control", 60);
        EXPECT_EQ(ask(many.front(), "clock"), "real");
        EXPECT_EQ(ask(many.back(), "clock").substr(0, 46), "error: no thread for one more connection: Reso");
    }
    std::string output;
    for (auto const end = std::chrono::steady_clock::now() + std::chrono::milliseconds(Process::kLimit);
         output != "real\n" && std::chrono::steady_clock::now() < end;) {
        output = control("clock").output;
    }
    EXPECT_EQ(output, "real\n");
}

TEST_F(RunTest, ADirectoryThatOthersMayEnterIsNotTrusted) {
    std::filesystem::permissions(directory_.path(), std::filesystem::perms(0755));
    OneReply const device(directory_.path() + "/control", "ok\n");
    Result const result = shell(sim_ + " --device " + directory_.path() + " show");
    EXPECT_EQ(result.output, "r47-sim: " + directory_.path() +
                                 " must belong to this user, and nobody else may enter it (mode 0700)\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(shell(sim_ + " device --name " + directory_.path()).output, result.output);
    sim::connect_to(directory_.path() + "/control");  // so that the server ends
}

TEST_F(RunTest, AJournalOnAFullDiskHurtsNobodyAndIsToldOf) {
    Result const result = run("--journal /dev/full", probe_);
    EXPECT_EQ(result.output,
              "revision 0: 1.6 state 0: 1\nr47-sim: the journal /dev/full lacks its last 9 lines, which "
              "could not be written\n");
    EXPECT_EQ(result.status, 0);
}

TEST_F(RunTest, AJournalThatCannotBeWrittenIsToldOf) {
    Result const result = run("--journal /nowhere/journal", "echo started");
    EXPECT_EQ(result.output, "r47-sim: cannot write the journal /nowhere/journal: No such file or directory\n");
    EXPECT_EQ(result.status, 125);
}

int free_port() {
    sim::Descriptor const socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    (void)::bind(socket.get(), reinterpret_cast<sockaddr*>(&address), size);
    ::getsockname(socket.get(), reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

// What publishes is r47-sim again, inside the sandbox.
bool can_publish() {
    return host_allows_namespaces() && *R47_SIM_EMULATOR == '\0';
}
char const* const kNoPublisher = "this host allows no namespaces, or cannot run r47-sim without an emulator";

TEST_F(RunTest, APrivateConsoleIsReachedAtThePublishedPort) {
    if (!can_publish()) {
        GTEST_SKIP() << kNoPublisher;
    }
    std::string const port = std::to_string(free_port());
    std::string const serve =
        "python3 -c 'import socket; s = socket.create_server((\"127.0.0.1\", 32360)); print(\"ready\", flush=True); "
        "c, _ = s.accept(); d = c.recv(100); c.sendall(b\"console \" + d); c.close()'";
    std::string const ask = "python3 -c 'import socket; c = socket.create_connection((\"127.0.0.1\", " + port +
                            ")); c.sendall(b\"asked\"); c.shutdown(socket.SHUT_WR); print(c.makefile().read())'";
    auto const device = start_device("--name bench");
    for (std::string const options : {"", "--device bench "}) {
        Process console(sim_ + " run " + options + "--publish " + port + " -- " + serve);
        EXPECT_EQ(console.line(), "ready");
        EXPECT_EQ(shell(ask).output, "console asked\n");
        EXPECT_EQ(console.wait(), 0);
    }
    EXPECT_EQ(run("--publish " + port, "sh -c 'exit 7'").status, 7);
    EXPECT_EQ(run("--publish " + port, "sh -c 'kill -9 $$'").status, 128 + 9);
}

TEST_F(RunTest, TwoDevicesServeClientsAtTheSameTime) {
    if (!can_publish()) {
        GTEST_SKIP() << kNoPublisher;
    }
    std::string const serve =
        "python3 -c 'import socket, sys; s = socket.create_server((\"127.0.0.1\", 32360)); print(\"ready\", "
        "flush=True); c, _ = s.accept(); c.sendall(sys.argv[1].encode() + c.recv(100)); c.close()' ";
    std::string const one = std::to_string(free_port());
    Process first(sim_ + " run --name one --publish " + one + " -- " + serve + "one");
    EXPECT_EQ(first.line(), "ready");
    std::string const two = std::to_string(free_port());
    Process second(sim_ + " run --name two --publish " + two + " -- " + serve + "two");
    EXPECT_EQ(second.line(), "ready");
    std::string const ask = "python3 -c 'import socket; c = [socket.create_connection((\"127.0.0.1\", p)) for p in (" +
                            one + ", " + two +
                            ")]; [x.sendall(b\" asked\") for x in c]; print([x.makefile().read() for x in c])'";
    EXPECT_EQ(shell(ask).output, "['one asked', 'two asked']\n");
    EXPECT_EQ(first.wait(), 0);
    EXPECT_EQ(second.wait(), 0);
}

TEST_F(RunTest, AConnectionThatNoConsoleTakesEnds) {
    if (!can_publish()) {
        GTEST_SKIP() << kNoPublisher;
    }
    std::string const port = std::to_string(free_port());
    Process console(sim_ + " run --publish " + port + " -- " + probe_ + " wait");
    EXPECT_EQ(console.line(), "ready");
    EXPECT_EQ(
        shell("python3 -c 'import socket; print(socket.create_connection((\"127.0.0.1\", " + port + ")).recv(1))'")
            .output,
        "b''\n");
    console.send("\n");
    EXPECT_EQ(console.rest(), "revision 0: 1.6 state 0: 1\n");
}

TEST_F(RunTest, APortThatIsTakenIsToldOf) {
    if (!can_publish()) {
        GTEST_SKIP() << kNoPublisher;
    }
    std::string const port = std::to_string(free_port());
    Process first(sim_ + " run --publish " + port + " -- " + probe_ + " wait");
    EXPECT_EQ(first.line(), "ready");
    Result const second = run("--publish " + port, "echo started");
    EXPECT_EQ(second.output, "r47-sim: cannot publish at 127.0.0.1:" + port + ": Address already in use\n");
    EXPECT_EQ(second.status, 125);
}

TEST_F(RunTest, AFailedExpectationFailsTheRun) {
    std::string const file = directory_.path() + "/scenario";
    std::ofstream(file)
        << "set system.state warning\n1s expect system.state == warning\n3s expect system.state == error\n";
    std::string const options = "--clock stepped --scenario " + file;
    Result result = run(options, sim_ + " step 3s");
    EXPECT_EQ(result.status, 125);
    EXPECT_NE(result.output.find("r47-sim: scenario line 3: at 3.000000 s expected system.state == error, but it is 5 "
                                 "warning\n"),
              std::string::npos)
        << result.output;
    result = run(options, sim_ + " step 2s");
    EXPECT_EQ(result.status, 125);
    EXPECT_EQ(result.output,
              "r47-sim: an expectation was not looked at: line 3 of the scenario, which never came: "
              "expect system.state == error\n");
    std::ofstream(file) << "1s expect system.state == boot\n";
    EXPECT_EQ(run(options, sim_ + " step 2s").status, 0);
}

TEST_F(RunTest, ChangesAreWatchedAndWaitedForFromOutside) {
    auto const device = start_device("--name bench --clock stepped");
    Process watch(sim_ + " watch --json system");
    Process wait(sim_ + " wait system.state == error");
    // Until both are served, each of these changes something.
    std::atomic<bool> told{false};
    std::thread stepper([&] {
        while (!told) {
            control("set system.state warning");
            control("set system.state error");
            control("step 1s");
        }
    });
    std::string const line = watch.line();
    told = true;
    stepper.join();
    EXPECT_NE(line.find("\"property\":\"system.state\",\"value\":"), std::string::npos) << line;
    EXPECT_EQ(wait.wait(), 0);
    Result const late = control("wait system.state == boot --timeout 0s");
    EXPECT_EQ(late.status, 1);
    EXPECT_EQ(late.output, "r47-sim: system.state == boot did not come within 0s: it is 6 error\n");
}

TEST_F(RunTest, WhatIsNotUnderstoodIsRefused) {
    struct Case {
        char const* options;
        char const* message;
    };
    for (Case const& bad :
         {Case{"--without /dev/null", "r47-sim: /dev/null is no file of the device\n"},
          Case{"--clock fast", "r47-sim: usage: clock [real | scaled FACTOR | stepped]\n"},
          Case{"--clock scaled 0", "r47-sim: bad factor 0: 0.001 to 1000\n"},
          Case{"--frobnicate", "r47-sim: unknown option --frobnicate: try r47-sim help\n"},
          Case{"--journl x", "r47-sim: unknown option --journl: did you mean --journal?\n"},
          Case{"--clock", "r47-sim: --clock: 1 required SETTING missing\n"},
          Case{"--publish 0", "r47-sim: bad port 0: 1 to 65535\n"},
          Case{"--publish 65536", "r47-sim: bad port 65536: 1 to 65535\n"},
          Case{"--publish 10.0.0.1:4711", "r47-sim: bad address 10.0.0.1: 127.0.0.1 or another of this host alone\n"},
          Case{"--publish 127.0.1:4711", "r47-sim: bad address 127.0.1: 127.0.0.1 or another of this host alone\n"},
          Case{"--device x --clock stepped",
               "r47-sim: --device names a device that runs already: it takes no options of a device's start\n"},
          Case{"--device x --require-faults",
               "r47-sim: --device names a device that runs already: it takes no options of a device's start\n"}}) {
        Result const result = run(bad.options, "echo started");
        EXPECT_EQ(result.status, 125) << bad.options;
        EXPECT_EQ(result.output, bad.message);
    }
    for (std::string const words :
         {" run", " run -- ", " fleet", " fleet 2", " fleet --frobnicate 2 -- true", " run --journal", " run --publish",
          " device --journal", " device --frobnicate", "", " --device", " --device x", " --frobnicate",
          " --timeout 5 show", " --timeout 1s", " list all", " help nothing", " --device x list"}) {
        EXPECT_EQ(shell(sim_ + words).status, 125) << words;
    }
}

TEST_F(RunTest, HelpNamesOptionsAndCommands) {
    Result const result = shell(sim_ + " help");
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.output.find("--without PATH"), std::string::npos);
    EXPECT_NE(result.output.find("fault add OPERATION"), std::string::npos);
    EXPECT_EQ(shell(sim_ + " --help").output, result.output);
    EXPECT_EQ(shell(sim_ + " -h").output, result.output);
}

TEST_F(RunTest, EachCommandHasItsHelp) {
    for (std::string const command : {"run", "fleet", "device", "list", "show", "fault"}) {
        Result const result = shell(sim_ + " help " + command);
        EXPECT_EQ(result.status, 0);
        EXPECT_NE(result.output.find(command), std::string::npos) << result.output;
        for (std::string const option : {" --help", " -h"}) {
            EXPECT_EQ(shell(sim_ + " " + command + option).output, result.output) << command << option;
        }
    }
    EXPECT_NE(shell(sim_ + " help run").output.find("--publish [127.X.Y.Z:]PORT"), std::string::npos);
    EXPECT_NE(shell(sim_ + " help device").output.find("usage: r47-sim device [OPTION...]\n"), std::string::npos);
    EXPECT_EQ(shell(sim_ + " help device").output.find("--publish"), std::string::npos);
}

TEST_F(RunTest, TheVersionIsTold) {
    Result const result = shell(sim_ + " --version");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output.find("r47-sim "), 0U);
    EXPECT_NE(result.output.find_first_of("0123456789"), std::string::npos);
}

TEST_F(RunTest, AMistypedCommandIsToldWhatItMayMean) {
    EXPECT_EQ(control("devise").output, "r47-sim: unknown command \"devise\": did you mean device?\n");
    EXPECT_EQ(control("shwo system").output, "r47-sim: unknown command \"shwo\": did you mean show?\n");
    EXPECT_EQ(control("shwo system").status, 1);
    EXPECT_EQ(control("--devise x show").output, "r47-sim: unknown option --devise: did you mean --device?\n");
}

// What looks like an option of r47-sim is the command's own.
TEST_F(RunTest, WordsBehindTheMarkBelongToTheCommand) {
    EXPECT_EQ(run("--name x", "printf '%s.' --help -- --name -h").output, "--help.--.--name.-h.");
}

}  // namespace
