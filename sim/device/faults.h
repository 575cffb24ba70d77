// Rules that make operations of the library fail, take long or answer something else, and that disturb callbacks.
#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "sim/core/clock.h"
#include "sim/device/properties.h"

namespace sim {

// What a rule does to a call, or to a callback.
struct FaultEffect {
    enum class Delivery { once, dropped, doubled };

    std::optional<int> status;
    std::optional<Duration> delay;       // before the call is carried out, or the callback made
    std::vector<long double> values;     // the out-arguments in order, records field by field
    int rule = 0;                        // its id; 0: none
    std::optional<int> error;            // errno of the failure, if not EIO
    Delivery delivery = Delivery::once;  // of a callback

    // Whether the device is not asked at all.
    bool answers() const { return status.has_value() || !values.empty(); }
};

// Which calls a rule takes, or which callbacks, and what it does to them. All that it names must hold.
struct FaultRule {
    struct Argument {
        unsigned int number;  // from 1, of those that the journal writes
        std::string value;    // as the journal writes it, without quotes, or another way to write the same number
    };

    std::string operation;                 // a name, or a pattern of names
    unsigned long skip = 0;                // those that it lets pass first
    std::optional<unsigned long> count{};  // how many it applies to then; nothing: all
    FaultEffect effect{};
    bool callbacks = false;              // or calls
    std::set<std::string_view> names{};  // those of the pattern to which it can do all of its effect
    std::vector<Argument> arguments{};
    unsigned int object = 0;  // 0: any
    std::optional<Time> from{};
    std::optional<Time> to{};  // no more then
    unsigned long every = 1;   // of those that are left, the Nth, the 2Nth ...
    double probability = 1.0;  // for each of those that are left
    std::uint64_t seed = 1;    // of the numbers that decide
};

// As the command fault has it.
std::string text_of(FaultRule const& rule);

// A call, or a callback, that is about to be made.
struct FaultOccasion {
    std::string_view name;
    Time time{0};
    unsigned int object = 0;               // 0: none
    std::vector<std::string> arguments{};  // as the journal writes them
};

class FaultRules {
public:
    // Answers its id.
    int add(FaultRule rule);
    // One line a rule: id, text, how often it fired.
    std::string list() const;
    Error clear(int id);
    void clear();
    // The rules that never fired, as list() has them, also of those that have been cleared.
    std::vector<std::string> never_fired() const;

    bool none() const { return entries_.empty(); }
    // To be called once for each occasion: the effect of the first rule that applies to it. A rule that lets it pass,
    // or is used up, leaves it to the rules after it.
    FaultEffect next(FaultOccasion const& occasion);

private:
    struct Entry {
        int id;
        FaultRule rule;
        std::mt19937_64 random;
        unsigned long seen = 0;
        unsigned long fired = 0;

        std::string text() const { return std::to_string(id) + "  " + text_of(rule); }
        bool fires();
    };

    void forget(Entry const& entry);

    std::vector<Entry> entries_;
    std::vector<std::string> cleared_;  // those that had never fired
    int next_id_ = 1;
};

}  // namespace sim
