// The library that the console of a run finds: every call succeeds, and callbacks come whenever the headers allow it.
//
// It takes the place of what answers and calls back in the second library. Each object that has callbacks calls them
// from a thread of its own, which is as much as the headers allow: never two of one object at once, those of different
// objects beside each other. What orders the memory of two threads is what the headers promise, and nothing more.
#include "tests/proof/orders/library.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <utility>

#include "tests/proof/orders/threads.h"
#include "tests/proof/orders/turns.h"
#include "tests/proof/orders/unseen.h"
#include "tests/second_library/second_library.h"

namespace orders {

namespace {

using second_library::Call;
using second_library::Callback;
using second_library::Source;

constexpr std::size_t kMostObjects = 64;  // of a run, living or not
constexpr int kChoices = 40;              // of a function that is set; of ten records the console sets at least one

// An object that calls, and its thread.
struct Caller {
    Source source{};
    std::thread thread;
    Random random{0};
    std::uint64_t callbacks_left = 0;
    bool calls = false;
    bool ended = false;
    std::atomic<unsigned int> released{
        0};  // orders what was before a release of the callbacks before those that follow
    std::atomic<unsigned int> returned{0};  // orders a callback before the end of a hold, or of the object
};

struct Object {
    void const* address = nullptr;  // null: destroyed
    Caller* caller = nullptr;
};

// By the order of construction. Used by the thread whose turn it is.
struct Library {
    std::uint64_t seed = 0;
    unsigned int most_callbacks = 0;
    Object objects[kMostObjects];
    std::size_t count = 0;
};

// Never destroyed: threads of the library are still there when the process ends.
Library& library() {
    static Library* const instance = new Library;
    return *instance;
}

thread_local Caller* calling = nullptr;  // whose callback runs on this thread

// Null where no such object lives.
Object* find(void const* address) {
    Object* const end = library().objects + library().count;
    Object* const found =
        std::find_if(library().objects, end, [&](Object const& object) { return object.address == address; });
    return found != end ? found : nullptr;
}

std::size_t number_of(Object const& object) {
    return static_cast<std::size_t>(&object - library().objects) + 1;
}

// "2 teach_current_position"
void note_call(Call const& call, std::string const& arguments = {}) {
    take_turn(call.operation);
    Unseen const unseen;
    Object const* const object = find(call.object);
    if (object == nullptr) {
        fail_run(std::string(call.operation) + " of an object that is not there");
    }
    write_event(EventKind::call, std::to_string(number_of(*object)) + " " + call.operation + arguments);
}

void call_once(Caller& caller) {
    caller.released.load(std::memory_order_acquire);
    calling = &caller;
    Callback callback;
    for (int choice = 0; choice < kChoices && !callback; ++choice) {
        callback = caller.source.make();
    }
    if (callback) {
        write_event(EventKind::callback, "");
        callback();
    }
    callback = nullptr;
    calling = nullptr;
    caller.returned.fetch_add(1, std::memory_order_release);
}

void serve(Caller& caller) {
    while (true) {
        wait_until("waits for a callback", [&caller] {
            Unseen const unseen;
            return caller.ended || (caller.callbacks_left > 0 && !caller.source.held);
        });
        {
            Unseen const unseen;
            if (caller.ended) {
                return;
            }
            --caller.callbacks_left;
            caller.calls = true;
        }
        call_once(caller);
        Unseen const unseen;
        caller.calls = false;
    }
}

// Until no callback of it runs, but the one that asks for it.
void wait_for_callback(Caller& caller) {
    if (calling != &caller) {
        wait_until("waits for a callback to end", [&caller] {
            Unseen const unseen;
            return !caller.calls;
        });
        caller.returned.load(std::memory_order_acquire);
    }
}

Caller* caller_of(void const* object) {
    Unseen const unseen;
    Object const* const found = find(object);
    return found != nullptr ? found->caller : nullptr;
}

}  // namespace

void begin_library(std::uint64_t seed, unsigned int callbacks) {
    library().seed = seed;
    library().most_callbacks = callbacks;
}

std::size_t living_objects() {
    Unseen const unseen;
    return static_cast<std::size_t>(std::count_if(library().objects, library().objects + library().count,
                                                  [](Object const& object) { return object.address != nullptr; }));
}

}  // namespace orders

namespace second_library {

using namespace orders;

void settle() {}

void born(Call const& constructor) {
    {
        Unseen const unseen;
        Library& lib = library();
        if (lib.count == kMostObjects) {
            fail_run("builds too many objects");
        }
        lib.objects[lib.count++].address = constructor.object;
    }
    note_call(constructor);
}

void dies(Call const& destructor) {
    note_call(destructor);
    silence(destructor.object);
    Unseen const unseen;
    find(destructor.object)->address = nullptr;
}

void mark_image_sensor(hal::base_t&) {}

void add_source(Source source) {
    Caller* caller = nullptr;
    std::string name;
    {
        Unseen const unseen;
        Object& object = *find(source.object);
        object.caller = caller = new Caller;
        caller->random = Random(library().seed + number_of(object));
        caller->callbacks_left = library().most_callbacks == 0 ? 0 : caller->random.below(library().most_callbacks + 1);
        name = "callbacks of " + std::to_string(number_of(object));
    }
    caller->source = std::move(source);
    caller->thread = start_thread(name, [caller] { serve(*caller); });
}

Source const& source_of(void const* object) {
    return caller_of(object)->source;
}

void silence(void const* object) {
    Caller* const caller = caller_of(object);
    if (caller == nullptr) {
        return;
    }
    {
        Unseen const unseen;
        caller->ended = true;
        find(object)->caller = nullptr;
    }
    wait_for_callback(*caller);
    if (calling == caller) {
        caller->thread.detach();
    } else {
        caller->thread.join();
        delete caller;
    }
}

void called(Call const& call) {
    note_call(call);
}

int take_status() {
    return 0;
}

void let_callbacks_come() {}

// What a call answers is zeros. Only callbacks bring something else.
void take_bytes(void* to, std::size_t size) {
    std::memset(to, 0, size);
    Random* const random = calling != nullptr ? &calling->random : nullptr;
    if (random == nullptr || random->below(2) == 0) {
        return;
    }
    if (size == sizeof(float)) {
        float const degrees = static_cast<float>(random->below(360)) - 180.0F;
        std::memcpy(to, &degrees, size);
    } else {
        for (std::size_t i = 0; i < size; ++i) {
            static_cast<unsigned char*>(to)[i] = static_cast<unsigned char>(random->next());
        }
    }
}

long long take_number() {
    return 0;
}

int answer_hold(Call const& call, bool hold) {
    note_call(call, hold ? "(true)" : "(false)");
    Object const* const end = library().objects + kMostObjects;
    for (Object const* object = library().objects; object != end; ++object) {
        Caller* caller = nullptr;
        {
            Unseen const unseen;
            caller = object->address != nullptr ? object->caller : nullptr;
            if (caller == nullptr || (caller->source.object != call.object && caller->source.gyro != call.object)) {
                continue;
            }
        }
        if (!hold) {
            caller->released.fetch_add(1, std::memory_order_release);
        }
        {
            Unseen const unseen;
            caller->source.held = hold;
            caller->source.asked = true;
        }
        if (hold) {
            wait_for_callback(*caller);
        }
    }
    return 0;
}

// An orientation, of either sensor.
second_library::Callback sample_for(SampleFunction const& function) {
    if (!function) {
        return nullptr;
    }
    unsigned char const id = taken<bool>() ? 38 : 37;
    return [function, id] {
        hal::quaternion_s16_t sample{};
        function(id, hal::cb_struct_te::quaternion_s16, &sample);
    };
}

}  // namespace second_library
