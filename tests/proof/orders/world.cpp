// What the console of a run finds around it: a terminal, a client, and an operating system that keeps to the turns.
//
// Whatever may make a thread of the console wait, or lets another see what it did, is wrapped: it takes a turn, and
// waits in turns instead of in the kernel.
#include "tests/proof/orders/world.h"

#include <dlfcn.h>
#include <poll.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string_view>

#include "tests/proof/orders/threads.h"
#include "tests/proof/orders/turns.h"
#include "tests/proof/orders/unseen.h"

extern "C" {

int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
int __real_pthread_mutex_unlock(pthread_mutex_t* mutex);
int __real_pthread_rwlock_rdlock(pthread_rwlock_t* lock);
int __real_pthread_rwlock_wrlock(pthread_rwlock_t* lock);
int __real_pthread_rwlock_unlock(pthread_rwlock_t* lock);
int __real_poll(pollfd* waited, nfds_t count, int timeout);
ssize_t __real_read(int descriptor, void* buffer, std::size_t size);
ssize_t __real_recv(int descriptor, void* buffer, std::size_t size, int flags);
ssize_t __real_send(int descriptor, void const* data, std::size_t size, int flags);
int __real_shutdown(int descriptor, int how);
int __real_close(int descriptor);
int __real_nanosleep(timespec const* length, timespec* left);
std::size_t __real_fwrite(void const* text, std::size_t size, std::size_t count, FILE* file);
int __real_putc(int c, FILE* file);
int __real_fflush(FILE* file);

}  // extern "C"

namespace orders {

namespace {

constexpr char const* kPolls = "polls";
constexpr char const* kJoins = "joins a thread";

int typing_end = -1;
int clients_end = -1;  // of the connection
int consoles_end = -1;
bool client_calls = false;
pthread_t handles[kMostThreads];  // of the threads, by their numbers

// Of the thread that is started next. Used by the thread whose turn it is.
std::string const* next_name = nullptr;

struct Output {
    std::string text;
    std::size_t flushed = 0;  // so much of it can be seen
};

// Never destroyed, as the threads that print.
Output& output() {
    static Output* const instance = new Output;
    return *instance;
}

thread_local std::size_t searched = 0;  // of the output, by the thread's waits

void print(std::string_view text) {
    take_turn("prints");
    Unseen const unseen;
    write_event(EventKind::output, text);
    output().text += text;
}

// A thread's first function, with what it does before and after.
struct Start {
    std::size_t number;
    void* (*run)(void*);
    void* argument;
};

void* run_in_turns(void* given) {
    std::unique_ptr<Start> const start(static_cast<Start*>(given));
    enter(start->number);
    void* const result = start->run(start->argument);
    leave();
    return result;
}

// A handle may have been another thread's before.
std::size_t number_of(pthread_t thread) {
    Unseen const unseen;
    std::size_t number = kMostThreads;
    while (--number > 0 && ::pthread_equal(handles[number], thread) == 0) {
    }
    return number;
}

bool is_typed_text_taken() {
    int waiting = 0;
    return ::ioctl(typing_end, FIONREAD, &waiting) == 0 && waiting == 0;
}

bool readable(int descriptor) {
    pollfd waited{descriptor, POLLIN, 0};
    return __real_poll(&waited, 1, 0) != 0;
}

// What the C++ library would have met without this file: the sanitizer's function, which may be a part of this program,
// or the C library's.
template <typename Function>
Function* next_in_line(std::string const& name) {
    void* const watching = ::dlsym(RTLD_DEFAULT, ("__interceptor_" + name).c_str());
    return reinterpret_cast<Function*>(watching != nullptr ? watching : ::dlsym(RTLD_NEXT, name.c_str()));
}

}  // namespace

std::thread start_thread(std::string const& name, std::function<void()> run) {
    next_name = &name;
    std::thread thread(std::move(run));
    next_name = nullptr;
    return thread;
}

void make_world() {
    int terminal[2];
    int connection[2];
    if (::pipe(terminal) != 0 || ::dup2(terminal[0], STDIN_FILENO) != STDIN_FILENO ||
        ::socketpair(AF_UNIX, SOCK_STREAM, 0, connection) != 0) {
        fail_run("no pipe or no socket");
    }
    ::close(terminal[0]);
    typing_end = terminal[1];
    clients_end = connection[0];
    consoles_end = connection[1];
}

void type(std::string const& text) {
    // The end of socket mode closes the terminal: what is typed then is nobody's, and no reason to die.
    sigset_t broken_pipe;
    ::sigemptyset(&broken_pipe);
    ::sigaddset(&broken_pipe, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &broken_pipe, nullptr);
    for (char const c : text) {
        take_turn("types");
        if (::write(typing_end, &c, 1) != 1) {
            return;
        }
    }
}

void wait_for_output(std::string const& text) {
    wait_until("waits for a text", [&text] {
        Unseen const unseen;
        std::size_t const found = output().text.find(text, searched);
        bool const seen = found != std::string::npos && found + text.size() <= output().flushed;
        searched = seen ? found + text.size() : searched;
        return seen;
    });
}

void wait_for_question() {
    wait_until("waits for a question", [] { return waits_for(kMenuThread, kPolls); });
}

bool leave_socket_mode() {
    type("\nx");
    wait_until("waits for x to be taken", [] { return is_typed_text_taken() && waits(kMainThread); });
    return waits_for(kMainThread, kJoins);
}

void connect_client() {
    take_turn("connects");
    Unseen const unseen;
    client_calls = true;
}

void send_line(std::string const& text) {
    std::string const line = text + "\n";
    take_turn("sends a line");
    __real_send(clients_end, line.data(), line.size(), MSG_NOSIGNAL);
}

void receive_reply() {
    std::string reply;
    while (reply.size() < 2 || reply.compare(reply.size() - 2, 2, "\\n") != 0) {
        wait_until("waits for a reply", [] { return readable(clients_end); });
        char c;
        if (__real_recv(clients_end, &c, 1, 0) != 1) {
            fail_run("the client's connection ends within a reply");
        }
        reply += c;
    }
    write_event(EventKind::reply, reply);
}

void hang_up() {
    take_turn("hangs up");
    __real_close(clients_end);
}

}  // namespace orders

using namespace orders;

extern "C" {

int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
    if (!takes_part()) {
        return __real_pthread_mutex_lock(mutex);
    }
    int status = 0;
    wait_until("locks a mutex", [&] { return (status = ::pthread_mutex_trylock(mutex)) != EBUSY; });
    return status;
}

int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex) {
    int const status = __real_pthread_mutex_unlock(mutex);
    take_turn("has unlocked a mutex");
    return status;
}

int __wrap_pthread_rwlock_rdlock(pthread_rwlock_t* lock) {
    if (!takes_part()) {
        return __real_pthread_rwlock_rdlock(lock);
    }
    int status = 0;
    wait_until("locks a loan", [&] { return (status = ::pthread_rwlock_tryrdlock(lock)) != EBUSY; });
    return status;
}

int __wrap_pthread_rwlock_wrlock(pthread_rwlock_t* lock) {
    if (!takes_part()) {
        return __real_pthread_rwlock_wrlock(lock);
    }
    int status = 0;
    wait_until("ends a loan", [&] { return (status = ::pthread_rwlock_trywrlock(lock)) != EBUSY; });
    return status;
}

int __wrap_pthread_rwlock_unlock(pthread_rwlock_t* lock) {
    int const status = __real_pthread_rwlock_unlock(lock);
    take_turn("has unlocked a loan");
    return status;
}

int __wrap_poll(pollfd* waited, nfds_t count, int timeout) {
    if (!takes_part() || timeout == 0) {
        take_turn("looks at its descriptors");
        return __real_poll(waited, count, timeout);
    }
    int ready = 0;
    wait_until(kPolls, [&] { return (ready = __real_poll(waited, count, 0)) != 0; });
    return ready;
}

ssize_t __wrap_read(int descriptor, void* buffer, std::size_t size) {
    if (takes_part()) {
        wait_until("reads", [descriptor] { return readable(descriptor); });
    }
    return __real_read(descriptor, buffer, size);
}

ssize_t __wrap_recv(int descriptor, void* buffer, std::size_t size, int flags) {
    if (takes_part()) {
        wait_until("receives", [descriptor] { return readable(descriptor); });
    }
    return __real_recv(descriptor, buffer, size, flags);
}

ssize_t __wrap_send(int descriptor, void const* data, std::size_t size, int flags) {
    take_turn("sends");
    return __real_send(descriptor, data, size, flags);
}

int __wrap_shutdown(int descriptor, int how) {
    take_turn(kShutsDown);
    return __real_shutdown(descriptor, how);
}

int __wrap_close(int descriptor) {
    take_turn("closes");
    return __real_close(descriptor);
}

int __wrap_bind(int, sockaddr const*, socklen_t) {
    return 0;
}

int __wrap_listen(int, int) {
    return 0;
}

int __wrap_accept(int, sockaddr*, socklen_t*) {
    int accepted = -1;
    wait_until("waits for a client", [&accepted] {
        Unseen const unseen;
        accepted = client_calls ? consoles_end : -1;
        return client_calls;
    });
    return accepted;
}

int __wrap_nanosleep(timespec const* length, timespec* left) {
    if (!takes_part()) {
        return __real_nanosleep(length, left);
    }
    take_turn("sleeps");
    return 0;
}

std::size_t __wrap_fwrite(void const* text, std::size_t size, std::size_t count, FILE* file) {
    if (!takes_part()) {
        return __real_fwrite(text, size, count, file);
    }
    print({static_cast<char const*>(text), size * count});
    return count;
}

int __wrap_putc(int c, FILE* file) {
    if (!takes_part()) {
        return __real_putc(c, file);
    }
    char const text = static_cast<char>(c);
    print({&text, 1});
    return c;
}

int __wrap_fflush(FILE* file) {
    if (!takes_part()) {
        return __real_fflush(file);
    }
    take_turn("flushes");
    {
        Unseen const unseen;
        output().flushed = output().text.size();
    }
    take_turn("has flushed");
    return 0;
}

uid_t __wrap_getuid() {
    return 0;
}

int __wrap_system(char const*) {
    take_turn("runs a command");
    return 0;
}

// In the place of the C library's, or the sanitizer's, for the C++ library starts and joins its threads itself.
int pthread_create(pthread_t* thread, pthread_attr_t const* attributes, void* (*run)(void*), void* argument) {
    static auto* const real =
        next_in_line<int(pthread_t*, pthread_attr_t const*, void* (*)(void*), void*)>("pthread_create");
    if (!takes_part()) {
        return real(thread, attributes, run, argument);
    }
    std::size_t const number = admit(next_name != nullptr ? *next_name : kMenuThread);
    auto start = std::make_unique<Start>(Start{number, run, argument});
    int const status = real(thread, attributes, run_in_turns, start.release());
    {
        Unseen const unseen;
        handles[number] = *thread;
    }
    take_turn("has started a thread");
    return status;
}

int pthread_join(pthread_t thread, void** result) {
    static auto* const real = next_in_line<int(pthread_t, void**)>("pthread_join");
    if (takes_part()) {
        std::size_t const number = number_of(thread);
        wait_until(kJoins, [number] { return has_left(number); });
    }
    return real(thread, result);
}

// The streams of the C++ library open their files with it: every node of the device is there, and nothing is written.
FILE* fopen64(char const* path, char const* mode) {
    static auto* const real = next_in_line<FILE*(char const*, char const*)>("fopen64");
    return real(takes_part() ? "/dev/null" : path, mode);
}

}  // extern "C"
