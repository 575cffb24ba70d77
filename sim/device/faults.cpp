// Rules that make operations of the library fail, take long or answer something else.
#include "sim/device/faults.h"

#include <algorithm>

#include "sim/core/numbers.h"
#include "sim/device/operations.h"

namespace sim {

namespace {

constexpr double kLongestDelayMs = 3.6e6;

std::optional<unsigned long> parse_count(std::string const& text) {
    return parse_value<unsigned long>(text);
}

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

}  // namespace

Error FaultRules::add(std::vector<std::string> const& words) {
    Rule rule;
    Error error = parse(words, rule);
    if (!error.empty()) {
        return error;
    }
    rule.id = next_id_++;
    for (std::string const& word : words) {
        rule.text += (rule.text.empty() ? "" : " ") + word;
    }
    rules_.push_back(rule);
    return {};
}

Error FaultRules::parse(std::vector<std::string> const& words, Rule& rule) {
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

Error FaultRules::parse_option(std::string const& name, std::string const& text, Rule& rule) {
    Error bad = "bad " + name + ": " + text;
    if (name == "skip") {
        auto const skip = parse_count(text);
        rule.skip = skip.value_or(0);
        return skip ? Error() : bad;
    }
    if (name == "count") {
        rule.count = parse_count(text);
        return rule.count && *rule.count > 0 ? Error() : bad;
    }
    if (name == "status") {
        rule.effect.status = parse_value<int>(text);
        return rule.effect.status ? Error() : bad;
    }
    if (name == "delay") {
        auto const ms = parse_float(text);
        if (!ms || *ms < 0 || *ms > kLongestDelayMs) {
            return bad;
        }
        rule.effect.delay = std::chrono::duration_cast<Duration>(std::chrono::duration<double, std::milli>(*ms));
        return {};
    }
    if (name == "value") {
        rule.effect.values.clear();
        return parse_values(text, rule.effect.values);
    }
    return "unknown word " + name + ": expected skip, count, status, delay or value";
}

std::string FaultRules::list() const {
    std::string list;
    for (Rule const& rule : rules_) {
        list += std::to_string(rule.id) + "  " + rule.text + "  fired " + std::to_string(rule.fired) + "\n";
    }
    return list;
}

Error FaultRules::clear(int id) {
    auto const found = std::find_if(rules_.begin(), rules_.end(), [&](Rule const& rule) { return rule.id == id; });
    if (found == rules_.end()) {
        return "no fault rule " + std::to_string(id);
    }
    rules_.erase(found);
    return {};
}

void FaultRules::clear() {
    rules_.clear();
}

FaultEffect FaultRules::next_call(std::string_view operation) {
    for (Rule& rule : rules_) {
        bool const used_up = rule.count && rule.fired >= *rule.count;
        if (used_up || !matches(rule.operation, operation)) {
            continue;
        }
        if (rule.seen++ < rule.skip) {
            continue;
        }
        ++rule.fired;
        return rule.effect;
    }
    return {};
}

}  // namespace sim
