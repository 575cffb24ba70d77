// Tests of the journal's lines, its file and its followers.
#include "sim/device/journal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

#include "tests/sim/temporary_directory.h"

namespace {

using namespace std::chrono_literals;
using sim::Journal;
using sim::Record;
using sim::record_json;
using sim::record_line;
using sim::RecordKind;

std::string read(std::string const& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

Record command(std::string const& text) {
    Record record;
    record.kind = RecordKind::command;
    record.text = text;
    return record;
}

Record failed_call() {
    Record record;
    record.start = 12345us;
    record.took = 3s;
    record.program = "console.1";
    record.thread = 2;
    record.object = 4;
    record.error = EIO;
    record.rule = 7;
    record.text = "rtu_t::set_exposure(5000) = -1";
    return record;
}

TEST(RecordTest, ALineHasTenFields) {
    EXPECT_EQ(record_line(8, failed_call()),
              "0.012345 3.000000 8 call console.1 2 4 EIO 7 rtu_t::set_exposure(5000) = -1");
}

TEST(RecordTest, ADashStandsForNone) {
    EXPECT_EQ(record_line(1, command("step 1s")), "0.000000 0.000000 1 command - - - - - step 1s");
}

TEST(RecordTest, EveryKindHasItsWord) {
    std::vector<std::pair<RecordKind, std::string>> const words{{RecordKind::call, "call"},
                                                                {RecordKind::callback, "callback"},
                                                                {RecordKind::command, "command"},
                                                                {RecordKind::program, "program"},
                                                                {RecordKind::lost, "lost"}};
    for (auto const& [kind, word] : words) {
        Record record;
        record.kind = kind;
        record.text = "x";
        EXPECT_EQ(record_line(1, record), "0.000000 0.000000 1 " + word + " - - - - - x");
    }
}

TEST(RecordTest, AnErrorWithoutANameIsItsNumber) {
    Record record;
    record.error = 9999;
    EXPECT_EQ(record_line(1, record), "0.000000 0.000000 1 call - - - 9999 - ");
}

TEST(RecordTest, JsonHasTheFieldsThatThereAre) {
    EXPECT_EQ(record_json(8, failed_call()),
              "{\"sequence\": 8, \"start\": 0.012345, \"took\": 3.000000, \"kind\": \"call\", \"program\": "
              "\"console.1\", \"thread\": 2, \"object\": 4, \"error\": \"EIO\", \"rule\": 7, \"text\": "
              "\"rtu_t::set_exposure(5000) = -1\"}");
    EXPECT_EQ(record_json(1, command("say \"x\"")),
              "{\"sequence\": 1, \"start\": 0.000000, \"took\": 0.000000, \"kind\": \"command\", \"text\": \"say "
              "\\\"x\\\"\"}");
}

TEST(JournalTest, IsOffUntilSomeoneReads) {
    Journal journal;
    EXPECT_FALSE(journal.on());
    int const id = journal.follow([](std::uint64_t, Record const&) {});
    EXPECT_TRUE(journal.on());
    journal.unfollow(id);
    EXPECT_FALSE(journal.on());
}

TEST(JournalTest, BeginsItsFileAnew) {
    TemporaryDirectory directory;
    std::string const path = directory.path() + "/journal";
    std::ofstream(path) << "of another device\n";
    Journal journal;
    EXPECT_EQ(journal.open(path, false), "");
    EXPECT_TRUE(journal.on());
    journal.write(failed_call());
    journal.write(command("step 1s"));
    EXPECT_EQ(read(path), record_line(1, failed_call()) + "\n" + record_line(2, command("step 1s")) + "\n");
}

TEST(JournalTest, ItsFileMayHaveJsonLines) {
    TemporaryDirectory directory;
    std::string const path = directory.path() + "/journal";
    Journal journal;
    EXPECT_EQ(journal.open(path, true), "");
    journal.write(failed_call());
    EXPECT_EQ(read(path), record_json(1, failed_call()) + "\n");
}

TEST(JournalTest, ASecondFileTakesThePlaceOfTheFirst) {
    TemporaryDirectory directory;
    Journal journal;
    EXPECT_EQ(journal.open(directory.path() + "/first", false), "");
    EXPECT_EQ(journal.open(directory.path() + "/second", false), "");
    journal.write(command("x"));
    EXPECT_EQ(read(directory.path() + "/first"), "");
    EXPECT_EQ(read(directory.path() + "/second"), record_line(1, command("x")) + "\n");
}

TEST(JournalTest, AFileThatCannotBeWrittenIsToldWithItsReason) {
    Journal journal;
    EXPECT_EQ(journal.open("/nowhere/journal", false),
              "cannot write the journal /nowhere/journal: No such file or directory");
    EXPECT_FALSE(journal.on());
}

// All that can be read from a pipe now.
std::string read_now(int pipe) {
    std::string all;
    char bytes[4096];
    for (ssize_t count = 0; (count = ::read(pipe, bytes, sizeof bytes)) > 0;) {
        all.append(bytes, static_cast<std::size_t>(count));
    }
    return all;
}

// Of each line its number, and of a line that is lost how many it speaks of.
struct Read {
    std::uint64_t lines = 0;
    std::uint64_t lost = 0;
    std::uint64_t last = 0;
};

// Each line comes whole, and follows the one before but for those that are said to be lost.
Read expect_whole(std::string const& text) {
    Read read;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream fields(line);
        std::string word;
        std::uint64_t sequence = 0;
        std::uint64_t lost = 0;
        fields >> word >> word >> sequence >> word;
        if (word == "lost") {
            fields >> word >> word >> word >> word >> word >> lost;
            EXPECT_EQ(line, record_line(sequence, [&] {
                          Record gap{RecordKind::lost};
                          gap.text = std::to_string(lost) + " lines, as they could not be written";
                          return gap;
                      }()));
        } else {
            EXPECT_EQ(line, record_line(sequence, command("set system.state 3")));
        }
        EXPECT_EQ(sequence, read.last + (lost > 0 ? lost : 1)) << line;
        read = {read.lines + 1, read.lost + lost, sequence};
    }
    return read;
}

TEST(JournalTest, WhatAFullPipeDoesNotTakeIsCounted) {
    TemporaryDirectory const directory;
    std::string const path = directory.path() + "/pipe";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    sim::Descriptor const reader(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    Journal journal;
    ASSERT_EQ(journal.open(path, false), "");
    std::string text;
    std::uint64_t written = 0;
    for (int round = 0; round < 3; ++round) {
        do {
            journal.write(command("set system.state 3"));
            ++written;
        } while (journal.lost() < 100);
        text += read_now(reader.get());
    }
    journal.write(command("set system.state 3"));
    text += read_now(reader.get());
    Read const read = expect_whole(text);
    EXPECT_EQ(journal.lost(), 0U);
    EXPECT_EQ(read.lost, 300U);
    EXPECT_EQ(read.last, written + 1);
}

TEST(JournalTest, WhatAFullDiskDoesNotTakeIsCounted) {
    TemporaryDirectory const directory;
    std::string const path = directory.path() + "/journal";
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit unlimited{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &unlimited), 0);
    Journal journal;
    ASSERT_EQ(journal.open(path, false), "");
    for (rlim_t const size : {0U, 1U, 1000U}) {
        rlimit const limited{size, unlimited.rlim_max};
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limited), 0);
        for (int i = 0; i < 50; ++i) {
            journal.write(command("set system.state 3"));
        }
        EXPECT_GT(journal.lost(), 0U) << size;
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &unlimited), 0);
        journal.write(command("set system.state 3"));
        EXPECT_EQ(journal.lost(), 0U);
    }
    Read const read_lines = expect_whole(read(path));
    EXPECT_EQ(read_lines.last, 153U);
    EXPECT_GT(read_lines.lost, 50U);
}

TEST(JournalTest, APipeThatNobodyReadsAnyMoreIsNoEnd) {
    TemporaryDirectory const directory;
    std::string const path = directory.path() + "/pipe";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    std::signal(SIGPIPE, SIG_IGN);
    sim::Descriptor reader(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    Journal journal;
    ASSERT_EQ(journal.open(path, false), "");
    reader = sim::Descriptor();
    journal.write(command("set system.state 3"));
    journal.write(command("set system.state 3"));
    EXPECT_EQ(journal.lost(), 2U);
    reader = sim::Descriptor(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    journal.write(command("set system.state 3"));
    Read const read = expect_whole(read_now(reader.get()));
    EXPECT_EQ(read.lost, 2U);
    EXPECT_EQ(read.last, 3U);
}

TEST(JournalTest, FollowersGetTheSameRecordsWithTheSameNumbers) {
    Journal journal;
    std::vector<std::string> first;
    std::vector<std::string> second;
    auto const into = [](std::vector<std::string>& lines) {
        return [&lines](std::uint64_t sequence, Record const& record) {
            lines.push_back(std::to_string(sequence) + record.text);
        };
    };
    int const id = journal.follow(into(first));
    journal.write(command("a"));
    journal.follow(into(second));
    journal.write(command("b"));
    journal.unfollow(id);
    journal.write(command("c"));
    EXPECT_EQ(first, (std::vector<std::string>{"1a", "2b"}));
    EXPECT_EQ(second, (std::vector<std::string>{"2b", "3c"}));
}

}  // namespace
