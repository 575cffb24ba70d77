// Values as bytes, for the way between the library and the device. Both ends run on one machine: numbers go as they
// lie.
#pragma once

#include <bitset>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "sim/calls/argument_types.h"
#include "sim/calls/records.h"

namespace sim {

class Encoder {
public:
    template <typename T>
    Encoder& put(T const& value) {
        if constexpr (is_record<T>::value) {
            std::apply([&](auto const&... fields) { (put(fields), ...); }, Fields<T>::of(value));
        } else if constexpr (std::is_array_v<T>) {
            for (auto const& element : value) {
                put(element);
            }
        } else {
            static_assert(std::is_arithmetic_v<T> || std::is_enum_v<T>);
            bytes_.append(reinterpret_cast<char const*>(&value), sizeof value);
        }
        return *this;
    }
    Encoder& put(std::string const& text) {
        put(static_cast<std::uint32_t>(text.size()));
        bytes_ += text;
        return *this;
    }
    Encoder& put(Text const& text) { return text ? put(true).put(*text) : put(false); }
    Encoder& put(ObjectNumber object) { return put(object.number); }
    Encoder& put(FunctionGiven function) { return put(function.given); }
    template <typename T>
    Encoder& put(Hidden<T> const& hidden) {
        return put(hidden.value);
    }
    template <std::size_t N>
    Encoder& put(std::bitset<N> const& bits) {
        return put(static_cast<std::uint64_t>(bits.to_ullong()));
    }
    template <typename Key, typename T>
    Encoder& put(std::map<Key, T> const& map) {
        put(static_cast<std::uint32_t>(map.size()));
        for (auto const& [key, value] : map) {
            put(key).put(value);
        }
        return *this;
    }
    template <typename... T>
    Encoder& put(std::tuple<T...> const& values) {
        std::apply([&](auto const&... each) { (put(each), ...); }, values);
        return *this;
    }

    std::string const& bytes() const { return bytes_; }

private:
    std::string bytes_;
};

// Reads what an Encoder wrote. Bytes that no Encoder writes are met with a failure, which stays, and with values that
// are as good as any; it never reads beyond them.
class Decoder {
public:
    explicit Decoder(std::string_view bytes) : rest_(bytes) {}

    template <typename T>
    Decoder& get(T& value) {
        if constexpr (is_record<T>::value) {
            std::apply([&](auto&... fields) { (get(fields), ...); }, Fields<T>::of(value));
        } else if constexpr (std::is_array_v<T>) {
            for (auto& element : value) {
                get(element);
            }
        } else if constexpr (std::is_same_v<T, bool>) {
            std::uint8_t byte = 0;
            get(byte);
            failed_ = failed_ || byte > 1;
            value = byte == 1;
        } else {
            static_assert(std::is_arithmetic_v<T> || std::is_enum_v<T>);
            std::string_view const bytes = take(sizeof value);  // none, after a failure
            bytes.copy(reinterpret_cast<char*>(&value), bytes.size());
        }
        return *this;
    }
    Decoder& get(std::string& text) {
        std::uint32_t size = 0;
        get(size);
        text = take(size);
        return *this;
    }
    Decoder& get(Text& text) {
        bool given = false;
        get(given);
        text.reset();
        return given ? get(text.emplace()) : *this;
    }
    Decoder& get(ObjectNumber& object) { return get(object.number); }
    Decoder& get(FunctionGiven& function) { return get(function.given); }
    template <typename T>
    Decoder& get(Hidden<T>& hidden) {
        return get(hidden.value);
    }
    template <std::size_t N>
    Decoder& get(std::bitset<N>& bits) {
        std::uint64_t number = 0;
        get(number);
        bits = std::bitset<N>(number);
        failed_ = failed_ || bits.to_ullong() != number;
        return *this;
    }
    template <typename Key, typename T>
    Decoder& get(std::map<Key, T>& map) {
        std::uint32_t size = 0;
        get(size);
        map.clear();
        for (; size > 0 && !failed_; --size) {
            Key key{};
            get(key);
            failed_ = failed_ || (!map.empty() && key <= map.rbegin()->first);
            get(map[key]);
        }
        return *this;
    }
    template <typename... T>
    Decoder& get(std::tuple<T...>& values) {
        std::apply([&](auto&... each) { (get(each), ...); }, values);
        return *this;
    }

    bool failed() const { return failed_; }
    // Whether all bytes have been read, without a failure.
    bool complete() const { return !failed_ && rest_.empty(); }

private:
    std::string_view take(std::size_t size) {
        failed_ = failed_ || size > rest_.size();
        std::string_view const taken = failed_ ? std::string_view() : rest_.substr(0, size);
        rest_.remove_prefix(taken.size());
        return taken;
    }

    std::string_view rest_;
    bool failed_ = false;
};

}  // namespace sim
