// Proves that no client can hang, crash or fill the console.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "tests/proof/command_storm.h"
#include "tests/proof/hostile_client.h"
#include "tests/proof/options.h"
#include "tests/proof/processes.h"

namespace proof {

namespace {

constexpr char const* kUsage =
    "usage: client_storm [CONSOLES] [COMMANDS] [--jobs N] [--seed N]\n"
    "  CONSOLES   each of which meets one hostile client; default: 2000\n"
    "  COMMANDS   that one client gives one console; default: 1000000\n"
    "  --jobs N   consoles beside each other; default: twice the processors, for many wait\n"
    "  --seed N   fixes what the clients do; default: 1\n";

constexpr unsigned long kConsoles = 2000;
constexpr unsigned long kCommands = 1000000;

// The two that send megabytes come less often than the others.
constexpr Hostility kMixture[] = {
    Hostility::cut,        Hostility::noise,        Hostility::reset, Hostility::half_close, Hostility::slow_bytes,
    Hostility::silent,     Hostility::cut,          Hostility::noise, Hostility::reset,      Hostility::half_close,
    Hostility::slow_bytes, Hostility::silent,       Hostility::cut,   Hostility::noise,      Hostility::reset,
    Hostility::long_lines, Hostility::endless_line, Hostility::deaf,
};

Hostility hostility_of(std::size_t console) {
    return kMixture[console % std::size(kMixture)];
}

struct Row {
    std::size_t consoles = 0;
    std::size_t by_client = 0;
    unsigned int most_keys = 0;
    long longest = 0;  // ms
    std::size_t violations = 0;
};

class Storm {
public:
    Storm(unsigned int jobs, unsigned long seed) : jobs_(jobs), seed_(seed) {}

    // True when nothing was wrong.
    bool run(unsigned long consoles, unsigned long commands) {
        bool const answered = commands == 0 || run_commands(commands);
        bool const ended = consoles == 0 || run_consoles(consoles);
        return answered && ended;
    }

private:
    bool run_commands(unsigned long commands) const {
        Command command = command_of(R47_SELF);
        command.insert(command.end(), {"commands", std::to_string(commands), std::to_string(seed_)});
        Outcome const outcome = run_all({command}, {1}).front();
        std::cout << outcome.output << std::flush;
        return outcome.status == 0;
    }

    bool run_consoles(unsigned long consoles) {
        std::vector<Command> commands;
        for (std::size_t i = 0; i < consoles; ++i) {
            commands.push_back(command_of(R47_SELF));
            commands.back().insert(commands.back().end(), {"console", std::to_string(i), std::to_string(seed_)});
        }
        run_all(commands, {jobs_, std::chrono::minutes(3)},
                [&](std::size_t i, Outcome const& outcome) { count(i, outcome); });
        return report();
    }

    // The outcome of a meeting is one line: by client, keys, milliseconds; and a line for each problem.
    void count(std::size_t console, Outcome const& outcome) {
        Row& row = rows_[static_cast<std::size_t>(hostility_of(console))];
        ++row.consoles;
        std::istringstream lines(outcome.output);
        bool by_client = false;
        unsigned int keys = 0;
        long ending = 0;
        lines >> by_client >> keys >> ending;
        row.by_client += by_client ? 1 : 0;
        row.most_keys = std::max(row.most_keys, keys);
        row.longest = std::max(row.longest, ending);
        if (!lines || outcome.status != 0) {
            ++row.violations;
            std::cout << "console " << console << ", " << kHostilities[static_cast<std::size_t>(hostility_of(console))]
                      << ": " << outcome.output << std::endl;
        }
    }

    bool report() const {
        std::printf("%-14s %9s %14s %10s %12s %11s\n", "client", "consoles", "ended by key 0", "exit keys",
                    "longest, ms", "violations");
        Row sum;
        auto const print = [](char const* name, Row const& row) {
            std::printf("%-14s %9zu %14zu %10u %12ld %11zu\n", name, row.consoles, row.by_client, row.most_keys,
                        row.longest, row.violations);
        };
        for (std::size_t i = 0; i < std::size(kHostilities); ++i) {
            print(kHostilities[i], rows_[i]);
            sum.consoles += rows_[i].consoles;
            sum.by_client += rows_[i].by_client;
            sum.most_keys = std::max(sum.most_keys, rows_[i].most_keys);
            sum.longest = std::max(sum.longest, rows_[i].longest);
            sum.violations += rows_[i].violations;
        }
        print("all", sum);
        return sum.violations == 0;
    }

    unsigned int jobs_;
    unsigned long seed_;
    Row rows_[std::size(kHostilities)];
};

// One meeting, in a process of its own: "console NUMBER SEED". Every second operator interrupts.
int meet_one(std::vector<std::string> const& words) {
    std::size_t const console = std::stoul(words[1]);
    auto const seed = static_cast<unsigned int>(console * 7919 + std::stoul(words[2]));
    Encounter const encounter = meet(hostility_of(console), console / std::size(kMixture) % 2 == 1, seed);
    std::cout << encounter.left_by_client << ' ' << encounter.exit_keys << ' ' << encounter.ending.count() << '\n';
    for (std::string const& problem : encounter.problems) {
        std::cout << problem << '\n';
    }
    return encounter.problems.empty() ? 0 : 1;
}

int storm(std::vector<std::string> words) {
    auto const jobs = take_option(words, "--jobs", 2UL * std::thread::hardware_concurrency());
    auto const seed = take_option(words, "--seed", 1);
    if (words.size() > 2) {
        throw std::invalid_argument(words[2]);
    }
    unsigned long const consoles = !words.empty() ? std::stoul(words[0]) : kConsoles;
    unsigned long const commands = words.size() > 1 ? std::stoul(words[1]) : kCommands;
    return Storm(static_cast<unsigned int>(jobs), seed).run(consoles, commands) ? 0 : 1;
}

int dispatch(std::vector<std::string> const& words) {
    if (words.size() == 3 && words[0] == "console") {
        return meet_one(words);
    }
    if (words.size() == 3 && words[0] == "commands") {
        return command_storm(std::stoul(words[1]), static_cast<unsigned int>(std::stoul(words[2])));
    }
    return storm(words);
}

}  // namespace

}  // namespace proof

int main(int argc, char** argv) {
    try {
        return proof::dispatch({argv + 1, argv + argc});
    } catch (std::invalid_argument const& error) {
        std::cerr << "client_storm: " << error.what() << '\n' << proof::kUsage;
        return 2;
    } catch (std::exception const& error) {
        std::cerr << "client_storm: " << error.what() << '\n';
        return 1;
    }
}
