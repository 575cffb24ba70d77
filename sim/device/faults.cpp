// Rules that make operations of the library fail, take long or answer something else, and that disturb callbacks.
#include "sim/device/faults.h"

#include <algorithm>

#include "sim/core/error_names.h"
#include "sim/core/numbers.h"
#include "sim/core/text.h"

namespace sim {

namespace {

std::string values_text(std::vector<long double> const& values) {
    std::string text;
    for (long double const value : values) {
        text += (text.empty() ? "" : ",") + number_text(value);
    }
    return text;
}

std::string time_text(Time time) {
    return number_text(static_cast<double>(time.count()) / 1e6) + "s";
}

std::string choice_text(FaultRule const& rule) {
    std::string text;
    for (FaultRule::Argument const& argument : rule.arguments) {
        text += " arg " + std::to_string(argument.number) + " " + word_text(argument.value);
    }
    if (rule.object != 0) {
        text += " object " + std::to_string(rule.object);
    }
    if (rule.from) {
        text += " from " + time_text(*rule.from);
    }
    if (rule.to) {
        text += " to " + time_text(*rule.to);
    }
    if (rule.skip > 0) {
        text += " skip " + std::to_string(rule.skip);
    }
    if (rule.every > 1) {
        text += " every " + std::to_string(rule.every);
    }
    if (rule.probability < 1.0) {
        text += " probability " + number_text(rule.probability) + " seed " + std::to_string(rule.seed);
    }
    if (rule.count) {
        text += " count " + std::to_string(*rule.count);
    }
    return text;
}

std::string effect_text(FaultRule const& rule) {
    FaultEffect const& effect = rule.effect;
    std::string text;
    if (effect.delivery != FaultEffect::Delivery::once) {
        text += effect.delivery == FaultEffect::Delivery::dropped ? " drop" : " double";
    }
    if (effect.status) {
        text += " status " + std::to_string(*effect.status);
    }
    if (effect.error) {
        text += " errno " + error_name(*effect.error);
    }
    if (effect.delay) {
        text += (rule.callbacks ? " late " : " delay ") + number_text(static_cast<double>(effect.delay->count()) / 1e3);
    }
    if (!effect.values.empty()) {
        text += " value " + values_text(effect.values);
    }
    return text;
}

bool is_value(std::string const& argument, std::string const& value) {
    auto const wanted = parse_number(value);
    return argument == value || argument == quoted(value) || (wanted && parse_number(argument) == wanted);
}

// All but how many have come before.
bool chooses(FaultRule const& rule, FaultOccasion const& occasion) {
    bool const arguments_hold = std::all_of(rule.arguments.begin(), rule.arguments.end(), [&](auto const& argument) {
        return argument.number <= occasion.arguments.size() &&
               is_value(occasion.arguments[argument.number - 1], argument.value);
    });
    return rule.names.count(occasion.name) != 0 && arguments_hold &&
           (rule.object == 0 || rule.object == occasion.object) && (!rule.from || occasion.time >= *rule.from) &&
           (!rule.to || occasion.time < *rule.to);
}

// Evenly from 0 to below 1, the same on every machine.
double next_share(std::mt19937_64& random) {
    return static_cast<double>(random() >> 11U) * 0x1p-53;
}

}  // namespace

std::string text_of(FaultRule const& rule) {
    return rule.operation + choice_text(rule) + effect_text(rule);
}

int FaultRules::add(FaultRule rule) {
    std::mt19937_64 const random(rule.seed);
    entries_.push_back({next_id_, std::move(rule), random});
    return next_id_++;
}

std::string FaultRules::list() const {
    std::string list;
    for (Entry const& entry : entries_) {
        list += entry.text() + "  fired " + std::to_string(entry.fired) + "\n";
    }
    return list;
}

std::vector<std::string> FaultRules::never_fired() const {
    std::vector<std::string> rules = cleared_;
    for (Entry const& entry : entries_) {
        if (entry.fired == 0) {
            rules.push_back(entry.text());
        }
    }
    return rules;
}

Error FaultRules::clear(int id) {
    auto const found =
        std::find_if(entries_.begin(), entries_.end(), [&](Entry const& entry) { return entry.id == id; });
    if (found == entries_.end()) {
        return "no fault rule " + std::to_string(id);
    }
    forget(*found);
    entries_.erase(found);
    return {};
}

void FaultRules::clear() {
    for (Entry const& entry : entries_) {
        forget(entry);
    }
    entries_.clear();
}

void FaultRules::forget(Entry const& entry) {
    if (entry.fired == 0) {
        cleared_.push_back(entry.text());
    }
}

// Counts an occasion that the rule would take.
bool FaultRules::Entry::fires() {
    bool const used_up = rule.count && fired >= *rule.count;
    if (used_up || ++seen <= rule.skip || (seen - rule.skip) % rule.every != 0) {
        return false;
    }
    if (rule.probability < 1.0 && next_share(random) >= rule.probability) {
        return false;
    }
    ++fired;
    return true;
}

FaultEffect FaultRules::next(FaultOccasion const& occasion) {
    for (Entry& entry : entries_) {
        if (chooses(entry.rule, occasion) && entry.fires()) {
            FaultEffect effect = entry.rule.effect;
            effect.rule = entry.id;
            return effect;
        }
    }
    return {};
}

}  // namespace sim
