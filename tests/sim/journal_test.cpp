// Tests of the journal's file and its followers.
#include "sim/device/journal.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <thread>

#include "tests/sim/temporary_directory.h"

namespace {

using namespace std::chrono_literals;
using sim::Journal;

std::string read(std::string const& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(JournalTest, IsOffUntilSomeoneReads) {
    Journal journal;
    EXPECT_FALSE(journal.on());
    int const id = journal.follow([](std::string const&) {});
    EXPECT_TRUE(journal.on());
    journal.unfollow(id);
    EXPECT_FALSE(journal.on());
}

TEST(JournalTest, AppendsLinesToItsFile) {
    TemporaryDirectory directory;
    std::string const path = directory.path() + "/journal";
    std::ofstream(path) << "before\n";
    Journal journal;
    EXPECT_EQ(journal.open(path), "");
    EXPECT_TRUE(journal.on());
    journal.write(12345us, 1, "rtu_t::set_exposure(5000) = 0");
    journal.write(3s, 0, "callback x");
    EXPECT_EQ(read(path), "before\n0.012345 1 rtu_t::set_exposure(5000) = 0\n3.000000 0 callback x\n");
}

TEST(JournalTest, ASecondFileTakesThePlaceOfTheFirst) {
    TemporaryDirectory directory;
    Journal journal;
    EXPECT_EQ(journal.open(directory.path() + "/first"), "");
    EXPECT_EQ(journal.open(directory.path() + "/second"), "");
    journal.write(0s, 1, "line");
    EXPECT_EQ(read(directory.path() + "/first"), "");
    EXPECT_EQ(read(directory.path() + "/second"), "0.000000 1 line\n");
}

TEST(JournalTest, AFileThatCannotBeWrittenIsToldWithItsReason) {
    Journal journal;
    EXPECT_EQ(journal.open("/nowhere/journal"), "cannot write the journal /nowhere/journal: No such file or directory");
    EXPECT_FALSE(journal.on());
}

TEST(JournalTest, FollowersGetTheSameLines) {
    Journal journal;
    std::string lines;
    int const id = journal.follow([&](std::string const& line) { lines += line; });
    journal.write(1us, 4, "a");
    journal.unfollow(id);
    journal.write(2us, 4, "b");
    EXPECT_EQ(lines, "0.000001 4 a\n");
}

TEST(JournalTest, LinesOfTwoThreadsStayWhole) {
    TemporaryDirectory directory;
    std::string const path = directory.path() + "/journal";
    Journal journal;
    ASSERT_EQ(journal.open(path), "");
    auto const write = [&] {
        for (int i = 0; i < 500; ++i) {
            journal.write(0us, 1, "line");
        }
    };
    std::thread other(write);
    write();
    other.join();
    std::string expected;
    for (int i = 0; i < 1000; ++i) {
        expected += "0.000000 1 line\n";
    }
    EXPECT_EQ(read(path), expected);
}

}  // namespace
