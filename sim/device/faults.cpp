// Rules that make operations of the library fail, take long or answer something else.
#include "sim/device/faults.h"

#include <algorithm>

#include "sim/core/numbers.h"
#include "sim/device/operations.h"

namespace sim {

namespace {

std::string values_text(std::vector<long double> const& values) {
    std::string text;
    for (long double const value : values) {
        text += (text.empty() ? "" : ",") + number_text(value);
    }
    return text;
}

}  // namespace

std::string text_of(FaultRule const& rule) {
    std::string text = rule.operation;
    if (rule.skip > 0) {
        text += " skip " + std::to_string(rule.skip);
    }
    if (rule.count) {
        text += " count " + std::to_string(*rule.count);
    }
    if (rule.effect.status) {
        text += " status " + std::to_string(*rule.effect.status);
    }
    if (rule.effect.delay) {
        text += " delay " + number_text(static_cast<double>(rule.effect.delay->count()) / 1e3);
    }
    if (!rule.effect.values.empty()) {
        text += " value " + values_text(rule.effect.values);
    }
    return text;
}

int FaultRules::add(FaultRule rule) {
    entries_.push_back({next_id_, std::move(rule)});
    return next_id_++;
}

std::string FaultRules::list() const {
    std::string list;
    for (Entry const& entry : entries_) {
        list += std::to_string(entry.id) + "  " + text_of(entry.rule) + "  fired " + std::to_string(entry.fired) + "\n";
    }
    return list;
}

Error FaultRules::clear(int id) {
    auto const found =
        std::find_if(entries_.begin(), entries_.end(), [&](Entry const& entry) { return entry.id == id; });
    if (found == entries_.end()) {
        return "no fault rule " + std::to_string(id);
    }
    entries_.erase(found);
    return {};
}

void FaultRules::clear() {
    entries_.clear();
}

FaultEffect FaultRules::next_call(std::string_view operation) {
    for (Entry& entry : entries_) {
        bool const used_up = entry.rule.count && entry.fired >= *entry.rule.count;
        if (used_up || !matches(entry.rule.operation, operation)) {
            continue;
        }
        if (entry.seen++ < entry.rule.skip) {
            continue;
        }
        ++entry.fired;
        return entry.rule.effect;
    }
    return {};
}

}  // namespace sim
