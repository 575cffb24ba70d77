// A second library, written from the headers in hal/ alone: it answers what it is told to, by a fuzzer or by nobody.
#include "tests/second_library/second_library.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "hal/base.h"
#include "tests/support/require.h"

namespace second_library {
namespace {

thread_local bool in_callback = false;

void run(Callback callback) {
    in_callback = true;
    callback();
    callback = nullptr;
    in_callback = false;
}

// The library's own thread, which runs one callback at a time; there is none before the first.
class Thread {
public:
    void start(Callback callback) {
        std::lock_guard<std::mutex> const lock(mutex_);
        if (!started_) {
            started_ = true;
            std::thread([this] { serve(); }).detach();
        }
        callback_ = std::move(callback);
        busy_ = true;
        changed_.notify_all();
    }

    void wait_until_idle() {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [this] { return !busy_; });
    }

private:
    void serve() {
        std::unique_lock<std::mutex> lock(mutex_);
        while (true) {
            changed_.wait(lock, [this] { return busy_; });
            Callback callback = std::move(callback_);
            lock.unlock();
            run(std::move(callback));
            lock.lock();
            busy_ = false;
            changed_.notify_all();
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    Callback callback_;
    bool started_ = false;
    bool busy_ = false;
};

struct Object {
    void const* address;
    hal::base_t* image_sensor;  // or null
};

// Used by one thread at a time: a caller waits first for the callback that runs beside it.
struct Library {
    std::string answers;
    std::size_t next = 0;
    std::vector<Object> objects;
    std::vector<Source> sources;
    Thread thread;
};

// Never destroyed: objects in static storage outlive it.
Library& library() {
    static Library* const instance = new Library;
    return *instance;
}

std::vector<Object>::iterator find(void const* object) {
    auto& objects = library().objects;
    return std::find_if(objects.begin(), objects.end(), [&](Object const& living) { return living.address == object; });
}

}  // namespace

void begin(std::string_view answers) {
    settle();
    library().answers = answers;
    library().next = 0;
}

void settle() {
    if (!in_callback) {
        library().thread.wait_until_idle();
    }
}

std::size_t living() {
    return library().objects.size();
}

void abandon(std::size_t kept) {
    settle();
    Library& lib = library();
    lib.sources.clear();
    while (lib.objects.size() > kept) {
        if (hal::base_t* const sensor = lib.objects.back().image_sensor) {
            delete sensor;
        } else {
            lib.objects.pop_back();
        }
    }
}

void born(Call const& constructor) {
    settle();
    library().objects.push_back({constructor.object, nullptr});
}

void dies(Call const& destructor) {
    silence(destructor.object);
    auto const found = find(destructor.object);
    require(found != library().objects.end(), "an object is destroyed once");
    library().objects.erase(found);
}

void mark_image_sensor(hal::base_t& sensor) {
    library().objects.back().image_sensor = &sensor;
}

void add_source(Source source) {
    library().sources.push_back(std::move(source));
}

Source const& source_of(void const* object) {
    auto const& sources = library().sources;
    return *std::find_if(sources.begin(), sources.end(), [&](Source const& source) { return source.object == object; });
}

void silence(void const* object) {
    settle();
    auto& sources = library().sources;
    sources.erase(
        std::remove_if(sources.begin(), sources.end(), [&](Source const& source) { return source.object == object; }),
        sources.end());
}

void called(Call const& call) {
    settle();
    require(find(call.object) != library().objects.end(), "only living objects are called");
}

// Seven of eight calls succeed.
int take_status() {
    constexpr int kFailures[] = {-1, 1, -2, 66, 127, 255, INT_MAX, INT_MIN};
    auto const choice = taken<unsigned char>();
    if (choice < 224) {
        return 0;
    }
    errno = EIO;
    return kFailures[choice % 8];
}

void let_callbacks_come() {
    Library& lib = library();
    auto const is_held = [](Source const& source) { return source.held; };
    if (in_callback || std::all_of(lib.sources.begin(), lib.sources.end(), is_held)) {
        return;
    }
    enum Manner { none, on_this_thread, on_the_librarys, beside_the_caller };
    auto const choice = taken<unsigned char>();
    auto const manner = static_cast<Manner>(choice % 4);
    Source const& source = lib.sources[(choice / 4U) % lib.sources.size()];
    Callback callback = manner == none || source.held ? nullptr : source.make();
    if (!callback) {
        return;
    }
    if (manner == on_this_thread) {
        run(std::move(callback));
        return;
    }
    lib.thread.start(std::move(callback));
    if (manner == on_the_librarys) {
        lib.thread.wait_until_idle();
    }
}

void take_bytes(void* to, std::size_t size) {
    Library& lib = library();
    std::size_t const count = std::min(size, lib.answers.size() - lib.next);
    std::memset(to, 0, size);
    std::memcpy(to, lib.answers.data() + lib.next, count);
    lib.next += count;
}

long long take_number() {
    constexpr int kMostPositive = 239;
    constexpr int kMostSmall = 247;
    int const small = taken<unsigned char>();
    if (small <= kMostPositive) {
        return small;
    }
    if (small <= kMostSmall) {
        return kMostPositive - small;  // -1 to -8
    }
    long long number = 0;
    take_bytes(&number, sizeof number);
    return number;
}

int answer_hold(Call const& call, bool hold) {
    called(call);
    int const status = take_status();
    for (Source& source : library().sources) {
        if (status == 0 && (source.object == call.object || source.gyro == call.object)) {
            source.held = hold;
            source.asked = true;
        }
    }
    let_callbacks_come();
    return status;
}

// Most samples are what the console waits for, some anything else.
Callback sample_for(SampleFunction const& function) {
    if (!function) {
        return nullptr;
    }
    auto const choice = taken<unsigned char>();
    unsigned char const id = choice % 2 == 0 ? 37 : choice % 4 == 1 ? 38 : taken<unsigned char>();
    auto const kind = (choice & 4) != 0 ? taken<hal::cb_struct_te>() : hal::cb_struct_te::quaternion_s16;
    auto sample = taken<hal::quaternion_s16_t>();
    bool const without_data = (choice & 8) != 0;
    return
        [function, id, kind, sample, without_data]() mutable { function(id, kind, without_data ? nullptr : &sample); };
}

}  // namespace second_library
