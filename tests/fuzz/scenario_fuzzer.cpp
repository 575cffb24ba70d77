// Fuzzer of the scenario files: any text, read, rehearsed, and carried out on a device.
//
// What the rehearsal accepts must be carried out without an error, which would end the process.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <sstream>
#include <string>

#include "sim/control/command.h"
#include "sim/control/scenario.h"
#include "sim/device/device.h"
#include "tests/support/require.h"

namespace {

// A file in memory, with a path.
class File {
public:
    File() : descriptor_(::memfd_create("scenario", MFD_CLOEXEC)) {}

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

    void write(std::string const& text) const {
        require(::ftruncate(descriptor_, 0) == 0, "the file is emptied");
        require(::pwrite(descriptor_, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()),
                "the file is written");
    }

private:
    int descriptor_;
};

void check_lines(sim::Scenario const& scenario, std::string const& text) {
    long const most = std::count(text.begin(), text.end(), '\n') + 1;
    int last = 0;
    for (sim::ScenarioLine const& line : scenario) {
        require(line.number > last && line.number <= most, "lines are numbered as in the file");
        require(!line.due || line.due->count() >= 0, "no line is due before the start");
        last = line.number;
    }
}

std::string trimmed(std::string const& text) {
    std::size_t const first = std::min(text.find_first_not_of(" \t\r"), text.size());
    return text.substr(first);
}

// The lines written down again in another way mean the same.
void check_reading_again(sim::Scenario const& scenario) {
    for (sim::ScenarioLine const& line : scenario) {
        if (!line.due && trimmed(line.command).front() == '+') {
            continue;  // too late behind the line before it, and a time without that line
        }
        std::istringstream text((line.due ? " \t" + std::to_string(line.due->count()) + "us " : "") + line.command);
        sim::Scenario const again = sim::parse_scenario(text);
        require(again.size() == 1 && again[0].due == line.due, "the time is read again");
        require_equal(trimmed(again[0].command), trimmed(line.command), "the command is read again");
    }
}

// The rehearsal's host time is not this run's, so a scenario that lets the clock run by itself may differ.
bool keeps_the_clock(sim::Scenario const& scenario) {
    return std::none_of(scenario.begin(), scenario.end(),
                        [](sim::ScenarioLine const& line) { return line.command.find("clock") != std::string::npos; });
}

// The rehearsal takes every expectation as met.
bool expects_nothing(sim::Scenario const& scenario) {
    return std::none_of(scenario.begin(), scenario.end(), [](sim::ScenarioLine const& line) {
        sim::Words words;
        return sim::split_words(line.command, words) && !words.empty() && words.front() == "expect";
    });
}

void carry_out(sim::Scenario const& scenario) {
    sim::Device device(std::make_unique<sim::MemoryFileSystem>());
    require_equal(sim::start_scenario(scenario, device), sim::Error(), "error of a rehearsed scenario");
    sim::Time last(0);
    for (sim::ScenarioLine const& line : scenario) {
        last = std::max(last, line.due.value_or(last));
    }
    device.timeline.step(std::max(sim::Duration(0), last - device.timeline.now()));
    device.timeline.stop();
}

}  // namespace

extern "C" [[noreturn]] void __wrap__Exit(int) {
    require(false, "a rehearsed scenario is carried out to its end");
    std::abort();
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static File const file;
    std::string const text(reinterpret_cast<char const*>(data), size);
    std::istringstream lines(text);
    sim::Scenario const parsed = sim::parse_scenario(lines);
    check_lines(parsed, text);
    check_reading_again(parsed);
    file.write(text);
    sim::Scenario loaded;
    sim::Error const error = sim::load_scenario(file.path(), loaded);
    require(error.find('\n') == std::string::npos, "an error is one line");
    if (error.empty() && keeps_the_clock(loaded) && expects_nothing(loaded)) {
        require(loaded.size() == parsed.size(), "the file is read as its text");
        carry_out(loaded);
    }
    return 0;
}
