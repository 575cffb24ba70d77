// Judges a run of a session by what the console is expected to ask, call and say.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/proof/sweep_sessions.h"

namespace proof {

// What both sides did in a run, and what came of it.
struct Evidence {
    std::string typed;  // by the operator
    std::string sent;   // by the client
    std::string output;
    std::string errors;
    std::string replies;               // all that the client got
    std::vector<std::string> journal;  // the lines of calls and callbacks
    std::string lost_node;             // goes during the call that a rule delays; empty: none
};

struct Verdict {
    std::vector<std::string> problems;
    // Texts that are not written down: what the library's reports and the callbacks print. By the place in the
    // session and all that came before it and could change them. The same in every run of the session.
    std::map<std::string, std::string> observed;
};

Verdict judge(Session const& session, Evidence const& evidence);

}  // namespace proof
