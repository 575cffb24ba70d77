// How long the console takes from its start to its first menu, and how much memory it has there and behind a visit of
// each menu, with a library that answers at once: against the two shell commands alone that it begins with, and against
// the least program that does the same.
#include <fstream>

#include "bench/bench.h"
#include "bench/first_menu.h"
#include "bench/program.h"

namespace {

constexpr int kRounds = 300;
constexpr char const* kVisits = "axbxcxexExfxkxgxGxhxHxtxpx?A\n";
constexpr char const* kVisited = "File Error Code: ";

double time_to_first_menu(char const* path) {
    auto const start = std::chrono::steady_clock::now();
    bench::Program const program({path});
    program.wait_for(bench::kFirstPrompt);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Megabytes, as the kernel calls them in a file of the process.
double memory(pid_t pid, char const* file, std::string const& name) {
    std::ifstream lines("/proc/" + std::to_string(pid) + "/" + file);
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, name.size(), name) == 0) {
            return std::stod(line.substr(name.size())) / 1024;
        }
    }
    return 0;
}

void print_memory(char const* who, bench::Program const& program) {
    pid_t const pid = program.pid();
    std::printf("memory of %s: at most %.1f MB, now %.1f MB, %.1f MB of it its share\n", who,
                memory(pid, "status", "VmHWM:"), memory(pid, "status", "VmRSS:"), memory(pid, "smaps_rollup", "Pss:"));
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
    bench::Program const least({argv[2]});
    least.wait_for(bench::kFirstPrompt);
    print_memory("the least program", least);
    bench::Program const console({argv[1]});
    console.wait_for(bench::kFirstPrompt);
    print_memory("the console at its first menu", console);
    console.type(kVisits);
    console.wait_for(kVisited, bench::kFirstPrompt);
    print_memory("the console behind a visit of each menu (goal: below 5 MB)", console);
}
