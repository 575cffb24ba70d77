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

class FaultRules {
public:
    // A rule of the words "OPERATION [skip N] [count M] status S | delay MS | value V[,V...]", the effects and
    // options in any order.
    Error add(std::vector<std::string> const& words);
    // One line a rule: id, text, how often it fired.
    std::string list() const;
    Error clear(int id);
    void clear();

    // To be called once per call of an operation: the effect of the first rule that applies to it. A rule that is
    // still skipping, or is used up, leaves the call to the rules after it.
    FaultEffect next_call(std::string_view operation);

private:
    struct Rule {
        int id = 0;
        std::string text;
        std::string operation;
        unsigned long skip = 0;
        std::optional<unsigned long> count;
        FaultEffect effect;
        unsigned long seen = 0;
        unsigned long fired = 0;
    };

    static Error parse(std::vector<std::string> const& words, Rule& rule);
    static Error parse_option(std::string const& name, std::string const& text, Rule& rule);

    std::vector<Rule> rules_;
    int next_id_ = 1;
};

}  // namespace sim
