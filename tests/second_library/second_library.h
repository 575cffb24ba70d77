// A second library, written from the headers in hal/ alone: it answers what it is told to, by a fuzzer or by nobody.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>
#include <type_traits>

#include "hal/quaternion.h"

namespace hal {
class base_t;
}

// Every operation takes its status and its results from the answers, within what the headers promise: results stay as
// they are where it fails, and callbacks come one at a time, between construction and destruction, and not while
// they are held. They come on the caller's thread or on the library's own, there also beside the caller until its
// next call.
namespace second_library {

// For who tells it its answers. Before the first begin() there are none.

// The answers from now on; behind their end everything succeeds with zeros, and no callback comes.
void begin(std::string_view answers);

// Waits until no callback runs.
void settle();

// The objects that live now.
std::size_t living();

// Forgets the objects but those that were built first, `kept` of them, as the end of a process does; image sensors,
// which the console builds on the heap, are deleted.
void abandon(std::size_t kept);

// For the classes.

// A call of an object's operation. An object becomes one in the operation itself, which so gives it its name.
struct Call {
    Call(void const* called, char const* by = __builtin_FUNCTION()) : object(called), operation(by) {}

    void const* object;
    char const* operation;
};

using Callback = std::function<void()>;

// What an object has to call, and whether it may now.
struct Source {
    void const* object;
    void const* gyro;  // whose hold counts as well, or null
    bool held;
    bool asked;                      // for the hold
    std::function<Callback()> make;  // takes the callback's arguments from the answers; empty: no callback now
};

// Begin and end of an object, at any time but in a callback of its own.
void born(Call const& constructor);
void dies(Call const& destructor);
// Says that the object last born is an image sensor.
void mark_image_sensor(hal::base_t& sensor);

void add_source(Source source);
Source const& source_of(void const* object);
// Ends the callbacks of an object.
void silence(void const* object);

// Checks that the object lives, and waits for the callback that runs beside the caller.
void called(Call const& call);
int take_status();
void let_callbacks_come();

void take_bytes(void* to, std::size_t size);
// Most numbers are small, so that all codes come: one byte of the answers. The others are nine.
long long take_number();

// A value from the answers. Records that hold a bool, or codes, have a version of their own.
template <typename Value>
Value taken() {
    if constexpr (std::is_enum_v<Value> || (std::is_integral_v<Value> && sizeof(Value) > 1)) {
        return static_cast<Value>(take_number());
    } else {
        static_assert(std::is_trivially_copyable_v<Value>);
        Value value;
        take_bytes(&value, sizeof value);
        return value;
    }
}

template <>
inline bool taken() {
    return taken<unsigned char>() % 2 != 0;
}

// What an operation answers. One that fails with a positive status has results as well: some count as success.
template <typename... Results>
int answer(Call const& call, Results&... results) {
    called(call);
    int const status = take_status();
    if (status >= 0) {
        ((results = taken<Results>()), ...);
    }
    let_callbacks_come();
    return status;
}

// As answer, for what holds and releases the callbacks of the object and of what watches it.
int answer_hold(Call const& call, bool hold);

using SampleFunction = std::function<void(unsigned char, hal::cb_struct_te, void*)>;

// A call of the function with a sample from the answers; none where there is no function.
Callback sample_for(SampleFunction const& function);

}  // namespace second_library
