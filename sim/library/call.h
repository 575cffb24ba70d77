// A call of an operation, from the library's classes to the device.
#pragma once

#include <algorithm>
#include <cerrno>
#include <tuple>
#include <type_traits>

#include "sim/calls/operations.h"
#include "sim/library/device_link.h"
#include "sim/library/object.h"

namespace sim {

// The arguments of an operation as they go to the device.
template <typename T>
T const& to_argument(T const& value) {
    return value;
}
inline Text to_argument(char const* text) {
    return text != nullptr ? Text(text) : std::nullopt;
}
template <typename... T>
auto in(T const&... values) {
    return std::tuple<std::decay_t<decltype(to_argument(values))>...>(to_argument(values)...);
}

// The out-arguments of an operation, which are written on success only.
template <typename... T>
std::tuple<T&...> out(T&... targets) {
    return {targets...};
}

// What came of a call.
template <typename Result>
struct Outcome {
    Result result;
    bool done;  // by the device itself
};

namespace detail {

template <typename Tuple>
struct without_references;
template <typename... T>
struct without_references<std::tuple<T&...>> {
    using type = std::tuple<T...>;
};

}  // namespace detail

// Without a device every operation is refused: -1, false, or the code 0, errno ENODEV. `object`: null for a static one.
template <typename Op, typename Arguments = std::tuple<>, typename Results = std::tuple<>>
Outcome<typename Op::Result> ask(Object const* object, Arguments const& arguments = {}, Results const& results = {}) {
    using Result = typename Op::Result;
    static_assert(std::is_same_v<Arguments, typename Op::Arguments>, "the table has other arguments");
    static_assert(std::is_same_v<typename detail::without_references<Results>::type, typename Op::Results>,
                  "the table has other results");
    int const caller_errno = errno;
    Call const call{Op::kId, object != nullptr ? object->number : 0, thread_number()};
    Exchange exchange(message_of(MessageKind::call, call, arguments));
    CallReply reply{};
    if (!exchange.answered() || exchange.reply().get(reply).failed()) {
        errno = ENODEV;
        return {std::is_same_v<Result, int> ? Result(-1) : Result(), false};
    }
    if (reply.results) {
        typename Op::Results values{};
        exchange.reply().get(values);
        Results targets = results;
        targets = values;
    }
    errno = reply.error != 0 ? reply.error : caller_errno;
    return {static_cast<Result>(reply.result), reply.done};
}

template <typename Op, typename... Part>
typename Op::Result call(Object const* object, Part const&... parts) {
    return ask<Op>(object, parts...).result;
}
// An operation without arguments, with results.
template <typename Op, typename... T>
typename Op::Result call(Object const* object, std::tuple<T&...> const& results) {
    return ask<Op>(object, in(), results).result;
}

// Constructs `object` on the device. Nothing is said of a failure: its operations then fail.
template <typename Op, typename Arguments>
void construct(Object& object, Arguments const& arguments) {
    int const caller_errno = errno;
    object.number = static_cast<unsigned int>(std::max(0, call<Op>(nullptr, arguments)));
    errno = caller_errno;
}

// Returns when no callback of the object runs, unless it is called from one, and none will.
template <typename Op>
void destroy(Object const& object) {
    int const caller_errno = errno;
    call<Op>(&object);
    errno = caller_errno;
}

}  // namespace sim
