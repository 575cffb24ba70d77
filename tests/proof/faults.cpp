// The faults of a sweep: which calls of a session are disturbed, and how.
#include "tests/proof/faults.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <map>
#include <random>
#include <sstream>
#include <utility>

namespace proof {

namespace {

using support::JournalLine;

constexpr char const* kFailure = "status -1";
constexpr char const* kRefusal = "status 3";

// A call of the journal, as far as its faults go.
struct Call {
    std::string operation;
    std::size_t skip;     // calls of the same operation before it
    bool is_repeated;     // there are more behind it
    bool has_status;      // neither a constructor, a destructor, a truth value nor a code
    std::string answer;   // behind the "=": the status and the results
    std::string node;     // of the device that its object works on; empty: none
    bool node_is_needed;  // by it or a call behind it
    bool object_is_used;  // behind it: it answers with success, or calls back
    bool in_callback;
    long start;  // microseconds
    bool builds;
    bool destroys;
};

std::string operation_of(JournalLine const& line) {
    return line.text.substr(0, line.text.find('('));
}

// The word behind "::" is the class itself.
bool is_constructor(std::string const& operation) {
    std::size_t const colons = operation.find("::");
    return operation.substr(0, colons) == operation.substr(colons + 2);
}

bool is_destructor(std::string const& operation) {
    return operation.find("::~") != std::string::npos;
}

// Whether the call answers a status, and no truth value or code, or nothing.
bool has_status(JournalLine const& line) {
    std::size_t const equals = line.text.find(") = ");
    return equals != std::string::npos && std::isalpha(static_cast<unsigned char>(line.text[equals + 4])) == 0 &&
           operation_of(line).find("imxtype") == std::string::npos;
}

bool succeeds(JournalLine const& line) {
    return has_status(line) ? line.text.find(") = 0") != std::string::npos
                            : line.text.find(") = true") != std::string::npos;
}

// The node that a call needs. Where the constructor does not name it, its class does.
std::string node_of(JournalLine const& line, std::map<int, std::string>& nodes) {
    constexpr char const* kSensor = "/dev/imx296";
    constexpr char const* kHub = "/dev/i2c-2";
    std::string const operation = operation_of(line);
    if (operation.find("camera_t") == 0) {
        return kSensor;
    }
    if (operation.find("gyro_alarm_t") == 0 || operation.find("gyro_delegate_t") == 0) {
        return kHub;
    }
    std::size_t const begin = line.text.find("\"/dev/") + 1;
    if (is_constructor(operation) && begin != 0) {
        nodes[line.object] = line.text.substr(begin, line.text.find('"', begin) - begin);
    }
    return nodes[line.object];
}

std::vector<Call> calls_in(std::vector<JournalLine> const& journal) {
    std::vector<Call> calls;
    std::map<std::string, std::size_t> counts;
    std::map<int, std::string> nodes;
    for (auto line = journal.begin(); line != journal.end(); ++line) {
        if (line->kind != "call") {
            continue;
        }
        Call call{};
        call.operation = operation_of(*line);
        call.skip = counts[call.operation]++;
        std::size_t const equals = line->text.find(") = ");
        call.answer = equals == std::string::npos ? "" : line->text.substr(equals + 4);
        call.builds = is_constructor(call.operation);
        call.destroys = is_destructor(call.operation);
        call.has_status = has_status(*line);
        call.node = node_of(*line, nodes);
        call.object_is_used = std::any_of(line + 1, journal.end(), [&](JournalLine const& later) {
            return later.object == line->object && (later.kind == "callback" || succeeds(later));
        });
        call.in_callback = line->thread == "-";
        std::string start = line->start;
        start.erase(start.find('.'), 1);  // seconds with six decimals
        call.start = std::stol(start);
        calls.push_back(call);
    }
    for (auto call = calls.begin(); call != calls.end(); ++call) {
        call->is_repeated = call->skip + 1 < counts[call->operation];
        call->node_is_needed = std::any_of(
            call, calls.end(), [&](Call const& later) { return later.node == call->node && later.has_status; });
    }
    return calls;
}

// Other results than those of the call, field by field; empty where it has none.
std::string other_values(Call const& call) {
    std::string results = call.answer.substr(call.has_status ? call.answer.find('[') + 1 : 0);
    if (call.has_status && call.answer.find('[') == std::string::npos) {
        return "";
    }
    for (char& c : results) {
        c = std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-' || c == '.' || c == ':' ? c : ' ';
    }
    constexpr std::size_t kMost = 400;  // a line of control holds no more; all distances of a shot are among them
    std::istringstream words(results);
    std::string values;
    std::size_t count = 0;
    for (std::string word; count < kMost && words >> word;) {
        if (word.back() == ':') {
            continue;  // the key in a map
        }
        std::string value = std::to_string(2 + 3 * count % 50);  // different from its neighbours, and fits a byte
        if (word == "true" || word == "false") {
            value = word == "true" ? "0" : "1";
        } else if (value == word) {
            value += "1";
        }
        values += (values.empty() ? "" : ",") + value;
        ++count;
    }
    return values;
}

std::string rule(Call const& call, std::string const& effect, bool once = true) {
    return "fault add " + call.operation + " skip " + std::to_string(call.skip) + (once ? " count 1 " : " ") + effect;
}

std::string where(Call const& call) {
    return call.operation + " #" + std::to_string(call.skip + 1);
}

// The faults of the call that are one rule.
std::vector<Fault> single_faults(Call const& call) {
    std::vector<Fault> faults;
    auto const add = [&](Kind kind, std::string const& effect, bool once = true) {
        faults.push_back({kind, where(call), {rule(call, effect, once)}, 1});
    };
    std::string const values = call.builds || call.destroys ? "" : other_values(call);
    std::string const failure = call.has_status || call.builds ? kFailure : "value " + values;
    bool const fails_already = call.answer == "-1";
    if (call.builds ? call.object_is_used : !call.destroys && !fails_already) {
        add(Kind::fail, failure);
        if (call.is_repeated) {
            add(Kind::broken, failure, false);
        }
    }
    if (call.has_status) {
        add(Kind::refuse, kRefusal);
        if (!values.empty()) {
            add(Kind::values, "value " + values);
        }
    }
    return faults;
}

// Nobody asks the object that is not open: the console goes on as without the fault, and destroys it.
Fault unnoticed_failure(Call const& call) {
    return {Kind::fail, where(call), {rule(call, kFailure)}, 1, false};
}

Fault lost_node(Call const& call) {
    char line[128];
    std::snprintf(line, sizeof line, "%.6fs %s%s", (static_cast<double>(call.start) + kLateness / 2.0) / 1e6,
                  kNodeRemove, call.node.c_str());
    return {Kind::node,
            where(call) + " loses " + call.node,
            {rule(call, "delay " + std::to_string(kLateness / 1000)), line},
            1};
}

}  // namespace

std::vector<Fault> faults_of(Session const& session, std::vector<JournalLine> const& journal, unsigned long seed) {
    std::vector<Call> const calls = calls_in(journal);
    std::vector<std::string> const& without = session.options.without;
    bool const is_stepped = session.options.clock == "stepped";
    auto const loses_node = [&](Call const& call) {
        return is_stepped && !call.destroys && call.node_is_needed && !call.node.empty() &&
               std::find(without.begin(), without.end(), call.node) == without.end();
    };
    std::vector<Fault> faults;
    std::vector<std::pair<std::string, Fault>> for_pairs;  // with their operations
    for (Call const& call : calls) {
        if (is_stepped && call.builds && !call.object_is_used) {
            faults.push_back(unnoticed_failure(call));
        }
        if (loses_node(call)) {
            faults.push_back(lost_node(call));
        }
        if (session.twin) {
            continue;
        }
        for (Fault& fault : single_faults(call)) {
            // Nothing that the first failure of a pair can take away.
            if (call.has_status && !call.in_callback && fault.kind != Kind::broken && call.operation != "tof_t::shot") {
                for_pairs.emplace_back(call.operation, fault);
            }
            faults.push_back(std::move(fault));
        }
        faults.push_back({Kind::delay, where(call), {rule(call, "delay " + std::to_string(kLateness / 1000))}, 1});
    }
    std::mt19937_64 random(seed);
    for (std::size_t i = 0; i < calls.size() && for_pairs.size() > 1; ++i) {
        auto const& [operation, first] = for_pairs[random() % for_pairs.size()];
        auto const& [other, second] = for_pairs[random() % for_pairs.size()];
        if (operation != other) {  // the rule that fires would take a call away from the other's count
            faults.push_back(
                {Kind::pair, first.where + " and " + second.where, {first.rules.front(), second.rules.front()}, 2});
        }
    }
    return faults;
}

}  // namespace proof
