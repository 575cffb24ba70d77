// Rules that make operations of the library fail, take long or answer something else.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sim/core/clock.h"
#include "sim/device/properties.h"

namespace sim {

// What a rule does to a call.
struct FaultEffect {
    std::optional<int> status;
    std::optional<Duration> delay;
    std::vector<long double> values;  // the out-arguments in order, records field by field

    // Whether the device is not asked at all.
    bool answers() const { return status.has_value() || !values.empty(); }
};

// Which calls a rule takes, and what it does to them.
struct FaultRule {
    std::string operation;               // a name, or a pattern of names
    unsigned long skip = 0;              // calls that it lets pass first
    std::optional<unsigned long> count;  // calls that it applies to then; nothing: all
    FaultEffect effect;
};

// As the command fault has it.
std::string text_of(FaultRule const& rule);

class FaultRules {
public:
    // Answers its id.
    int add(FaultRule rule);
    // One line a rule: id, text, how often it fired.
    std::string list() const;
    Error clear(int id);
    void clear();

    // To be called once per call of an operation: the effect of the first rule that applies to it. A rule that is
    // still skipping, or is used up, leaves the call to the rules after it.
    FaultEffect next_call(std::string_view operation);

private:
    struct Entry {
        int id;
        FaultRule rule;
        unsigned long seen = 0;
        unsigned long fired = 0;
    };

    std::vector<Entry> entries_;
    int next_id_ = 1;
};

}  // namespace sim
