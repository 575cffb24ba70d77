// Sessions whose time is stepped, played twice: what the device saw is the same byte for byte.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "tests/proof/sweep_sessions.h"

namespace proof {

// By its name in a failure, not by its bytes.
static void PrintTo(Session const& session, std::ostream* out) {
    *out << session.name;
}

}  // namespace proof

namespace {

using proof::Session;

bool is_stepped_terminal(Session const& session) {
    return session.options.clock == "stepped" && !proof::has_client(session);
}

std::vector<Session> stepped_sessions() {
    std::vector<Session> sessions;
    for (Session const& session : proof::sweep_sessions()) {
        if (is_stepped_terminal(session)) {
            sessions.push_back(session);
        }
    }
    return sessions;
}

// The menus whose objects are called back. That of the gyro itself has no function to be called.
std::set<std::string> const kCalledBack{"alarm", "delegate", "delegate+alarm", "legacy alarm", "button"};

// All of the journal behind a run of the session.
std::string journal_of(Session const& session) {
    support::ConsoleSession console(session.options);
    EXPECT_EQ(proof::Player(session, console).play(), 0);
    std::ifstream file(console.directory() + "/journal");
    return {std::istreambuf_iterator<char>(file), {}};
}

class SteppedSessionTest : public testing::TestWithParam<Session> {};

TEST_P(SteppedSessionTest, GivesTheSameJournalEachTime) {
    std::string const first = journal_of(GetParam());
    EXPECT_NE(first.find(" program "), std::string::npos);
    EXPECT_NE(first.find(" ended"), std::string::npos);
    if (kCalledBack.count(GetParam().name) != 0) {
        EXPECT_NE(first.find(" callback "), std::string::npos);
    }
    EXPECT_EQ(journal_of(GetParam()), first);
}

TEST(SteppedSessionsTest, EveryMenuThatIsCalledBackIsAmongThem) {
    std::set<std::string> names;
    for (Session const& session : stepped_sessions()) {
        names.insert(session.name);
    }
    EXPECT_TRUE(std::includes(names.begin(), names.end(), kCalledBack.begin(), kCalledBack.end()));
}

std::string test_name(testing::TestParamInfo<Session> const& info) {
    std::string name = info.param.name;
    for (char& c : name) {
        c = std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(All, SteppedSessionTest, testing::ValuesIn(stepped_sessions()), test_name);

}  // namespace
