// Standard input: every character and number that is typed at the terminal is read here.
#include "app/terminal_input.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <mutex>
#include <optional>
#include <thread>

namespace {

constexpr auto kWaitAtEndOfInput = std::chrono::milliseconds(20);  // 50 redisplays a second
constexpr std::size_t kLongestFloat = 1024;                        // characters

// What comes instead of a character.
constexpr int kControlD = -1;
constexpr int kEnded = -2;

bool is_space(int c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool is_digit(int c) {
    return c >= '0' && c <= '9';
}

// Whether the character goes on with the beginning of a floating-point number.
bool continues_float(std::string const& text, int c) {
    std::size_t const exponent = text.find_first_of("eE");
    switch (c) {
        case '+':
        case '-':
            return text.empty() || exponent == text.size() - 1;
        case '.':
            return exponent == std::string::npos && text.find('.') == std::string::npos;
        case 'e':
        case 'E':
            return exponent == std::string::npos && text.find_first_of("0123456789") != std::string::npos;
        default:
            return is_digit(c);
    }
}

class Terminal {
public:
    std::mutex mutex;    // held through each read of a menu; guards what it reads and all that follows
    bool taken = false;  // by a menu, from the local menu
    int connection = -1;

    // The next character, which stays the next one until drop(). Blocks.
    int peek() {
        while (true) {
            if (connection_ended()) {
                return kEnded;
            }
            if (next_ < end_) {
                return static_cast<unsigned char>(buffer_[next_]);
            }
            if (!is_standard_input()) {
                return kEnded;
            }
            pollfd waited[] = {{STDIN_FILENO, POLLIN, 0}, {connection, POLLRDHUP, 0}};
            if (::poll(waited, 2, -1) > 0 && waited[0].revents != 0) {
                if (std::optional<int> const end = fill()) {
                    return *end;
                }
            }
        }
    }

    void drop() { ++next_; }

    // As peek, for the local menu: nothing where there is no character at once.
    std::optional<int> peek_at_once() {
        if (next_ == end_ && !is_standard_input()) {
            return kEnded;
        }
        pollfd waited{STDIN_FILENO, POLLIN, 0};
        if (next_ == end_ && ::poll(&waited, 1, 0) > 0) {
            if (std::optional<int> const end = fill()) {
                return end;
            }
        }
        if (next_ == end_) {
            return std::nullopt;
        }
        return static_cast<unsigned char>(buffer_[next_]);
    }

    void give_back() {
        if (taken) {
            taken = false;
            ::eventfd_write(given_back_, 1);
        }
    }

    // For the local menu, without the lock: waits until the menus gave the terminal back and, unless one had it,
    // for typed text. A menu may have read that text, and given back what it left of it, before this wait saw it.
    void wait_for_turn(bool taken_before) const {
        pollfd waited[] = {{given_back_, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
        ::poll(waited, taken_before ? 1 : 2, -1);
        eventfd_t ignored;
        ::eventfd_read(given_back_, &ignored);
    }

    int skip_space() {
        int c = peek();
        while (is_space(c)) {
            drop();
            c = peek();
        }
        return c;
    }

    // Drops the rest of the line, from `c` on, which peek() has answered. What comes instead of a character ends it.
    void drop_line(int c) {
        for (; c >= 0; c = peek()) {
            drop();
            if (c == '\n') {
                return;
            }
        }
    }

private:
    // Takes what standard input has; an answer only where it has ended. Nothing is kept of an end: the next
    // read tries again.
    std::optional<int> fill() {
        ssize_t const count = ::read(STDIN_FILENO, buffer_, sizeof buffer_);
        if (count > 0) {
            next_ = 0;
            end_ = static_cast<std::size_t>(count);
            return std::nullopt;
        }
        if (count == -1 && (errno == EINTR || errno == EAGAIN)) {
            return std::nullopt;
        }
        return count == 0 && ::isatty(STDIN_FILENO) ? kControlD : kEnded;
    }

    // The end of socket mode closes descriptor 0; whatever is opened there later is not the terminal.
    bool is_standard_input() {
        struct stat now {};
        if (::fstat(STDIN_FILENO, &now) == -1) {
            return false;
        }
        if (!at_start_) {
            at_start_ = now;
        }
        return now.st_dev == at_start_->st_dev && now.st_ino == at_start_->st_ino;
    }

    bool connection_ended() const {
        pollfd waited{connection, POLLRDHUP, 0};
        return ::poll(&waited, 1, 0) > 0;
    }

    int const given_back_ = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    char buffer_[1024];
    std::size_t next_ = 0;
    std::size_t end_ = 0;
    std::optional<struct stat> at_start_;
};

// Never destroyed: exit() may be called while another thread waits here.
Terminal& terminal() {
    static Terminal* const instance = new Terminal;
    return *instance;
}

// One read of a menu.
class Reading {
public:
    Reading() : lock_(terminal().mutex) {
        terminal().taken = true;
        std::cout << std::flush;
    }

    Terminal* operator->() { return &terminal(); }

private:
    std::unique_lock<std::mutex> lock_;
};

// A whole number between the limits, or nothing; a line that holds none is dropped.
std::optional<long long> read_integer(long long min, long long max) {
    constexpr long long kTooLarge = std::numeric_limits<unsigned int>::max() + 1LL;
    Reading input;
    int c = input->skip_space();
    if (c < 0) {
        return std::nullopt;
    }
    bool const negative = c == '-';
    if (negative || c == '+') {
        input->drop();
        c = input->peek();
    }
    bool converts = is_digit(c);
    long long magnitude = 0;
    for (; is_digit(c); c = input->peek()) {
        magnitude = std::min(magnitude * 10 + (c - '0'), kTooLarge);
        input->drop();
    }
    long long const value = negative ? -magnitude : magnitude;
    if (!converts || value < min || value > max) {
        input->drop_line(c);
        return std::nullopt;
    }
    return value;
}

}  // namespace

void read_option(char& option) {
    int c;
    {
        Reading input;
        c = input->skip_space();
        if (c >= 0) {
            input->drop();
        }
    }
    if (c == kEnded) {
        std::this_thread::sleep_for(kWaitAtEndOfInput);
    } else {
        option = c == kControlD ? '\0' : static_cast<char>(c);
    }
}

void read_number(int& value) {
    if (auto const number = read_integer(std::numeric_limits<int>::min(), std::numeric_limits<int>::max())) {
        value = static_cast<int>(*number);
    }
}

void read_number(unsigned int& value) {
    constexpr long long kMax = std::numeric_limits<unsigned int>::max();
    if (auto const number = read_integer(-kMax, kMax)) {
        value = static_cast<unsigned int>(*number);
    }
}

void read_number(float& value) {
    Reading input;
    int c = input->skip_space();
    if (c < 0) {
        return;
    }
    std::string text;
    while (text.size() < kLongestFloat && continues_float(text, c)) {
        text += static_cast<char>(c);
        input->drop();
        c = input->peek();
    }
    char* end = nullptr;
    float const number = std::strtof(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !std::isfinite(number) || text.size() == kLongestFloat) {
        input->drop_line(c);
        return;
    }
    value = number;
}

void read_word(std::string& word) {
    word.clear();
    Reading input;
    for (int c = input->skip_space(); c >= 0 && !is_space(c); c = input->peek()) {
        word += static_cast<char>(c);
        input->drop();
    }
}

bool read_local_option(char& option) {
    std::cout << std::flush;
    Terminal& input = terminal();
    while (true) {
        bool taken;
        {
            std::lock_guard<std::mutex> const lock(input.mutex);
            taken = input.taken;
            while (std::optional<int> const c = taken ? std::nullopt : input.peek_at_once()) {
                if (*c == kEnded) {
                    return false;
                }
                if (*c == kControlD) {
                    option = '\0';
                    return true;
                }
                input.drop();
                if (!is_space(*c)) {
                    option = static_cast<char>(*c);
                    return true;
                }
            }
        }
        input.wait_for_turn(taken);
    }
}

void release_terminal() {
    std::lock_guard<std::mutex> const lock(terminal().mutex);
    terminal().give_back();
}

void watch_connection(int descriptor) {
    std::lock_guard<std::mutex> const lock(terminal().mutex);
    terminal().connection = descriptor;
}
