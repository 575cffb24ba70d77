// What the library and the device say to each other.
//
// A program has a connection for each of its calls that run at the same time, and two lanes: connections of the threads
// that run its callbacks, one for those of the sensor hub and one for those of the button. Each connection opens with a
// Hello, which is answered by a Welcome, or by a Refusal and the end. Then:
//
//   a call       library: Call, the arguments    device: Reply, the results
//   a callback   device: Event                   library: Done when the function has returned
//   or, where the device wants to know of it     library: Begin where it is about to call a function,
//                                           then Done                                device: Reply to the Begin,
//                                                                                    whose result is a CallbackTurn
//
// In a lane the device sends an Event only when the one before is Done. What a callback calls goes over its lane, so
// that the device sees what happens in one thread in its order. With the Welcome of the lane of the hub comes a file,
// the memory of an EventProgress: where that tells the end of an event, the Done is not sent.
#pragma once

#include <cstdint>
#include <string>
#include <tuple>

#include "hal/button.h"
#include "hal/quaternion.h"
#include "sim/calls/operations.h"

namespace sim {

enum class MessageKind : std::uint8_t { hello, welcome, refusal, call, quiet, reply, event, begin, done };

enum class Lane : std::uint8_t { none, hub, button };

struct Hello {
    std::uint64_t version;  // table_version()
    Lane lane;
    std::uint64_t program;  // as the Welcome of the program's first connection said; 0: this is the first
    std::string name;       // of the program, for people
};

struct Welcome {
    std::uint64_t program;
};

struct Refusal {
    std::string reason;
};

// Followed by the arguments. The call of a constructor has object 0.
struct Call {
    OperationId operation;
    unsigned int object;
    unsigned int thread;  // of the program, from 1; 0: of its lanes
};

// "No callback in this lane any more": answered by an empty reply when none runs, or at once where it comes from one.
struct Quiet {
    Lane lane;
};

// Followed by the results, where there are any.
struct CallReply {
    std::int64_t result;  // status, code or truth value; of a constructor the number of the object
    int error;            // errno of a failure
    bool done;            // the device did it; false where a fault rule answered in its place
    bool results;         // whether results follow
};

// What the library does with a function that it is about to call.
enum class CallbackTurn : std::int64_t { skip, call, call_and_begin_again };

enum class EventKind : std::uint8_t {
    sample_for_records,   // sample; index: the first record that it is for
    sample_for_delegate,  // sample
    position_reached,
    position_left,
    contact_moved,   // asks for the hold times of the records
    press_record,    // index
    release_record,  // index
};

struct SampleData {
    std::uint8_t sensor_id;
    hal::cb_struct_te kind;
    hal::quaternion_s16_t quaternion;  // where the kind says so
};

struct Event {
    EventKind kind;
    unsigned int object;
    std::uint8_t index;
    SampleData sample;
    bool announce;  // a function is called after a Begin only
};

struct ButtonRecord {
    std::uint32_t hold_time_ms;
    bool has_action;
};

struct ButtonRecords {
    ButtonRecord press[5];
    ButtonRecord release[5];
};

struct Done {
    ButtonRecords records;     // the answer to contact_moved
    std::uint8_t next_record;  // of sample_for_records: which it still is for; 0: none
};

// The fields of the messages, in order, for the codec.
#define SIM_FIELDS(Type, ...)             \
    template <>                           \
    struct Fields<Type> {                 \
        template <typename R>             \
        static auto of(R& r) {            \
            return std::tie(__VA_ARGS__); \
        }                                 \
    }
SIM_FIELDS(Hello, r.version, r.lane, r.program, r.name);
SIM_FIELDS(Welcome, r.program);
SIM_FIELDS(Refusal, r.reason);
SIM_FIELDS(Call, r.operation, r.object, r.thread);
SIM_FIELDS(Quiet, r.lane);
SIM_FIELDS(CallReply, r.result, r.error, r.done, r.results);
SIM_FIELDS(hal::quaternion_s16_t, r.x, r.y, r.z, r.w, r.accuracy);
SIM_FIELDS(SampleData, r.sensor_id, r.kind, r.quaternion);
SIM_FIELDS(Event, r.kind, r.object, r.index, r.sample, r.announce);
SIM_FIELDS(ButtonRecord, r.hold_time_ms, r.has_action);
SIM_FIELDS(ButtonRecords, r.press, r.release);
SIM_FIELDS(Done, r.records, r.next_record);
#undef SIM_FIELDS

}  // namespace sim
