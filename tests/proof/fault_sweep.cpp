// Proves that the console does, says and replies what it should, whatever the library does: each call of recorded
// sessions is disturbed in several ways.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iostream>
#include <iterator>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "sim/calls/operations.h"
#include "tests/proof/faults.h"
#include "tests/proof/judge.h"
#include "tests/proof/options.h"
#include "tests/proof/processes.h"
#include "tests/proof/sweep_sessions.h"

namespace proof {

namespace {

using support::ConsoleSession;
using support::JournalLine;

constexpr char const* kUsage =
    "usage: fault_sweep [--all | --sample RUNS] [--seed N] [--jobs N] [--session NAME]\n"
    "       fault_sweep run NAME [COMMAND...]\n"
    "  --all           every fault, instead of as many of each session as a few minutes allow\n"
    "  --sample RUNS   only so many runs, of all sessions and kinds together\n"
    "  --seed N        chooses these and the pairs of faults; default: 1\n"
    "  --jobs N        runs beside each other; default: twice the processors, for some sessions wait a lot\n"
    "  --session NAME  this session alone\n"
    "  run             one run of the session, with the commands as its scenario; prints what came of it\n";

constexpr std::size_t kRunsInMinutes = 1500;  // without --all and --sample

constexpr auto kLongestRun = std::chrono::minutes(3);

// Operations that no session meets, and why.
std::set<std::string> const kNotMet{
    "base_t::get_status",        // each module answers it by its own
    "base_t::get_revision",      // the same
    "system_t::~system_t",       // its menu ends the process, which leaves the object
    "imx_t::get_serial_number",  // the key for it calls nothing
};

std::set<std::string> all_operations() {
    std::set<std::string> names;
    for (sim::OperationInfo const& operation : sim::kOperationInfos) {
        names.emplace(operation.name);
    }
    return names;
}

// One run of a session.
struct Run {
    std::vector<std::string> journal;  // the lines of calls and callbacks
    std::map<std::string, std::string> observed;
    std::vector<std::string> problems;
};

// Empty where none is.
std::string node_lost_by(std::vector<std::string> const& scenario) {
    for (std::string const& line : scenario) {
        std::size_t const at = line.find(kNodeRemove);
        if (at != std::string::npos) {
            return line.substr(at + std::strlen(kNodeRemove));
        }
    }
    return "";
}

Run play(Session const& session, std::vector<std::string> const& scenario) {
    Run run;
    support::SessionOptions options = session.options;
    options.scenario.insert(options.scenario.end(), scenario.begin(), scenario.end());
    try {
        ConsoleSession console(options);
        Player player(session, console);
        int const status = player.play();
        if (status != 0) {
            run.problems.push_back("exit status " + std::to_string(status));
        }
        run.journal = console.journal();
        Verdict verdict = judge(session, {player.typed(), player.sent(), console.output(), console.errors(),
                                          player.received(), run.journal, node_lost_by(scenario)});
        run.observed = std::move(verdict.observed);
        run.problems.insert(run.problems.end(), verdict.problems.begin(), verdict.problems.end());
    } catch (std::exception const& error) {
        run.problems.push_back(error.what());
    }
    return run;
}

// In one line, of characters that a terminal shows.
std::string printable(std::string const& text) {
    std::string line;
    for (char const c : text) {
        line += c == '\n' ? "\\n" : c == '\t' ? "\\t" : c == '\033' ? "\\e" : std::string(1, c);
    }
    return line;
}

// A run as text, from the process that made it to the one that started it.
std::string written(Run const& run) {
    std::ostringstream text;
    for (std::string const& line : run.journal) {
        text << "journal " << line << '\n';
    }
    for (auto const& [place, seen] : run.observed) {
        text << "observed " << place << ": " << printable(seen) << '\n';
    }
    for (std::string const& problem : run.problems) {
        text << "problem " << printable(problem) << '\n';
    }
    text << "end\n";
    return text.str();
}

Run read_run(Outcome const& outcome) {
    Run run;
    std::istringstream lines(outcome.output);
    bool whole = false;
    for (std::string line; std::getline(lines, line);) {
        std::size_t const blank = std::min(line.find(' '), line.size());
        std::string const name = line.substr(0, blank);
        std::string const value = line.substr(std::min(blank + 1, line.size()));
        whole = whole || name == "end";
        if (name == "journal") {
            run.journal.push_back(value);
        } else if (name == "observed") {
            std::size_t const colon = value.find(": ");
            run.observed[value.substr(0, colon)] = value.substr(colon + 2);
        } else if (name == "problem") {
            run.problems.push_back(value);
        }
    }
    if (!whole || outcome.status != 0) {
        run.problems.push_back("the run broke off: " + printable(outcome.output));
    }
    return run;
}

std::vector<JournalLine> parsed(std::vector<std::string> const& journal) {
    std::vector<JournalLine> lines;
    for (std::string const& line : journal) {
        lines.push_back(support::parse_journal_line(line));
    }
    return lines;
}

// That the fault came, and did something.
void judge_fault(Run const& plain, Fault const& fault, Run& run) {
    std::vector<JournalLine> const lines = parsed(run.journal);
    std::set<std::string> fired;
    for (JournalLine const& line : lines) {
        if (line.rule == "-") {
            continue;
        }
        fired.insert(line.rule);
        std::string took = line.took;
        took.erase(took.find('.'), 1);                                    // seconds with six decimals
        bool const at_exit = line.text.find("::~") != std::string::npos;  // there the device stops waiting
        if (fault.kind == Kind::delay && !at_exit && std::stol(took) < kLateness) {
            run.problems.push_back("the call was not delayed");
        }
    }
    if (fired.size() != fault.firings) {
        run.problems.push_back(std::to_string(fired.size()) + " of the rules fired");
    }
    auto const texts = [](std::vector<JournalLine> const& journal) {
        std::vector<std::string> all;
        for (JournalLine const& line : journal) {
            all.push_back(line.text);
        }
        return all;
    };
    bool const shows = texts(lines) != texts(parsed(plain.journal));
    if (fault.kind != Kind::delay && shows != fault.shows) {
        run.problems.push_back(shows ? "the fault changed the journal" : "the fault did nothing");
    }
}

struct Task {
    std::size_t session;
    Fault fault;
};

struct Row {
    std::size_t runs[std::size(kKinds)] = {};
    std::size_t violations = 0;
};

class Sweep {
public:
    Sweep(std::vector<Session> sessions, unsigned int jobs, unsigned long seed)
        : sessions_(std::move(sessions)), jobs_(jobs), seed_(seed), rows_(sessions_.size()) {}

    // True when no run failed, of a sample of so many at most.
    bool run(std::size_t sample) {
        play_plain_sessions();
        std::vector<Task> const tasks = choose(sample);
        std::vector<Command> commands;
        for (Task const& task : tasks) {
            commands.push_back(command(task.session, task.fault.rules));
        }
        run_all(commands, {jobs_, kLongestRun}, [&](std::size_t i, Outcome const& outcome) {
            Run run = read_run(outcome);
            judge_fault(plain_[tasks[i].session], tasks[i].fault, run);
            count(tasks[i], run);
        });
        return report();
    }

    // Whether each operation is met or explained, and none of those that are explained is met.
    bool meets_all_operations() const {
        std::set<std::string> met;
        for (Run const& plain : plain_) {
            for (JournalLine const& line : parsed(plain.journal)) {
                met.insert(line.text.substr(0, line.text.find('(')));
            }
        }
        bool all = true;
        for (std::string const& operation : all_operations()) {
            bool const explained = kNotMet.count(operation) != 0;
            if (explained == (met.count(operation) != 0)) {
                std::cout << operation << ": " << (explained ? "is met, with a reason why not" : "no session meets it")
                          << '\n';
                all = false;
            }
        }
        return all;
    }

private:
    Command command(std::size_t session, std::vector<std::string> const& scenario) const {
        Command words = command_of(R47_SELF);
        words.insert(words.end(), {"run", sessions_[session].name});
        words.insert(words.end(), scenario.begin(), scenario.end());
        return words;
    }

    void play_plain_sessions() {
        std::vector<Command> commands;
        for (std::size_t i = 0; i < sessions_.size(); ++i) {
            commands.push_back(command(i, {}));
        }
        for (Outcome const& outcome : run_all(commands, {jobs_, kLongestRun})) {
            plain_.push_back(read_run(outcome));
            std::size_t const session = plain_.size() - 1;
            judge_observed(session, "plain", plain_.back());
            tell(session, "plain", {}, plain_.back());
        }
    }

    // Of the faults of every session some, evenly spread over all; the same for the same seed.
    std::vector<Task> choose(std::size_t sample) const {
        std::vector<Task> all;
        for (std::size_t session = 0; session < sessions_.size(); ++session) {
            for (Fault& fault : faults_of(sessions_[session], parsed(plain_[session].journal), seed_ + session)) {
                all.push_back({session, std::move(fault)});
            }
        }
        if (sample >= all.size()) {
            return all;
        }
        std::mt19937_64 random(seed_);
        std::vector<Task> chosen;
        for (std::size_t i = 0; i < sample; ++i) {
            std::size_t const begin = i * all.size() / sample;
            chosen.push_back(all[begin + random() % ((i + 1) * all.size() / sample - begin)]);
        }
        return chosen;
    }

    void count(Task const& task, Run& run) {
        ++rows_[task.session].runs[static_cast<std::size_t>(task.fault.kind)];
        std::string const what =
            std::string(kKinds[static_cast<std::size_t>(task.fault.kind)]) + " " + task.fault.where;
        judge_observed(task.session, what, run);
        tell(task.session, what, task.fault.rules, run);
    }

    // What nobody has written down is at least the same each time.
    void judge_observed(std::size_t session, std::string const& what, Run& run) {
        for (auto const& [place, text] : run.observed) {
            auto const [first, is_new] = observed_[session].insert({place, {what, text}});
            if (!is_new && first->second.second != text) {
                run.problems.push_back(place + ": printed \"" + text + "\", and in the run " + first->second.first +
                                       " \"" + first->second.second + "\"");
            }
        }
    }

    void tell(std::size_t session, std::string const& what, std::vector<std::string> const& rules, Run const& run) {
        rows_[session].violations += run.problems.empty() ? 0 : 1;
        for (std::string const& problem : run.problems) {
            std::cout << sessions_[session].name << ", " << what << ": " << problem << std::endl;
        }
        if (!run.problems.empty()) {
            std::cout << "    fault_sweep run '" << sessions_[session].name << "'";
            for (std::string const& rule : rules) {
                std::cout << " '" << rule << "'";
            }
            std::cout << std::endl;
        }
    }

    bool report() const {
        std::printf("%-30s %6s", "session", "calls");
        for (char const* kind : kKinds) {
            std::printf(" %6s", kind);
        }
        std::printf(" %11s\n", "violations");
        auto const print = [](char const* name, std::size_t calls, Row const& row) {
            std::printf("%-30s %6zu", name, calls);
            for (std::size_t const runs : row.runs) {
                std::printf(" %6zu", runs);
            }
            std::printf(" %11zu\n", row.violations);
        };
        Row sum;
        std::size_t calls = 0;
        for (std::size_t i = 0; i < sessions_.size(); ++i) {
            std::size_t const of_session = plain_[i].journal.size();
            print(sessions_[i].name.c_str(), of_session, rows_[i]);
            calls += of_session;
            for (std::size_t kind = 0; kind < std::size(kKinds); ++kind) {
                sum.runs[kind] += rows_[i].runs[kind];
            }
            sum.violations += rows_[i].violations;
        }
        print("all", calls, sum);
        return sum.violations == 0;
    }

    std::vector<Session> sessions_;
    unsigned int jobs_;
    unsigned long seed_;
    std::vector<Run> plain_;
    std::vector<Row> rows_;
    // By session and place: in which run it was seen first, and what.
    std::map<std::size_t, std::map<std::string, std::pair<std::string, std::string>>> observed_;
};

std::vector<Session> sessions_named(std::string const& name) {
    std::vector<Session> chosen;
    for (Session const& session : sweep_sessions()) {
        if (name.empty() || session.name == name) {
            chosen.push_back(session);
        }
    }
    if (chosen.empty()) {
        throw std::invalid_argument("no session is called " + name);
    }
    return chosen;
}

int run_one(std::vector<std::string> const& words) {
    std::cout << written(play(sessions_named(words.at(1)).front(), {words.begin() + 2, words.end()}));
    return 0;
}

int sweep(std::vector<std::string> words) {
    auto const jobs = take_option(words, "--jobs", 2UL * std::thread::hardware_concurrency());
    auto const seed = take_option(words, "--seed", 1);
    auto const all = std::find(words.begin(), words.end(), "--all");
    std::size_t sample = kRunsInMinutes;
    if (all != words.end()) {
        words.erase(all);
        sample = SIZE_MAX;
    }
    sample = take_option(words, "--sample", sample);
    std::string session;
    if (words.size() == 2 && words[0] == "--session") {
        session = words[1];
    } else if (!words.empty()) {
        throw std::invalid_argument(words[0]);
    }
    Sweep sweep(sessions_named(session), static_cast<unsigned int>(jobs), seed);
    bool const behaves = sweep.run(sample);
    bool const is_whole = !session.empty() || sweep.meets_all_operations();
    return behaves && is_whole ? 0 : 1;
}

}  // namespace

}  // namespace proof

int main(int argc, char** argv) {
    std::vector<std::string> const words(argv + 1, argv + argc);
    try {
        return words.size() > 1 && words[0] == "run" ? proof::run_one(words) : proof::sweep(words);
    } catch (std::invalid_argument const& error) {
        std::cerr << "fault_sweep: " << error.what() << '\n' << proof::kUsage;
        return 2;
    } catch (std::exception const& error) {
        std::cerr << "fault_sweep: " << error.what() << '\n';
        return 1;
    }
}
