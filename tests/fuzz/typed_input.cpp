// Standard input of the fuzzers: what is typed, played back read by read; and the console's sleeps, which take no time.
#include "tests/fuzz/typed_input.h"

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

namespace typed_input {

void (*on_sleep)(std::chrono::nanoseconds length) = nullptr;

namespace {

std::string script;
std::size_t next = 0;
bool is_terminal = false;
thread_local bool sleeps_are_counted = false;
int sleep_count = 0;
std::chrono::nanoseconds sleep_length{0};

bool is_special(char c) {
    return c == kEnd || c == kInterrupt || c == kSplit;
}

ssize_t read_script(char* buffer, std::size_t size) {
    while (next < script.size() && script[next] == kSplit) {
        ++next;
    }
    if (next == script.size()) {
        errno = EIO;
        return is_terminal ? -1 : 0;
    }
    if (is_special(script[next])) {
        errno = EINTR;
        return script[next++] == kInterrupt ? -1 : 0;
    }
    auto const from = script.begin() + static_cast<std::ptrdiff_t>(next);
    auto const count = std::min(static_cast<std::size_t>(std::find_if(from, script.end(), is_special) - from), size);
    std::memcpy(buffer, script.data() + next, count);
    next += count;
    return static_cast<ssize_t>(count);
}

}  // namespace

void use() {
    int const readable = ::open("/dev/null", O_RDWR);
    ::dup2(readable, STDIN_FILENO);
    ::close(readable);
    sleeps_are_counted = true;
}

void play(std::string_view text, bool terminal) {
    script = text;
    next = 0;
    is_terminal = terminal;
}

bool all_played() {
    return next == script.size();
}

int sleeps() {
    return std::exchange(sleep_count, 0);
}

std::chrono::nanoseconds last_sleep() {
    return sleep_length;
}

}  // namespace typed_input

extern "C" {

ssize_t __real_read(int descriptor, void* buffer, std::size_t size);
int __real_isatty(int descriptor);
int __real_nanosleep(timespec const* length, timespec* left);

ssize_t __wrap_read(int descriptor, void* buffer, std::size_t size) {
    return descriptor == STDIN_FILENO ? typed_input::read_script(static_cast<char*>(buffer), size)
                                      : __real_read(descriptor, buffer, size);
}

int __wrap_isatty(int descriptor) {
    return descriptor == STDIN_FILENO ? typed_input::is_terminal : __real_isatty(descriptor);
}

int __wrap_nanosleep(timespec const* length, timespec* left) {
    using namespace typed_input;
    if (!sleeps_are_counted) {
        return __real_nanosleep(length, left);
    }
    ++sleep_count;
    sleep_length = std::chrono::seconds(length->tv_sec) + std::chrono::nanoseconds(length->tv_nsec);
    if (on_sleep != nullptr) {
        on_sleep(sleep_length);
    }
    return 0;
}

}  // extern "C"
