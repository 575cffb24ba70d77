// How long the console takes from a key to all that it prints for it, with a library that answers at once: two consoles
// against each other.
#include <poll.h>
#include <signal.h>

#include "bench/bench.h"

namespace {

constexpr int kRounds = 2000;
constexpr int kLimit = 60000;  // ms, that no working console reaches

// A console in the menu of the real-time unit.
class Console {
public:
    explicit Console(char const* path) {
        int in[2];
        int out[2];
        if (::pipe(in) != 0 || ::pipe(out) != 0 || (pid_ = ::fork()) < 0) {
            std::perror("console");
            std::exit(1);
        }
        if (pid_ == 0) {
            ::dup2(in[0], STDIN_FILENO);
            ::dup2(out[1], STDOUT_FILENO);
            for (int const end : {in[0], in[1], out[0], out[1]}) {
                ::close(end);
            }
            ::execl(path, path, nullptr);
            std::perror(path);
            ::_exit(127);
        }
        ::close(in[0]);
        ::close(out[1]);
        input_ = in[1];
        output_ = out[0];
        type('b');
        type('E');
        wait_for(kAnswer);
        // What follows the answer is the menu: its end is what stands there once nothing more comes.
        std::string menu;
        for (pollfd more{output_, POLLIN, 0}; ::poll(&more, 1, 500) > 0;) {
            menu += read();
        }
        end_ = (text_ + menu).substr((text_ + menu).rfind(kAnswer));
    }
    Console(Console const&) = delete;
    Console& operator=(Console const&) = delete;
    ~Console() {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }

    // Asks for the exposure until all is printed that a question prints.
    void ask() {
        text_.clear();
        type('E');
        wait_for(end_);
    }

private:
    static constexpr char const* kAnswer = "sensor actual exposure: 0\n";

    void type(char key) const {
        char const line[] = {key, '\n'};
        [[maybe_unused]] auto const count = ::write(input_, line, sizeof line);
    }
    std::string read() const {
        char bytes[4096];
        ssize_t const count = ::read(output_, bytes, sizeof bytes);
        return {bytes, static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
    }
    void wait_for(std::string const& end) {
        while (text_.find(end) == std::string::npos) {
            pollfd more{output_, POLLIN, 0};
            std::string const bytes = ::poll(&more, 1, kLimit) > 0 ? read() : "";
            if (bytes.empty()) {
                std::fprintf(stderr, "the console says nothing more behind: %s\n", text_.c_str());
                std::exit(1);
            }
            text_ += bytes;
        }
    }

    pid_t pid_ = -1;
    int input_ = -1;
    int output_ = -1;
    std::string text_;
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
    Console console(argv[1]);
    Console other(argv[2]);
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
