// Conditions on the device's state, as the control grammar has them.
#include "sim/control/condition.h"

#include <algorithm>
#include <iterator>

#include "sim/control/value_words.h"

namespace sim {

namespace {

using Relation = Condition::Relation;

struct NamedRelation {
    char const* name;
    Relation relation;
};

constexpr NamedRelation kRelations[] = {{"==", Relation::equal},  {"!=", Relation::unequal},
                                        {"<", Relation::less},    {"<=", Relation::at_most},
                                        {">", Relation::greater}, {">=", Relation::at_least}};

bool is_number(Value const& value) {
    return std::holds_alternative<long long>(value) || std::holds_alternative<float>(value) ||
           std::holds_alternative<double>(value);
}

bool has_order(Relation relation) {
    return relation != Relation::equal && relation != Relation::unequal;
}

// Whether the first is less than the second, of the same type; only numbers are.
bool is_less(Value const& one, Value const& other) {
    return is_number(one) && one.index() == other.index() &&
           std::visit(
               [&](auto const& number) {
                   using T = std::decay_t<decltype(number)>;
                   if constexpr (detail::is_one_of<T, long long, float, double>) {
                       return number < std::get<T>(other);
                   } else {
                       return false;
                   }
               },
               one);
}

}  // namespace

Error parse_condition(Properties const& properties, Words const& words, Condition& condition) {
    std::string const& name = words.at(0);
    std::string const& relation = words.at(1);
    std::string const& word = words.at(2);
    Property const* const property = properties.find(name);
    if (property == nullptr) {
        return properties.unknown(name);
    }
    auto const* const named = std::find_if(std::begin(kRelations), std::end(kRelations),
                                           [&](NamedRelation const& known) { return relation == known.name; });
    if (named == std::end(kRelations)) {
        return "no relation " + relation + ": ==, !=, <, <=, > or >=";
    }
    if (has_order(named->relation) && !is_number(property->get())) {
        return name + " is no number: == or !=";
    }
    auto const value = parse_value(word, *property);
    if (!value) {
        return not_legal(name, *property, word);
    }
    condition = {name, named->relation, *value, name + " " + relation + " " + word};
    return {};
}

bool holds(Condition const& condition, Properties const& properties) {
    Value const value = properties.find(condition.name)->get();
    switch (condition.relation) {
        case Relation::equal:
            return value == condition.value;
        case Relation::unequal:
            return value != condition.value;
        case Relation::less:
            return is_less(value, condition.value);
        case Relation::at_most:
            return !is_less(condition.value, value);
        case Relation::greater:
            return is_less(condition.value, value);
        case Relation::at_least:
            break;
    }
    return !is_less(value, condition.value);
}

std::string value_of(Condition const& condition, Properties const& properties) {
    Property const& property = *properties.find(condition.name);
    return value_with_name(property, property.get());
}

}  // namespace sim
