// Fault rules as the control grammar has them.
#include "sim/control/fault_words.h"

#include <cmath>
#include <numeric>
#include <set>

#include "sim/calls/callback_names.h"
#include "sim/calls/operations.h"
#include "sim/core/error_names.h"
#include "sim/core/numbers.h"
#include "sim/core/suggestion.h"
#include "sim/core/text.h"

namespace sim {

namespace {

constexpr double kLongestDelayMs = 3.6e6;

template <typename T>
bool take(std::optional<T> const& parsed, T& target) {
    target = parsed.value_or(target);
    return parsed.has_value();
}

template <typename T>
bool take(std::optional<T> const& parsed, std::optional<T>& target) {
    target = parsed;
    return parsed.has_value();
}

template <typename T>
bool take_number(std::string const& word, T least, T& target) {
    auto const number = parse_integer_as<T>(word);
    return number && *number >= least && take(number, target);
}

bool take_delay(std::string const& word, std::optional<Duration>& delay) {
    auto const ms = parse_float(word);
    if (!ms || *ms < 1e-3 || *ms > kLongestDelayMs) {
        return false;
    }
    delay = Duration(std::llround(*ms * 1e3));
    return true;
}

bool take_values(std::string const& text, std::vector<long double>& values) {
    values.clear();
    for (std::size_t from = 0; from <= text.size();) {
        std::size_t const comma = std::min(text.find(',', from), text.size());
        auto const value = parse_number(text.substr(from, comma - from));
        if (!value) {
            return false;
        }
        values.push_back(*value);
        from = comma + 1;
    }
    return true;
}

bool take_probability(std::string const& word, double& probability) {
    auto const share = parse_float(word);
    return share && *share > 0.0 && *share < 1.0 && take(share, probability);
}

// What a word of a rule says.
struct Option {
    enum class Of { any, calls, callbacks };

    char const* name;
    std::size_t values;  // words that follow it
    Of of;
    bool is_effect;
    // False where the words are none for it.
    bool (*take)(std::string const* words, FaultRule& rule);
};

using Of = Option::Of;
using Text1 = std::string const*;

constexpr Option kOptions[] = {
    {"arg", 2, Of::any, false,
     [](Text1 words, FaultRule& rule) {
         FaultRule::Argument argument{0, words[1]};
         bool const good = take_number(words[0], 1U, argument.number);
         rule.arguments.push_back(argument);
         return good;
     }},
    {"object", 1, Of::any, false, [](Text1 word, FaultRule& rule) { return take_number(*word, 1U, rule.object); }},
    {"from", 1, Of::any, false, [](Text1 word, FaultRule& rule) { return take(parse_duration(*word), rule.from); }},
    {"to", 1, Of::any, false, [](Text1 word, FaultRule& rule) { return take(parse_duration(*word), rule.to); }},
    {"skip", 1, Of::any, false, [](Text1 word, FaultRule& rule) { return take_number(*word, 0UL, rule.skip); }},
    {"every", 1, Of::any, false, [](Text1 word, FaultRule& rule) { return take_number(*word, 1UL, rule.every); }},
    {"probability", 1, Of::any, false,
     [](Text1 word, FaultRule& rule) { return take_probability(*word, rule.probability); }},
    {"seed", 1, Of::any, false, [](Text1 word, FaultRule& rule) { return take_number(*word, 0UL, rule.seed); }},
    {"count", 1, Of::any, false,
     [](Text1 word, FaultRule& rule) { return take_number(*word, 1UL, rule.count.emplace()); }},
    {"status", 1, Of::calls, true,
     [](Text1 word, FaultRule& rule) { return take(parse_integer_as<int>(*word), rule.effect.status); }},
    {"errno", 1, Of::calls, true,
     [](Text1 word, FaultRule& rule) { return take(error_named(*word), rule.effect.error); }},
    {"delay", 1, Of::calls, true, [](Text1 word, FaultRule& rule) { return take_delay(*word, rule.effect.delay); }},
    {"value", 1, Of::calls, true, [](Text1 word, FaultRule& rule) { return take_values(*word, rule.effect.values); }},
    {"drop", 0, Of::callbacks, true,
     [](Text1, FaultRule& rule) {
         rule.effect.delivery = FaultEffect::Delivery::dropped;
         return true;
     }},
    {"double", 0, Of::callbacks, true,
     [](Text1, FaultRule& rule) {
         rule.effect.delivery = FaultEffect::Delivery::doubled;
         return true;
     }},
    {"late", 1, Of::callbacks, true, [](Text1 word, FaultRule& rule) { return take_delay(*word, rule.effect.delay); }},
};

// Reads the words behind the operation.
class RuleReader {
public:
    explicit RuleReader(FaultRule& rule) : rule_(rule) {}

    Error read(Words const& words) {
        Error error;
        for (std::size_t at = 1; at < words.size() && error.empty();) {
            error = read_option(words, at);
        }
        return error.empty() ? judge() : error;
    }

private:
    Error read_option(Words const& words, std::size_t& at) {
        std::string const& name = words[at];
        for (Option const& option : kOptions) {
            if (name != option.name) {
                continue;
            }
            if (words.size() - at <= option.values) {
                return name + (option.values == 1 ? " needs a value" : " needs a number and a value");
            }
            if (!option.take(words.data() + at + 1, rule_)) {
                return "bad " + name + ": " + words[at + 1];
            }
            if (!given_.insert(name).second && name != "arg") {
                return name + " is given twice";
            }
            of_calls_ |= option.of == Of::calls;
            rule_.callbacks |= option.of == Of::callbacks;
            has_effect_ |= option.is_effect;
            at += 1 + option.values;
            return {};
        }
        std::vector<std::string> names;
        for (Option const& option : kOptions) {
            names.push_back(option.name);
        }
        return "unknown word " + name + did_you_mean(name, names, ": try help fault");
    }

    Error judge() {
        FaultEffect& effect = rule_.effect;
        if (!has_effect_) {
            return "no effect given: status, errno, delay or value; of callbacks drop, double or late";
        }
        if (of_calls_ && rule_.callbacks) {
            return "status, errno, delay and value are for calls; drop, double and late are for callbacks";
        }
        if (given_.count("drop") + given_.count("double") > 1) {
            return "a callback is dropped or doubled";
        }
        if (rule_.to && rule_.from.value_or(Time(0)) >= *rule_.to) {
            return "an empty time: from must be before to";
        }
        if (given_.count("seed") > given_.count("probability")) {
            return "a seed needs a probability";
        }
        if (effect.error && effect.status.value_or(-1) == 0) {
            return "status 0 is no failure: it has no errno";
        }
        if (effect.error) {
            effect.status = effect.status.value_or(-1);
        }
        return judge_arguments();
    }

    // An argument has one value at a time.
    Error judge_arguments() const {
        for (FaultRule::Argument const& one : rule_.arguments) {
            for (FaultRule::Argument const& other : rule_.arguments) {
                auto const number = parse_number(one.value);
                bool const same = one.value == other.value || (number && number == parse_number(other.value));
                if (one.number == other.number && !same) {
                    return "argument " + std::to_string(one.number) + " cannot be " + one.value + " and " + other.value;
                }
            }
        }
        return {};
    }

    FaultRule& rule_;
    std::set<std::string> given_;
    bool of_calls_ = false;
    bool has_effect_ = false;
};

// Why the arguments are not to be met; `takes` says of each, from 0, whether it can have a value.
template <typename Takes>
Error why_no_argument(FaultRule const& rule, std::string_view name, std::size_t arguments, Takes takes) {
    for (FaultRule::Argument const& argument : rule.arguments) {
        std::string const number = std::to_string(argument.number);
        if (argument.number > arguments) {
            return std::string(name) + " has no argument " + number;
        }
        if (!takes(argument.number - 1, argument.value)) {
            return "argument " + number + " of " + std::string(name) + " is never " + argument.value;
        }
    }
    return {};
}

// Why the rule can do nothing to the callback, or the operation; empty: it can.
Error why_not(FaultRule const& rule, CallbackInfo const& info) {
    return why_no_argument(rule, info.name, info.arguments, [](std::size_t, std::string const& value) {
        auto const number = parse_number(value);
        return number && *number >= 0 && std::trunc(*number) == *number;
    });
}

Error why_not(FaultRule const& rule, OperationInfo const& info) {
    FaultEffect const& effect = rule.effect;
    std::string const name(info.name);
    bool const constructs = info.kind == OperationKind::constructor;
    if (info.kind == OperationKind::destructor && effect.status) {
        return name + " answers no status";
    }
    if (constructs && effect.status == 0) {
        return name + " opens its object with status 0 by itself";
    }
    if (constructs && rule.object != 0) {
        return name + " has no object yet";
    }
    if (info.is_static && rule.object != 0) {
        return name + " has no object";
    }
    if (effect.error && !info.answers_status && !constructs) {
        return name + " answers no errno";
    }
    if (!effect.values.empty() && info.values == 0) {
        return name + " has no results";
    }
    if (effect.values.size() > info.values) {
        return name + " has no more than " + std::to_string(info.values) + (info.values == 1 ? " value" : " values");
    }
    return why_no_argument(rule, info.name, info.arguments, info.takes);
}

template <typename Infos>
Error none_called(Infos const& infos, char const* what, std::string const& name) {
    std::vector<std::string> names;
    for (auto const& info : infos) {
        names.emplace_back(info.name);
    }
    return std::string("no ") + what + " is called " + name + did_you_mean(name, names);
}

// Takes those of `infos` that are called so.
template <typename Infos>
Error take_names(Infos const& infos, char const* what, FaultRule& rule) {
    Error first;
    for (auto const& info : infos) {
        if (!matches(rule.operation, info.name)) {
            continue;
        }
        Error const error = why_not(rule, info);
        if (error.empty()) {
            rule.names.insert(info.name);
        } else if (first.empty()) {
            first = "it can do nothing: " + error;
        }
    }
    if (!rule.names.empty()) {
        return {};
    }
    return first.empty() ? none_called(infos, what, rule.operation) : first;
}

}  // namespace

std::string list_operations(std::string const& pattern) {
    std::set<std::string> lines;
    auto const add = [&](std::string_view name, char const* kind, std::size_t arguments, std::size_t values) {
        bool const is_part = pattern.find('*') == std::string::npos && name.find(pattern) != std::string_view::npos;
        if (is_part || matches(pattern, name)) {
            lines.insert(std::string(name) + "  " + kind + "  arguments " + std::to_string(arguments) + "  values " +
                         std::to_string(values) + "\n");
        }
    };
    for (OperationInfo const& info : kOperationInfos) {
        bool const is_call = info.kind != OperationKind::constructor && info.kind != OperationKind::destructor;
        add(info.name,
            is_call                                   ? "call"
            : info.kind == OperationKind::constructor ? "constructor"
                                                      : "destructor",
            info.arguments, info.values);
    }
    for (CallbackInfo const& info : kCallbackInfos) {
        add(info.name, "callback", info.arguments, 0);
    }
    return std::accumulate(lines.begin(), lines.end(), std::string());
}

Error no_operation(std::string const& name) {
    return none_called(kOperationInfos, "operation", name);
}

Error parse_fault_rule(Words const& words, FaultRule& rule) {
    if (words.empty()) {
        return "no operation given";
    }
    rule.operation = words.front();
    Error error = RuleReader(rule).read(words);
    if (!error.empty()) {
        return error;
    }
    return rule.callbacks ? take_names(kCallbackInfos, "callback", rule)
                          : take_names(kOperationInfos, "operation", rule);
}

}  // namespace sim
