// Results of an operation out of the values of a fault rule.
#pragma once

#include <bitset>
#include <cstdint>
#include <map>
#include <type_traits>
#include <vector>

#include "sim/calls/argument_types.h"
#include "sim/calls/records.h"

namespace sim {

// Hands out the values of a fault rule one by one; 0 when there are no more.
class FaultValues {
public:
    explicit FaultValues(std::vector<long double> const& values) : values_(values) {}

    long double next() {
        std::size_t const at = taken_++;
        return at < values_.size() ? values_[at] : 0.0L;
    }
    // How many have been asked for.
    std::size_t taken() const { return taken_; }

    // Fills `target` field by field. Whole numbers lose the bits that do not fit.
    template <typename T>
    void fill(T& target) {
        if constexpr (is_record<T>::value) {
            std::apply([&](auto&... fields) { (fill(fields), ...); }, Fields<T>::of(target));
        } else if constexpr (std::is_array_v<T>) {
            for (auto& element : target) {
                fill(element);
            }
        } else if constexpr (std::is_same_v<T, bool>) {
            target = next() != 0.0L;
        } else if constexpr (std::is_floating_point_v<T>) {
            target = static_cast<T>(next());
        } else {
            target = static_cast<T>(whole(next()));
        }
    }
    template <std::size_t N>
    void fill(std::bitset<N>& target) {
        target = std::bitset<N>(whole(next()));
    }
    template <typename T>
    void fill(Hidden<T>&) {}
    template <typename Key, typename T>
    void fill(std::map<Key, T>& target) {
        for (auto& element : target) {
            fill(element.second);
        }
    }

private:
    static std::uint64_t whole(long double value);

    std::vector<long double> const& values_;
    std::size_t taken_ = 0;
};

}  // namespace sim
