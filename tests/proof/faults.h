// The faults of a sweep: which calls of a session are disturbed, and how.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tests/proof/sweep_sessions.h"
#include "tests/support/console_session.h"

namespace proof {

enum class Kind : std::size_t {
    fail,    // once, with a negative status; a truth value or a code is another one
    refuse,  // once, with a positive status
    broken,  // from then on for good, where it is called again
    values,  // once, success with other results
    node,    // the device node goes during the call
    delay,   // the call takes longer
    pair,    // two of `fail`, `refuse` and `values`
};
constexpr char const* kKinds[] = {"fail", "refuse", "broken", "values", "node", "delay", "pair"};

// A run with a fault.
struct Fault {
    Kind kind;
    std::string where;               // the call, for whoever reads of it
    std::vector<std::string> rules;  // lines of a scenario
    std::size_t firings;             // how many of the rules have to fire
    bool shows = true;               // in the journal; otherwise that is the one of a run without it
};

// How much longer a delayed call takes, in microseconds.
constexpr long kLateness = 20000;

// The command, behind which its path stands, by which a node goes.
constexpr char const* kNodeRemove = "node remove ";

// All faults of one call that can do something to the session, whose journal without a fault is this, and failures of
// constructors that must do nothing; then its pairs, one for each call, chosen by the seed.
std::vector<Fault> faults_of(Session const& session, std::vector<support::JournalLine> const& journal,
                             unsigned long seed);

}  // namespace proof
