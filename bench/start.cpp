// How long the console takes from its start to its first menu, and how much memory it has there and behind a visit of
// each menu, with a library that answers at once: against the two shell commands alone that it begins with, and against
// the least program that does the same.
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>

#include <fstream>
#include <string_view>

#include "bench/bench.h"
#include "bench/first_menu.h"

namespace {

constexpr int kRounds = 300;
constexpr char const* kVisits = "axbxcxexExfxkxgxGxhxHxtxpx?A\n";
constexpr char const* kVisited = "File Error Code: ";

// A program that ends with its object.
class Program {
public:
    explicit Program(char const* path) {
        int in[2];
        int out[2];
        posix_spawn_file_actions_t ends;
        ::posix_spawn_file_actions_init(&ends);
        if (::pipe2(in, O_CLOEXEC) != 0 || ::pipe2(out, O_CLOEXEC) != 0 ||
            ::posix_spawn_file_actions_adddup2(&ends, in[0], STDIN_FILENO) != 0 ||
            ::posix_spawn_file_actions_adddup2(&ends, out[1], STDOUT_FILENO) != 0) {
            std::perror("pipes");
            std::exit(1);
        }
        char* const arguments[] = {const_cast<char*>(path), nullptr};
        if (int const error = ::posix_spawn(&pid_, path, &ends, nullptr, arguments, environ); error != 0) {
            std::fprintf(stderr, "%s: error %d\n", path, error);
            std::exit(1);
        }
        ::posix_spawn_file_actions_destroy(&ends);
        ::close(in[0]);
        ::close(out[1]);
        input_ = in[1];
        output_ = out[0];
    }
    Program(Program const&) = delete;
    Program& operator=(Program const&) = delete;
    ~Program() {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
        ::close(input_);
        ::close(output_);
    }

    void type(std::string_view keys) const {
        [[maybe_unused]] auto const count = ::write(input_, keys.data(), keys.size());
    }

    // Until it has printed the first text, and the second behind that.
    void wait_for(char const* text, char const* behind = "") const {
        std::string printed;
        std::size_t at;
        while ((at = printed.find(text)) == std::string::npos || printed.find(behind, at) == std::string::npos) {
            char bytes[4096];
            ssize_t const count = ::read(output_, bytes, sizeof bytes);
            if (count <= 0) {
                std::fprintf(stderr, "the program says nothing more behind: %s\n", printed.c_str());
                std::exit(1);
            }
            printed.append(bytes, static_cast<std::size_t>(count));
        }
    }

    // Megabytes, as the kernel calls them in a file of the process.
    double memory(char const* file, std::string_view name) const {
        std::ifstream lines("/proc/" + std::to_string(pid_) + "/" + file);
        for (std::string line; std::getline(lines, line);) {
            if (line.compare(0, name.size(), name) == 0) {
                return std::stod(line.substr(name.size())) / 1024;
            }
        }
        return 0;
    }

private:
    pid_t pid_ = -1;
    int input_ = -1;
    int output_ = -1;
};

double time_to_first_menu(char const* path) {
    auto const start = std::chrono::steady_clock::now();
    Program const program(path);
    program.wait_for(bench::kFirstPrompt);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void print_memory(char const* who, Program const& program) {
    std::printf("memory of %s: at most %.1f MB, now %.1f MB, %.1f MB of it its share\n", who,
                program.memory("status", "VmHWM:"), program.memory("status", "VmRSS:"),
                program.memory("smaps_rollup", "Pss:"));
}

void compare_starts(char const* console, char const* least) {
    std::vector<double> commands;
    std::vector<double> consoles;
    std::vector<double> leasts;
    for (int round = 0; round < kRounds; ++round) {
        commands.push_back(bench::time_of(bench::run_shell_commands));
        consoles.push_back(time_to_first_menu(console));
        leasts.push_back(time_to_first_menu(least));
    }
    double const alone = bench::median(commands);
    std::printf(
        "start to first menu: %.2f ms, the shell commands alone: %.2f ms, ratio %.2f (goal: 1.3), "
        "the least program: %.2f ms, ratio %.2f\n",
        bench::median(consoles) * 1e3, alone * 1e3, bench::median(consoles) / alone, bench::median(leasts) * 1e3,
        bench::median(leasts) / alone);
}

}  // namespace

// The console, and the least program.
int main(int argc, char* argv[]) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: bench_start CONSOLE LEAST\n");
        return 2;
    }
    compare_starts(argv[1], argv[2]);
    Program const least(argv[2]);
    least.wait_for(bench::kFirstPrompt);
    print_memory("the least program", least);
    Program const console(argv[1]);
    console.wait_for(bench::kFirstPrompt);
    print_memory("the console at its first menu", console);
    console.type(kVisits);
    console.wait_for(kVisited, bench::kFirstPrompt);
    print_memory("the console behind a visit of each menu (goal: below 5 MB)", console);
}
