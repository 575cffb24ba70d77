// How long the console takes from a key to all that it prints for it, with a library that answers at once: two consoles
// against each other.
#include <signal.h>

#include "bench/bench.h"
#include "bench/program.h"

namespace {

constexpr int kRounds = 2000;
constexpr int kPause = 500;  // ms, after which nothing more of a menu comes

// A console in the menu of the real-time unit.
class Console {
public:
    explicit Console(char const* path) : program_({path}) {
        program_.type("b\nE\n");
        // What follows the answer is the menu: its end is what stands there once nothing more comes.
        std::string text = program_.wait_for(kAnswer);
        while (program_.says_more(kPause)) {
            text += program_.read();
        }
        end_ = text.substr(text.rfind(kAnswer));
    }

    // Asks for the exposure until all is printed that a question prints.
    void ask() const {
        program_.type("E\n");
        program_.wait_for(end_);
    }

private:
    static constexpr char const* kAnswer = "sensor actual exposure: 0\n";

    bench::Program program_;
    std::string end_;
};

}  // namespace

// The console, and the one that it is compared with.
int main(int argc, char* argv[]) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: bench_console CONSOLE OTHER_CONSOLE\n");
        return 2;
    }
    ::signal(SIGPIPE, SIG_IGN);
    Console const console(argv[1]);
    Console const other(argv[2]);
    std::vector<double> times;
    std::vector<double> other_times;
    for (int round = 0; round < kRounds; ++round) {
        times.push_back(bench::time_of([&] { console.ask(); }));
        other_times.push_back(bench::time_of([&] { other.ask(); }));
    }
    double const time = bench::median(times);
    double const other_time = bench::median(other_times);
    std::printf("round trip of the console: %.1f us, of the other: %.1f us, ratio %.2f (goal: unchanged)\n", time * 1e6,
                other_time * 1e6, time / other_time);
}
