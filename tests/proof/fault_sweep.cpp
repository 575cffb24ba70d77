// Proves that the console survives every failure of the library: each call of recorded sessions fails once, and is
// delayed once.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <thread>

#include "tests/proof/options.h"
#include "tests/proof/processes.h"
#include "tests/proof/sweep_sessions.h"

namespace proof {

namespace {

using support::ConsoleSession;
using support::StationClient;

constexpr char const* kUsage =
    "usage: fault_sweep [--sample RUNS] [--jobs N] [--session NAME]\n"
    "  --sample RUNS   only so many runs, spread over all sessions and calls\n"
    "  --jobs N        runs beside each other; default: twice the processors, for some sessions wait a lot\n"
    "  --session NAME  this session alone\n";

enum Kind : std::size_t { kFail, kDelay };
constexpr char const* kKinds[] = {"fail", "delay"};
constexpr char const* kEffects[] = {"status -1", "delay 20"};
constexpr long kLateness = 20000;  // microseconds, as above

constexpr auto kLongestRun = std::chrono::minutes(3);

// A key of no menu, whose echo shows that all commands before it are done.
constexpr char const* kMarker = "?\n";

constexpr char const* kErrorLine = "Failed read rev\n: ";  // the one report on standard error that the console makes

// The call of a run that is disturbed, counted from 0, how many that its rule could take come before it, and how.
struct Fault {
    std::size_t call;
    std::size_t skip;
    std::size_t kind;
};

// What one run of a session did.
struct Run {
    std::vector<std::string> calls;  // the operations, in their order
    std::string keys;                // that the menus answered
    std::size_t replies = 0;         // end marks that the client got
    bool fired = false;
    std::vector<std::string> problems;
};

std::size_t occurrences(std::string const& text, std::string const& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}

// The keys that the console echoed, whichever menu it was in.
std::string keys_of(std::string const& output) {
    std::string keys;
    for (std::size_t at = output.find("ption = "); at != std::string::npos; at = output.find("ption = ", at + 1)) {
        bool const prompt = output.compare(at + 8, 1, "\n") == 0;  // the two that end like an echo
        keys += prompt ? "" : output.substr(at + 8, 1);
    }
    return keys;
}

// A destructor answers nothing, so it cannot fail.
bool can_fail(std::string const& operation) {
    return operation.find("::~") == std::string::npos;
}

// One line of the journal that stands for a call.
struct Call {
    long took;  // microseconds
    std::string operation;
    bool module_failed;  // a failed read of a module's status or revision
};

std::vector<Call> calls_of(ConsoleSession const& console) {
    std::vector<Call> calls;
    for (std::string const& line : console.journal()) {
        support::JournalLine const parsed = support::parse_journal_line(line);
        if (parsed.kind != "call") {
            continue;
        }
        Call call{};
        std::string took = parsed.took;
        took.erase(took.find('.'), 1);  // seconds with six decimals
        call.took = std::stol(took);
        call.operation = parsed.text.substr(0, parsed.text.find('('));
        bool const of_module = call.operation.find("::get_status") != std::string::npos ||
                               call.operation.find("::get_revision") != std::string::npos;
        call.module_failed = of_module && line.find(") = -") != std::string::npos;
        calls.push_back(call);
    }
    return calls;
}

class SessionRun {
public:
    SessionRun(Session const& session, std::optional<Fault> fault) : session_(session), fault_(fault) {}

    Run run() {
        support::SessionOptions options = session_.options;
        if (fault_) {
            options.scenario.push_back("fault add * skip " + std::to_string(fault_->skip) + " count 1 " +
                                       kEffects[fault_->kind]);
        }
        try {
            ConsoleSession console(options);
            play(console);
            leave(console);
            judge(console);
        } catch (std::exception const& error) {
            problem(error.what());
        }
        return run_;
    }

private:
    void problem(std::string const& text) { run_.problems.push_back(text); }

    void play(ConsoleSession& console) {
        client_at_main_menu_ = session_.exit == Exit::client_first;
        for (Step const& step : session_.steps) {
            switch (step.kind) {
                case Step::Kind::type:
                    console.type(step.text);
                    break;
                case Step::Kind::connect:
                    client_ = std::make_unique<StationClient>();
                    break;
                case Step::Kind::send:
                    client_->send(step.text);
                    break;
                case Step::Kind::wait:
                    console.wait_for(step.text);
                    break;
                case Step::Kind::control:
                    console.control(step.text);
                    break;
            }
        }
        if (client_at_main_menu_) {
            client_->send(kMarker);
        } else {
            console.type(kMarker);
        }
        console.wait_for("ption = ?\n");
    }

    // Asks the device whether the fault fired, and ends the console.
    void leave(ConsoleSession& console) {
        std::size_t const done = calls_of(console).size();
        std::string const rules = console.control("fault list");
        if (fault_) {
            run_.fired = rules.find("fired 1\n") != std::string::npos;
            if (run_.fired != (fault_->call < done)) {
                problem(std::to_string(done) + " calls were made, and the device says: " + rules);
            }
            calls_before_exit_ = done;
        }
        if (client_at_main_menu_) {
            client_->send("x\n");
            console.wait_for("Entered Option = x\n");
        }
        console.type(session_.exit == Exit::operator_0 ? "0\n" : "x\n");
        int const status = console.wait_for_exit();
        if (status != 0) {
            problem("exit status " + std::to_string(status));
        }
        if (client_) {
            constexpr std::size_t kMoreThanThereIs = 1 << 20;
            run_.replies = occurrences(client_->receive(kMoreThanThereIs), "\\n");
        }
    }

    void judge(ConsoleSession const& console) {
        std::vector<Call> const calls = calls_of(console);
        std::size_t failed_modules = 0;
        for (Call const& call : calls) {
            run_.calls.push_back(call.operation);
            failed_modules += call.module_failed ? 1 : 0;
        }
        run_.keys = keys_of(console.output());
        judge_errors(console.errors(), failed_modules);
        if (fault_) {
            judge_fault(calls);
        }
    }

    // A line for each module that could not be read, and nothing else: no sanitizer has a word to say either.
    void judge_errors(std::string const& errors, std::size_t failed_modules) {
        std::string rest = errors;
        std::size_t lines = 0;
        for (std::size_t at = rest.find(kErrorLine); at != std::string::npos; at = rest.find(kErrorLine)) {
            std::size_t const end = rest.find('\n', at + std::string(kErrorLine).size());
            rest.erase(at, end == std::string::npos ? end : end + 1 - at);
            ++lines;
        }
        if (!rest.empty()) {
            problem("on standard error: " + rest);
        }
        if (lines != failed_modules) {
            problem(std::to_string(failed_modules) + " failed reads of a module, reported: " + std::to_string(lines));
        }
    }

    void judge_fault(std::vector<Call> const& calls) {
        // Each call asks the rules once, before it is journaled: a call that is in the journal has had its fault.
        run_.fired = run_.fired || calls.size() > fault_->call;
        bool const delayed = fault_->kind == kDelay;
        bool const timed = fault_->call < calls_before_exit_;  // at its end the device stops waiting
        if (delayed && timed && calls[fault_->call].took < kLateness) {
            problem("the call was not delayed");
        }
    }

    Session const& session_;
    std::optional<Fault> fault_;
    Run run_;
    std::unique_ptr<StationClient> client_;
    bool client_at_main_menu_ = false;
    std::size_t calls_before_exit_ = 0;
};

// A run as text, from the process that made it to the one that started it.
std::string written(Run const& run) {
    std::ostringstream text;
    for (std::string const& call : run.calls) {
        text << "call " << call << '\n';
    }
    text << "keys " << run.keys << "\nreplies " << run.replies << "\nfired " << run.fired << '\n';
    for (std::string problem : run.problems) {
        std::replace(problem.begin(), problem.end(), '\n', '|');
        text << "problem " << problem << '\n';
    }
    return text.str();
}

Run read_run(Outcome const& outcome) {
    Run run;
    std::istringstream lines(outcome.output);
    bool whole = false;
    for (std::string line; std::getline(lines, line);) {
        std::size_t const blank = std::min(line.find(' '), line.size() - 1);
        std::string const name = line.substr(0, blank);
        std::string const value = line.substr(blank + 1);
        if (name == "call") {
            run.calls.push_back(value);
        } else if (name == "keys") {
            run.keys = value;
        } else if (name == "replies") {
            run.replies = std::stoul(value);
        } else if (name == "fired") {
            run.fired = value == "1";
            whole = true;
        } else {
            run.problems.push_back(value);
        }
    }
    if (!whole || outcome.status != 0) {
        run.problems.push_back("the run broke off: " + outcome.output);
    }
    return run;
}

// The run of a faulty session has to answer the same keys and owes the client the same replies.
void compare(Run const& plain, Fault const& fault, Run& run) {
    if (!run.problems.empty()) {
        return;
    }
    if (run.keys != plain.keys) {
        run.problems.push_back("answered the keys " + run.keys + " instead of " + plain.keys);
    }
    if (run.replies != plain.replies) {
        run.problems.push_back(std::to_string(run.replies) + " replies instead of " + std::to_string(plain.replies));
    }
    if (run.fired && run.calls[fault.call] != plain.calls[fault.call]) {
        run.problems.push_back("the fault met " + run.calls[fault.call] + " instead of " + plain.calls[fault.call]);
    }
}

struct Task {
    std::size_t session;
    Fault fault;
};

struct Row {
    std::size_t runs[std::size(kKinds)] = {};
    std::size_t not_fired = 0;
    std::size_t violations = 0;
};

class Sweep {
public:
    Sweep(std::vector<Session> sessions, unsigned int jobs) : sessions_(std::move(sessions)), jobs_(jobs) {}

    // True when no run failed. `sample`: how many runs, 0 for all.
    bool run(std::size_t sample) {
        rows_.resize(sessions_.size());
        play_plain_sessions();
        std::vector<Task> const tasks = choose(sample);
        std::vector<Command> commands;
        for (Task const& task : tasks) {
            commands.push_back(command(task.session));
            commands.back().insert(
                commands.back().end(),
                {std::to_string(task.fault.call), std::to_string(task.fault.skip), std::to_string(task.fault.kind)});
        }
        run_all(commands, {jobs_, kLongestRun},
                [&](std::size_t i, Outcome const& outcome) { count(tasks[i], outcome); });
        return report();
    }

private:
    Command command(std::size_t session) const {
        Command words = command_of(R47_SELF);
        words.insert(words.end(), {"run", sessions_[session].name});
        return words;
    }

    void play_plain_sessions() {
        std::vector<Command> commands;
        for (std::size_t i = 0; i < sessions_.size(); ++i) {
            commands.push_back(command(i));
        }
        for (Outcome const& outcome : run_all(commands, {jobs_, kLongestRun})) {
            plain_.push_back(read_run(outcome));
            std::size_t const session = plain_.size() - 1;
            tell(session, "plain", plain_.back().problems);
            rows_[session].violations += plain_.back().problems.empty() ? 0 : 1;
        }
    }

    std::vector<Task> choose(std::size_t sample) const {
        std::vector<Task> all;
        for (std::size_t session = 0; session < sessions_.size(); ++session) {
            std::size_t could_fail = 0;
            for (std::size_t call = 0; call < plain_[session].calls.size(); ++call) {
                if (can_fail(plain_[session].calls[call])) {
                    all.push_back({session, {call, could_fail++, kFail}});
                }
                all.push_back({session, {call, call, kDelay}});
            }
        }
        if (sample == 0 || sample >= all.size()) {
            return all;
        }
        std::vector<Task> chosen;
        for (std::size_t i = 0; i < sample; ++i) {
            chosen.push_back(all[(i * all.size() + all.size() / 2) / sample]);
        }
        return chosen;
    }

    void count(Task const& task, Outcome const& outcome) {
        Run const& plain = plain_[task.session];
        Run run = read_run(outcome);
        compare(plain, task.fault, run);
        Row& row = rows_[task.session];
        ++row.runs[task.fault.kind];
        row.not_fired += run.fired ? 0 : 1;
        row.violations += run.problems.empty() ? 0 : 1;
        if (!run.fired) {
            run.problems.push_back("the fault did not fire");
        }
        tell(task.session,
             std::string(kKinds[task.fault.kind]) + " call " + std::to_string(task.fault.call) + " " +
                 plain.calls[task.fault.call],
             run.problems);
    }

    void tell(std::size_t session, std::string const& what, std::vector<std::string> const& problems) const {
        for (std::string const& problem : problems) {
            std::cout << sessions_[session].name << ", " << what << ": " << problem << std::endl;
        }
    }

    bool report() const {
        std::printf("%-22s %6s %12s %8s %10s %11s\n", "session", "calls", "failed-call", "delayed", "not fired",
                    "violations");
        Row sum;
        std::size_t calls = 0;
        auto const print = [](char const* name, std::size_t count, Row const& row) {
            std::printf("%-22s %6zu %12zu %8zu %10zu %11zu\n", name, count, row.runs[0], row.runs[1], row.not_fired,
                        row.violations);
        };
        for (std::size_t i = 0; i < sessions_.size(); ++i) {
            print(sessions_[i].name.c_str(), plain_[i].calls.size(), rows_[i]);
            calls += plain_[i].calls.size();
            sum.runs[0] += rows_[i].runs[0];
            sum.runs[1] += rows_[i].runs[1];
            sum.not_fired += rows_[i].not_fired;
            sum.violations += rows_[i].violations;
        }
        print("all", calls, sum);
        return sum.not_fired == 0 && sum.violations == 0;
    }

    std::vector<Session> sessions_;
    unsigned int jobs_;
    std::vector<Run> plain_;
    std::vector<Row> rows_;
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

// One run, in a process of its own: "run SESSION [CALL SKIP KIND]".
int run_one(std::vector<std::string> const& words) {
    std::optional<Fault> fault;
    if (words.size() == 5) {
        fault = Fault{std::stoul(words[2]), std::stoul(words[3]), std::stoul(words[4])};
    }
    std::cout << written(SessionRun(sessions_named(words[1]).front(), fault).run());
    return 0;
}

int sweep(std::vector<std::string> words) {
    auto const jobs = take_option(words, "--jobs", 2UL * std::thread::hardware_concurrency());
    auto const sample = take_option(words, "--sample", 0);
    std::string session;
    if (words.size() == 2 && words[0] == "--session") {
        session = words[1];
    } else if (!words.empty()) {
        throw std::invalid_argument(words[0]);
    }
    return Sweep(sessions_named(session), static_cast<unsigned int>(jobs)).run(sample) ? 0 : 1;
}

}  // namespace

}  // namespace proof

int main(int argc, char** argv) {
    std::vector<std::string> const words(argv + 1, argv + argc);
    try {
        return !words.empty() && words[0] == "run" ? proof::run_one(words) : proof::sweep(words);
    } catch (std::invalid_argument const& error) {
        std::cerr << "fault_sweep: " << error.what() << '\n' << proof::kUsage;
        return 2;
    } catch (std::exception const& error) {
        std::cerr << "fault_sweep: " << error.what() << '\n';
        return 1;
    }
}
