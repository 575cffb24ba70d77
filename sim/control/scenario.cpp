// Scenario files: commands that a device carries out by itself, at its start or at their time.
#include "sim/control/scenario.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "sim/control/command.h"

namespace sim {

namespace {

char const* const kBlanks = " \t\r";

// `before`: the time of the line before.
std::optional<Time> parse_time(std::string_view word, Time before) {
    if (word.front() != '+') {
        return parse_duration(word);
    }
    auto const later = parse_duration(word.substr(1));
    return later && before + *later <= kLongestDuration ? std::optional<Time>(before + *later) : std::nullopt;
}

std::optional<ScenarioLine> parse_line(std::string const& text, int number, Time before) {
    std::size_t const first = text.find_first_not_of(kBlanks);
    if (first == std::string::npos || text[first] == '#') {
        return std::nullopt;
    }
    std::size_t const end = std::min(text.find_first_of(kBlanks, first), text.size());
    auto const due = parse_time(std::string_view(text).substr(first, end - first), before);
    return ScenarioLine{number, due, text.substr(due ? end : first)};
}

bool is_step(std::string const& command) {
    Words words;
    return split_words(command, words) && !words.empty() && words.front() == "step";
}

Error carry_out(ScenarioLine const& line, Device& device, bool rehearses) {
    // From inside an event a step would not wait for what falls due: the lines have their own times instead.
    if (line.due && is_step(line.command)) {
        return "line " + std::to_string(line.number) + ": a line with a time does not step the clock";
    }
    Caller caller{device};
    caller.rehearses = rehearses;
    Reply const reply = device_commands().run(caller, line.command);
    return reply.ok ? Error() : "line " + std::to_string(line.number) + ": " + reply.text;
}

// Carries out what is due at the start and sets the rest to its time; an error then goes to `fail`.
template <typename Fail>
Error start(Scenario const& scenario, Device& device, bool rehearses, Fail fail) {
    for (ScenarioLine const& line : scenario) {
        Error error = line.due ? Error() : carry_out(line, device, rehearses);
        if (!error.empty()) {
            return error;
        }
    }
    for (ScenarioLine const& line : scenario) {
        if (line.due) {
            device.timeline.at(*line.due, [line, &device, rehearses, fail] {
                Error const error = carry_out(line, device, rehearses);
                if (!error.empty()) {
                    fail(error);
                }
            });
        }
    }
    return {};
}

std::vector<Time> times_of(Scenario const& scenario) {
    std::vector<Time> times;
    for (ScenarioLine const& line : scenario) {
        times.push_back(line.due.value_or(Time(0)));
    }
    std::sort(times.begin(), times.end());
    return times;
}

// The whole scenario on a device that nobody uses, as fast as it goes.
Error rehearse(Scenario const& scenario, std::vector<std::string> const& missing) {
    Error first;
    Device device(std::make_unique<MemoryFileSystem>(missing));
    device.timeline.run_stepped();
    Error at_start = start(scenario, device, true, [&](Error const& error) { first = first.empty() ? error : first; });
    if (!at_start.empty()) {
        return at_start;
    }
    for (Time const time : times_of(scenario)) {
        device.timeline.run_stepped();  // a line may have chosen a clock that runs
        device.timeline.step(std::max(Duration(0), time - device.timeline.now()));
    }
    device.timeline.stop();
    return first;
}

void end_on(Error const& error) {
    std::fprintf(stderr, "r47-sim: scenario %s\n", error.c_str());
    std::_Exit(125);
}

}  // namespace

Scenario parse_scenario(std::istream& lines) {
    Scenario scenario;
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        Time const before = scenario.empty() ? Time(0) : scenario.back().due.value_or(Time(0));
        if (auto const parsed = parse_line(line, number, before)) {
            scenario.push_back(*parsed);
        }
    }
    return scenario;
}

Error load_scenario(std::string const& path, Scenario& scenario, std::vector<std::string> const& missing) {
    std::ifstream file(path);
    if (file) {
        scenario = parse_scenario(file);
    }
    if (!file.is_open() || file.bad()) {
        return "cannot read the scenario " + path + ": " + std::strerror(errno);
    }
    Error const error = rehearse(scenario, missing);
    return error.empty() ? error : "scenario " + path + ", " + error;
}

Error start_scenario(Scenario const& scenario, Device& device, std::function<void(Error const&)> const& fail) {
    return start(scenario, device, false, fail ? fail : end_on);
}

}  // namespace sim
