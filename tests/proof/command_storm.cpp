// One client that gives one console a great many commands, and compares every reply.
#include "tests/proof/command_storm.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "tests/proof/command_stream.h"
#include "tests/support/console_session.h"

namespace proof {

namespace {

using support::ConsoleSession;
using support::StationClient;

constexpr unsigned long kBatch = 2000;  // commands that are sent before their replies are read
constexpr unsigned long kTenths = 10;

#ifdef R47_FOREIGN_MEMORY
constexpr long kGrowthLimit = -1;  // not judged
#else
constexpr long kGrowthLimit = 128;  // kB; a bit for each of a million commands is about as much
#endif

struct Size {
    unsigned long commands = 0;
    long memory = 0;  // kB, resident
    long threads = 0;
    long descriptors = 0;
};

Size size_of(pid_t pid) {
    std::string const process = "/proc/" + std::to_string(pid);
    Size size;
    std::ifstream status(process + "/status");
    for (std::string name; status >> name; status.ignore(1 << 10, '\n')) {
        if (name == "VmRSS:") {
            status >> size.memory;
        } else if (name == "Threads:") {
            status >> size.threads;
        }
    }
    size.descriptors =
        std::distance(std::filesystem::directory_iterator(process + "/fd"), std::filesystem::directory_iterator());
    return size;
}

class CommandStorm {
public:
    CommandStorm(unsigned long commands, unsigned int seed) : commands_(commands), stream_(seed) {}

    void run() {
        support::SessionOptions options = support::in_shell("exec \"$@\" >/dev/null");  // gigabytes of screens
        options.arguments = {"socket"};
        options.journal = false;
        ConsoleSession console(options);
        StationClient client;
        for (unsigned long tenth = 1; tenth <= kTenths; ++tenth) {
            converse(client, commands_ * tenth / kTenths);
            sizes_.push_back(size_of(console.console_pid()));
            sizes_.back().commands = done_;
            print(sizes_.back());
        }
        client.send("x\nx\n");
        console.type("x\n");
        require(console.wait_for_exit() == 0, "the console did not end with status 0");
        require(client.ended(), "the console sent more than it owed");
        require(console.errors().empty(), "on standard error: " + console.errors());
        judge_growth();
    }

private:
    static void require(bool holds, std::string const& otherwise) {
        if (!holds) {
            throw std::runtime_error(otherwise);
        }
    }

    // Goes on until so many commands are given in all, and rests.
    void converse(StationClient& client, unsigned long until) {
        while (done_ < until) {
            std::string lines;
            std::string replies;
            for (unsigned long i = 0; i < kBatch && done_ < until; ++i) {
                stream_.add_command(lines, replies);
                ++done_;
            }
            if (done_ == until) {
                stream_.add_rest(lines, replies);
            }
            client.send(lines);
            std::string const received = client.receive(replies.size());
            if (received != replies) {
                fail_at(received, replies);
            }
        }
    }

    void fail_at(std::string const& received, std::string const& owed) const {
        constexpr std::size_t kShown = 60;
        auto const differing = std::mismatch(received.begin(), received.end(), owed.begin(), owed.end()).first;
        auto const at = static_cast<std::size_t>(differing - received.begin());
        std::ostringstream text;
        text << "before command " << done_ << " \"" << received.substr(at, kShown) << "\" came instead of \""
             << owed.substr(at, kShown) << '"';
        throw std::runtime_error(text.str());
    }

    void print(Size const& size) const {
        auto const seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
        std::printf("%10lu commands %8ld kB %4ld threads %4ld descriptors %8.1f s\n", size.commands, size.memory,
                    size.threads, size.descriptors, seconds);
    }

    void judge_growth() const {
        Size const& first = sizes_.front();
        Size const& last = sizes_.back();
        require(last.threads == first.threads, "the threads became more or less");
        require(last.descriptors == first.descriptors, "the descriptors became more or less");
        require(kGrowthLimit < 0 || last.memory - first.memory <= kGrowthLimit, "the memory grew");
    }

    unsigned long commands_;
    CommandStream stream_;
    unsigned long done_ = 0;
    std::vector<Size> sizes_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace

int command_storm(unsigned long commands, unsigned int seed) {
    try {
        CommandStorm(commands, seed).run();
        return 0;
    } catch (std::exception const& error) {
        std::printf("violation: %s\n", error.what());
        return 1;
    }
}

}  // namespace proof
