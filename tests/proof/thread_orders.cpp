// Proves that the console does not depend on the order in which its threads and the library's come to run.
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <map>
#include <new>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/proof/options.h"
#include "tests/proof/orders/record.h"
#include "tests/proof/orders/turns.h"
#include "tests/proof/orders/visits.h"
#include "tests/proof/orders/world.h"

namespace {

using orders::EventKind;
using orders::Record;
using orders::Visit;

constexpr char const* kUsage =
    "usage: thread_orders [--menu NAME] [--way NAME] [--seeds N] [--first SEED] [--jobs N] [--show]\n"
    "  --menu NAME   only this menu: GyroAlarm, GyroDelegate, DelegateAndAlarm, Button or LegacyAlarm\n"
    "  --way NAME    only this way to visit it: terminal, client, client-goes or operator-leaves\n"
    "  --seeds N     orders of each menu and way; default: 1000\n"
    "  --first SEED  the first of them; default: 1\n"
    "  --jobs N      runs beside each other; default: the processors\n"
    "  --show        prints all turns of each run; to look at a seed that failed: --first SEED --seeds 1 --show\n";

constexpr unsigned int kLongestRun = 60;     // s; one that takes no turns any more is killed then
constexpr std::size_t kShownAtFailure = 40;  // events

struct Options {
    std::string menu;
    std::string way;
    unsigned long seeds = 1000;
    unsigned long first = 1;
    unsigned long jobs = 1;
    bool show = false;
};

// What each thread did, by its name.
struct Doings {
    std::map<std::string, std::string> calls;
    std::map<std::string, std::string> output;
    std::map<std::string, std::string> replies;
    std::string printed;  // by all of them
};

Doings doings_of(Record const& record) {
    Doings doings;
    orders::for_each_event(record, [&](std::size_t thread, EventKind kind, std::string_view text) {
        std::string const name = record.names[thread];
        if (kind == EventKind::call) {
            doings.calls[name] += std::string(text) + "\n";
        } else if (kind == EventKind::output) {
            doings.output[name] += text;
            doings.printed += text;
        } else if (kind == EventKind::reply) {
            doings.replies[name] += std::string(text) + "\n";
        }
    });
    return doings;
}

std::size_t count(std::string const& text, std::string const& part) {
    std::size_t times = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
        ++times;
    }
    return times;
}

std::string shown(std::string const& what, std::string const& found, std::string const& expected) {
    return what + "\n--- found:\n" + found + "\n--- expected:\n" + expected + "\n---";
}

// What differs between two runs for the threads that do the same in each order: all but those of the callbacks.
std::string difference(Doings const& found, Doings const& expected) {
    for (std::string const name : {"main", "menu", "client"}) {
        for (auto const member : {&Doings::calls, &Doings::output, &Doings::replies}) {
            auto const text_of = [&](Doings const& doings) {
                auto const text = (doings.*member).find(name);
                return text != (doings.*member).end() ? text->second : std::string();
            };
            if (text_of(found) != text_of(expected)) {
                return shown("what the thread " + name + " does depends on the order", text_of(found),
                             text_of(expected));
            }
        }
    }
    return {};
}

// A screen leaves at once, whatever others print.
std::string torn_screen(Visit const& visit, Doings const& doings) {
    for (std::string const& screen : {visit.menu.prompt(), menus::kMain.prompt(), screens::kSocketMenu}) {
        std::size_t whole = 0;
        for (auto const& [name, text] : doings.output) {
            whole += count(text, screen);
        }
        if (count(doings.printed, screen) != whole) {
            return "a screen is torn:\n" + doings.printed;
        }
    }
    return {};
}

// The local menu is there before the client's.
std::string late_local_menu(Doings const& doings) {
    std::size_t const local = doings.printed.find(screens::kSocketMenu);
    std::size_t const clients = doings.printed.find("System calls", doings.printed.find("int test_socket()"));
    return local > clients ? "the local menu comes behind what the client's menu prints:\n" + doings.printed : "";
}

// What the operator ended obeys no line of the client any more, but one that it had read already.
std::string obeyed_client(Record const& record) {
    bool ended = false;
    std::size_t lines = 0;
    orders::for_each_event(record, [&](std::size_t, EventKind kind, std::string_view text) {
        ended = ended || (kind == EventKind::turn && text == orders::kShutsDown);
        lines += ended && kind == EventKind::output && text == "ReadLine: " ? 1 : 0;
    });
    return lines > 1 ? "obeys a client that the operator has ended" : "";
}

void show_events(Record const& record, std::size_t most) {
    std::size_t events = 0;
    orders::for_each_event(record, [&](auto, auto, auto) { ++events; });
    std::size_t number = 0;
    orders::for_each_event(record, [&](std::size_t thread, EventKind kind, std::string_view text) {
        if (++number + most > events) {
            constexpr char const* kKinds[] = {"", "calls ", "is called back ", "prints ", "is told "};
            std::string line;
            for (char const c : text) {
                line += c == '\n' ? std::string("\\n") : std::string(1, c);
            }
            std::printf("    %-16s %s%s\n", record.names[thread], kKinds[static_cast<int>(kind)], line.c_str());
        }
    });
}

// A run, in a process of its own.
class Run {
public:
    Run() : record_(::mmap(nullptr, sizeof(Record), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) {
        errors_ = static_cast<int>(::memfd_create("errors", MFD_CLOEXEC));
        if (record_ == MAP_FAILED || errors_ < 0) {
            throw std::runtime_error("no memory for a run");
        }
    }
    Run(Run const&) = delete;
    Run& operator=(Run const&) = delete;

    void start(Visit const& visit, unsigned long seed, bool with_callbacks) {
        seed_ = seed;
        new (record_) Record;
        if (::ftruncate(errors_, 0) != 0) {
            throw std::runtime_error("no place for the errors of a run");
        }
        ::lseek(errors_, 0, SEEK_SET);
        std::cout << std::flush;
        process_ = ::fork();
        if (process_ == 0) {
            ::dup2(errors_, STDERR_FILENO);
            ::alarm(kLongestRun);
            orders::run(visit, seed, with_callbacks, *static_cast<Record*>(record_));
        }
        if (process_ < 0) {
            throw std::runtime_error("no process for a run");
        }
    }

    pid_t process() const { return process_; }
    unsigned long seed() const { return seed_; }
    Record const& record() const { return *static_cast<Record*>(record_); }

    // What was wrong, whatever it should have done.
    std::string problem(int status) const {
        std::string const errors = text_of_errors();
        if (record().failure[0] != '\0') {
            return record().failure;
        }
        if (WIFSIGNALED(status)) {
            return "killed by signal " + std::to_string(WTERMSIG(status)) + "\n" + errors;
        }
        if (WEXITSTATUS(status) != 0 || !errors.empty()) {
            return "ends with status " + std::to_string(WEXITSTATUS(status)) + "\n" + errors;
        }
        return {};
    }

private:
    std::string text_of_errors() const {
        std::string text(static_cast<std::size_t>(std::max<off_t>(::lseek(errors_, 0, SEEK_END), 0)), '\0');
        ssize_t const size = ::pread(errors_, text.data(), text.size(), 0);
        text.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        return text;
    }

    void* record_;
    int errors_ = -1;
    pid_t process_ = -1;
    unsigned long seed_ = 0;
};

// All orders of one visit.
class Orders {
public:
    Orders(Visit const& visit, Options const& options, std::vector<Run>& runs)
        : visit_(visit), options_(options), runs_(runs) {}

    // False where something was wrong.
    bool run() {
        find_expected();
        unsigned long next = options_.first;
        unsigned long const end = options_.first + options_.seeds;
        for (Run& run : runs_) {
            if (next < end) {
                run.start(visit_, next++, true);
                ++running_;
            }
        }
        while (running_ > 0) {
            Run& ended = wait_for_one();
            if (next < end) {
                ended.start(visit_, next++, true);
                ++running_;
            }
        }
        check_that_the_seed_fixes_the_order();
        std::printf("%-17s %-16s %6lu %8zu %7zu %10zu %11zu\n", visit_.menu.name,
                    orders::kWays[static_cast<int>(visit_.way)], options_.seeds, hashes_.size(),
                    options_.seeds == 0 ? 0 : turns_ / options_.seeds, callbacks_, violations_);
        std::fflush(stdout);
        return violations_ == 0;
    }

private:
    int wait(Run const& run) {
        int status = 0;
        if (::waitpid(run.process(), &status, 0) != run.process()) {
            throw std::runtime_error("a run is lost");
        }
        return status;
    }

    void find_expected() {
        Run& run = runs_.front();
        run.start(visit_, 0, false);
        std::string const problem = run.problem(wait(run));
        if (!problem.empty()) {
            report(run, "without callbacks: " + problem);
        }
        expected_ = doings_of(run.record());
    }

    Run& wait_for_one() {
        int status = 0;
        pid_t const process = ::wait(&status);
        auto const ended =
            std::find_if(runs_.begin(), runs_.end(), [process](Run const& run) { return run.process() == process; });
        if (ended == runs_.end()) {
            throw std::runtime_error("a run is lost");
        }
        --running_;
        judge(*ended, status);
        return *ended;
    }

    void judge(Run const& run, int status) {
        Record const& record = run.record();
        hashes_.insert(record.order);
        turns_ += record.turns;
        callbacks_ += record.callbacks;
        std::string problem = run.problem(status);
        Doings const doings = doings_of(record);
        if (problem.empty() && visit_.is_settled()) {
            problem = difference(doings, expected_);
        }
        if (problem.empty()) {
            problem = torn_screen(visit_, doings);
        }
        if (problem.empty() && visit_.way != orders::Way::terminal) {
            problem = late_local_menu(doings);
        }
        if (problem.empty()) {
            problem = obeyed_client(record);
        }
        if (!problem.empty()) {
            report(run, problem);
        } else if (options_.show) {
            show_events(record, record.size);
        }
        if (run.seed() == options_.first) {
            first_order_ = record.order;
        }
    }

    // Otherwise no failure could be played again.
    void check_that_the_seed_fixes_the_order() {
        if (options_.seeds == 0) {
            return;
        }
        Run& run = runs_.front();
        run.start(visit_, options_.first, true);
        wait(run);
        if (run.record().order != first_order_) {
            report(run, "takes other turns when it is played again");
        }
    }

    void report(Run const& run, std::string const& problem) {
        ++violations_;
        std::printf("%s, seed %lu: %s\n", visit_.name().c_str(), run.seed(), problem.c_str());
        show_events(run.record(), options_.show ? run.record().size : kShownAtFailure);
        std::printf("  again: thread_orders --menu %s --way %s --first %lu --seeds 1 --show\n", visit_.menu.name,
                    orders::kWays[static_cast<int>(visit_.way)], run.seed());
    }

    Visit const& visit_;
    Options const& options_;
    std::vector<Run>& runs_;
    Doings expected_;
    std::size_t running_ = 0;
    std::set<std::uint64_t> hashes_;
    std::uint64_t first_order_ = 0;
    std::size_t turns_ = 0;
    std::size_t callbacks_ = 0;
    std::size_t violations_ = 0;
};

int try_orders(std::vector<std::string> words) {
    Options options;
    options.menu = proof::take_word(words, "--menu");
    options.way = proof::take_word(words, "--way");
    options.seeds = proof::take_option(words, "--seeds", options.seeds);
    options.first = proof::take_option(words, "--first", options.first);
    options.jobs = std::max(1UL, proof::take_option(words, "--jobs", std::thread::hardware_concurrency()));
    options.show = proof::take_flag(words, "--show");
    if (!words.empty()) {
        throw std::invalid_argument(words.front());
    }
    std::vector<Run> runs(options.jobs);
    bool tried = false;
    bool good = true;
    std::printf("%-17s %-16s %6s %8s %7s %10s %11s\n", "menu", "way", "runs", "orders", "turns", "callbacks",
                "violations");
    for (Visit const& visit : orders::every_visit()) {
        bool const wanted = (options.menu.empty() || options.menu == visit.menu.name) &&
                            (options.way.empty() || options.way == orders::kWays[static_cast<int>(visit.way)]);
        if (wanted) {
            tried = true;
            good = Orders(visit, options, runs).run() && good;
        }
    }
    if (!tried) {
        throw std::invalid_argument("no such menu or way");
    }
    return good ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return try_orders({argv + 1, argv + argc});
    } catch (std::invalid_argument const& error) {
        std::cerr << "thread_orders: " << error.what() << '\n' << kUsage;
        return 2;
    } catch (std::exception const& error) {
        std::cerr << "thread_orders: " << error.what() << '\n';
        return 1;
    }
}
