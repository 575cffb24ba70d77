// Lets one thread of the process run at a time; which one is next, a seed tells.
#include "tests/proof/orders/turns.h"

#include <semaphore.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "tests/proof/orders/threads.h"
#include "tests/proof/orders/unseen.h"

namespace orders {

namespace {

constexpr std::size_t kMostTurns = 100'000;  // of a run; the longest has some thousand
constexpr int kFailedRun = 3;                // exit status

struct Thread {
    sem_t turn;
    std::uint64_t priority = 0;
    bool left = false;
    bool waits = false;
    std::uint64_t waits_since = 0;  // the state of progress then
    char const* doing = "begin";
};

// Used by the thread whose turn it is.
struct Turns {
    Thread threads[kMostThreads];
    Record* record = nullptr;
    Random random{0};
    std::uint64_t change = 2;    // one turn of so many changes the order
    std::uint64_t progress = 0;  // turns of threads that had something to do
};

// Never destroyed: threads wait in it while the process ends.
Turns& turns() {
    static Turns* const instance = new Turns;
    return *instance;
}

thread_local Thread* self = nullptr;

std::size_t number_of(Thread const& thread) {
    return static_cast<std::size_t>(&thread - turns().threads);
}

// Null where there is none yet.
Thread const* find(std::string_view name) {
    auto const* const names = turns().record->names;
    auto const* const end = names + turns().record->threads;
    auto const* const found = std::find(names, end, name);
    return found != end ? &turns().threads[found - names] : nullptr;
}

bool may_run(Thread const& thread) {
    return !thread.left && !(thread.waits && thread.waits_since == turns().progress);
}

void note_turn(char const* what) {
    Record& record = *turns().record;
    write_event(EventKind::turn, what);
    for (char const* c = what; *c != '\0'; ++c) {
        record.order = (record.order ^ static_cast<unsigned char>(*c)) * 1099511628211U;  // FNV-1a
    }
    record.order = (record.order ^ number_of(*self)) * 1099511628211U;
    if (++record.turns > kMostTurns) {
        fail_run("does not end");
    }
}

[[noreturn]] void fail_stuck() {
    std::string text = "all threads wait:";
    for (std::size_t i = 0; i < turns().record->threads; ++i) {
        Thread const& thread = turns().threads[i];
        if (!thread.left) {
            text += "\n  " + std::string(turns().record->names[i]) + ": " + thread.doing;
        }
    }
    fail_run(text);
}

// The thread of the highest priority of those that have something to do.
Thread& next_thread() {
    Thread* next = nullptr;
    for (std::size_t i = 0; i < turns().record->threads; ++i) {
        Thread& thread = turns().threads[i];
        if (may_run(thread) && (next == nullptr || thread.priority > next->priority)) {
            next = &thread;
        }
    }
    if (next == nullptr) {
        fail_stuck();
    }
    return *next;
}

void wait_for_turn(Thread& thread) {
    while (::sem_wait(&thread.turn) != 0) {
    }
}

void give_turn() {
    Thread& next = next_thread();
    if (&next != self) {
        ::sem_post(&next.turn);
        wait_for_turn(*self);
    }
}

}  // namespace

// splitmix64
std::uint64_t Random::next() {
    state_ += 0x9E3779B97F4A7C15U;
    std::uint64_t number = state_;
    number = (number ^ (number >> 30U)) * 0xBF58476D1CE4E5B9U;
    number = (number ^ (number >> 27U)) * 0x94D049BB133111EBU;
    return number ^ (number >> 31U);
}

void begin_turns(std::uint64_t seed, Record& record) {
    Unseen const unseen;
    constexpr std::uint64_t kChanges[] = {3, 10, 30, 100};
    turns().record = &record;
    turns().random = Random(seed);
    turns().change = kChanges[turns().random.below(4)];
    self = &turns().threads[admit(kMainThread)];
}

std::size_t admit(std::string_view name) {
    Unseen const unseen;
    Record& record = *turns().record;
    if (record.threads == kMostThreads) {
        fail_run("too many threads");
    }
    std::size_t const number = record.threads++;
    name.copy(record.names[number], kThreadName - 1);
    Thread& thread = turns().threads[number];
    thread.priority = turns().random.next();
    ::sem_init(&thread.turn, 0, 0);
    return number;
}

void enter(std::size_t thread) {
    Unseen const unseen;
    self = &turns().threads[thread];
    wait_for_turn(*self);
}

void leave() {
    Unseen const unseen;
    self->left = true;
    ++turns().progress;
    Thread& next = next_thread();
    self = nullptr;
    ::sem_post(&next.turn);
}

bool takes_part() {
    return self != nullptr;
}

bool has_left(std::size_t thread) {
    Unseen const unseen;
    return turns().threads[thread].left;
}

bool has_left(std::string_view name) {
    Unseen const unseen;
    Thread const* const thread = find(name);
    return thread != nullptr && thread->left;
}

bool waits(std::string_view name) {
    Unseen const unseen;
    Thread const* const thread = find(name);
    return thread != nullptr && thread->waits;
}

bool waits_for(std::string_view name, char const* what) {
    Unseen const unseen;
    return waits(name) && std::string_view(find(name)->doing) == what;
}

void take_turn(char const* what) {
    if (self == nullptr) {
        return;
    }
    Unseen const unseen;
    self->doing = what;
    self->waits = false;
    ++turns().progress;
    if (turns().random.below(turns().change) == 0) {
        self->priority = turns().random.next();
    }
    give_turn();
    note_turn(what);
}

void wait_for_others(char const* what) {
    Unseen const unseen;
    self->doing = what;
    if (!self->waits) {
        self->waits = true;
        ++turns().progress;  // for who waits for this one to wait
    }
    self->waits_since = turns().progress;
    give_turn();
}

void write_event(EventKind kind, std::string_view text) {
    if (self == nullptr) {
        return;
    }
    Unseen const unseen;
    Record& record = *turns().record;
    std::size_t const length = std::min<std::size_t>(text.size(), 0xFFFF);
    if (record.size + length + 4 > kMostText) {
        fail_run("does more than the record holds");
    }
    char* const event = record.events + record.size;
    event[0] = static_cast<char>(number_of(*self));
    event[1] = static_cast<char>(kind);
    event[2] = static_cast<char>(length % 256);
    event[3] = static_cast<char>(length / 256);
    std::memcpy(event + 4, text.data(), length);
    record.size += 4 + length;
    record.callbacks += kind == EventKind::callback ? 1 : 0;
}

void fail_run(std::string_view what) {
    Unseen const unseen;
    Record& record = *turns().record;
    record.failure[what.copy(record.failure, sizeof record.failure - 1)] = '\0';
    ::_exit(kFailedRun);
}

}  // namespace orders
