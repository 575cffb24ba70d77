// The one gate that every operation of the library passes: journal, fault rules, lock, node check, device.
#pragma once

#include <cerrno>
#include <string>
#include <tuple>
#include <type_traits>

#include "sim/device/device.h"
#include "sim/library/object.h"
#include "sim/library/text.h"

namespace sim {

// The arguments of an operation, for the journal.
template <typename... T>
struct In {
    std::tuple<T const&...> values;
    std::string text() const {
        return std::apply([](auto const&... v) { return list_of(v...); }, values);
    }
};
template <typename... T>
In<T...> in(T const&... values) {
    return {{values...}};
}

// The out-arguments of an operation. The device fills copies; the caller's are written on success only.
template <typename... T>
struct Out {
    using Answer = std::tuple<T...>;
    std::tuple<T&...> targets;
};
template <typename... T>
Out<T...> out(T&... targets) {
    return {{targets...}};
}

// One call on its way through the gate. What does not depend on the operation's types.
class Call {
public:
    // Asks the fault rules and spends their delay. An object whose construction has not been through the gate yet,
    // because its constructor is the program's, first passes as constructed by the operation's class.
    Call(Object* object, char const* operation);

    Device& device() { return device_; }
    FaultEffect const& fault() const { return fault_; }
    // Whether the device may be asked; otherwise sets errno. Lock held.
    bool ready() const { return object_ == nullptr || object_->ready(); }
    bool journaled() const { return device_.journal.on(); }
    void write(std::string const& text) const;
    // Leaves the caller's errno alone when the call succeeded; otherwise errno is set.
    void finish(bool failed) const;

private:
    Device& device_;
    Object* object_;
    char const* operation_;
    int caller_errno_;
    FaultEffect fault_;
};

// For operations whose model does not exist.
inline int no_model() {
    errno = ENOSYS;
    return -1;
}

namespace detail {

enum class Access { device, object };

template <typename Result>
constexpr Result refused() {
    if constexpr (std::is_same_v<Result, int>) {
        return -1;
    } else {
        return Result{};
    }
}

// What a fault rule answers. Without a status, `value` is a success and for a bool or a code the result itself.
template <typename Result, typename Answer>
Result answer_of_fault(FaultEffect const& fault, Answer& answer) {
    if (!fault.values.empty()) {
        FaultValues values(fault.values);
        if constexpr (!std::is_same_v<Result, int>) {
            Result result{};
            values.fill(result);
            return result;
        }
        std::apply([&](auto&... targets) { (values.fill(targets), ...); }, answer);
    }
    if (fault.status.value_or(0) != 0) {
        errno = EIO;
    }
    if constexpr (std::is_same_v<Result, bool>) {
        return fault.status.value_or(0) != 0;
    } else {
        return static_cast<Result>(fault.status.value_or(0));
    }
}

template <typename Result, typename Answer, typename Body>
Result answer_of_device(Call& call, Access access, Answer& answer, Body& body) {
    auto const lock = call.device().lock();
    if (access == Access::device && !call.ready()) {
        return refused<Result>();
    }
    return std::apply([&](auto&... targets) { return body(call.device(), targets...); }, answer);
}

template <typename Result, typename... T>
std::string result_text(Result result, std::tuple<T...> const& answer, bool with_answer) {
    std::string text = " = " + text_of(result);
    if (with_answer && sizeof...(T) > 0) {
        text += " [" + std::apply([](auto const&... values) { return list_of(values...); }, answer) + "]";
    }
    return text;
}

template <typename... I, typename... O, typename Body>
auto pass(Access access, Object* object, char const* operation, In<I...> const& arguments, Out<O...> const& results,
          Body body) {
    using Answer = typename Out<O...>::Answer;
    using Result = decltype(body(std::declval<Device&>(), std::declval<O&>()...));
    Call call(object, operation);
    Answer answer{};
    errno = 0;
    bool const faulted = call.fault().answers();
    Result const result =
        faulted ? answer_of_fault<Result>(call.fault(), answer) : answer_of_device<Result>(call, access, answer, body);
    bool const failed = std::is_same_v<Result, int> && result != Result{};
    bool const answered = faulted ? !call.fault().values.empty() : !failed;
    if (answered) {
        auto targets = results.targets;
        targets = answer;
    }
    int const error = errno;
    if (call.journaled()) {
        call.write("(" + arguments.text() + ")" + result_text(result, answer, answered));
    }
    errno = error;
    call.finish(failed);
    return result;
}

}  // namespace detail

// Passes a call of `operation` on `object` (null: static). `body` gets the device, its lock held, and the copies of
// the out-arguments, and answers the operation's result: an int status, 0 for success, or another type. Where a
// node of the object is missing the call is refused without it: -1, false, or the code 0.
template <typename Body>
auto gate(Object* object, char const* operation, Body body) {
    return detail::pass(detail::Access::device, object, operation, in(), out(), body);
}
template <typename... I, typename Body>
auto gate(Object* object, char const* operation, In<I...> const& arguments, Body body) {
    return detail::pass(detail::Access::device, object, operation, arguments, out(), body);
}
template <typename... O, typename Body>
auto gate(Object* object, char const* operation, Out<O...> const& results, Body body) {
    return detail::pass(detail::Access::device, object, operation, in(), results, body);
}
template <typename... I, typename... O, typename Body>
auto gate(Object* object, char const* operation, In<I...> const& arguments, Out<O...> const& results, Body body) {
    return detail::pass(detail::Access::device, object, operation, arguments, results, body);
}

// For operations that the object answers from what it knows: they do not need the device.
template <typename Body>
auto recall(Object* object, char const* operation, Body body) {
    return detail::pass(detail::Access::object, object, operation, in(), out(), body);
}

// Passes the construction of `object`. A fault rule with a status other than 0 leaves it unopened.
void construct(Object& object, char const* operation, std::string const& arguments);
template <typename... I>
void construct(Object& object, char const* operation, In<I...> const& arguments) {
    construct(object, operation, arguments.text());
}
// Passes the destruction of `object`, before anything of it is destroyed.
void destroy(Object& object, char const* operation);

// Writes that a callback of `object` is about to run: "callback gyro_delegate_t(37)".
void journal_callback(int object, char const* holder, std::string const& arguments);
template <typename... I>
void journal_callback(int object, char const* holder, In<I...> const& arguments) {
    journal_callback(object, holder, arguments.text());
}

}  // namespace sim
