// Fault rules as the control grammar has them.
#include "sim/control/fault_words.h"

#include <algorithm>
#include <cmath>

#include "sim/core/numbers.h"
#include "sim/device/operations.h"

namespace sim {

namespace {

constexpr double kLongestDelayMs = 3.6e6;

Error parse_values(std::string const& text, std::vector<long double>& values) {
    for (std::size_t from = 0; from <= text.size();) {
        std::size_t const comma = std::min(text.find(',', from), text.size());
        auto const value = parse_number(text.substr(from, comma - from));
        if (!value) {
            return "not a list of numbers: " + text;
        }
        values.push_back(*value);
        from = comma + 1;
    }
    return {};
}

Error parse_option(std::string const& name, std::string const& text, FaultRule& rule) {
    Error bad = "bad " + name + ": " + text;
    if (name == "skip") {
        auto const skip = parse_integer_as<unsigned long>(text);
        rule.skip = skip.value_or(0);
        return skip ? Error() : bad;
    }
    if (name == "count") {
        rule.count = parse_integer_as<unsigned long>(text);
        return rule.count && *rule.count > 0 ? Error() : bad;
    }
    if (name == "status") {
        rule.effect.status = parse_integer_as<int>(text);
        return rule.effect.status ? Error() : bad;
    }
    if (name == "delay") {
        auto const ms = parse_float(text);
        if (!ms || *ms < 0 || *ms > kLongestDelayMs) {
            return bad;
        }
        rule.effect.delay = Duration(std::llround(*ms * 1e3));
        return {};
    }
    if (name == "value") {
        rule.effect.values.clear();
        return parse_values(text, rule.effect.values);
    }
    return "unknown word " + name + ": expected skip, count, status, delay or value";
}

}  // namespace

Error parse_fault_rule(Words const& words, FaultRule& rule) {
    if (words.empty()) {
        return "no operation given";
    }
    rule.operation = words.front();
    if (!names_an_operation(rule.operation)) {
        return "no operation is called " + rule.operation;
    }
    for (std::size_t i = 1; i < words.size(); i += 2) {
        if (i + 1 == words.size()) {
            return words[i] + " needs a value";
        }
        Error error = parse_option(words[i], words[i + 1], rule);
        if (!error.empty()) {
            return error;
        }
    }
    if (!rule.effect.answers() && !rule.effect.delay) {
        return "no effect given: status, delay or value";
    }
    return {};
}

}  // namespace sim
