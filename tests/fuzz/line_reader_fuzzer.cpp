// Fuzzer of the client's lines and the replies: any bytes, any order of reads and sends, compared with a model.
//
// Input: the first line is the console's steps (see take_step); what follows is sent by the client, which then leaves.
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

#include "app/console_io.h"
#include "app/no_answer.h"
#include "net/socket.h"
#include "tests/support/require.h"

namespace {

constexpr std::size_t kMostSent = 1 << 16;  // fits into the socket's buffer, so that nothing blocks
constexpr std::size_t kLongestLine = 1023;
constexpr char kClientGone = 'x';

int interrupts = 0;  // of the reads to come

// A line as its readers see it, up to a NUL.
std::string seen(std::string const& line) {
    return line.substr(0, line.find('\0'));
}

// The client's bytes as lines, by rules of its own.
class LineModel {
public:
    explicit LineModel(std::string_view sent) : rest_(sent) {}

    // The next line, or nothing at the end; `trace` becomes what reading it prints.
    std::optional<std::string> next(std::string& trace) {
        std::string line;
        trace.clear();
        while (!rest_.empty()) {
            Token const token = take();
            trace += token.trace;
            if (token.kind == Token::character) {
                line += token.value;
            } else if (token.kind == Token::line_end && !line.empty()) {
                line.resize(std::min(line.size(), kLongestLine));
                trace += "ReadLine: " + seen(line) + "\n";
                return line;
            }
        }
        return std::nullopt;
    }

private:
    struct Token {
        enum Kind { nothing, character, line_end } kind;
        char value;
        char const* trace;
    };

    Token take() {
        constexpr char const* kBackslash = "Backslash detected \n";
        constexpr char const* kBackslashN = "Backslash detected \nBackslash and n detected \n";
        char const first = rest_[0];
        if (first != '\\') {
            rest_.remove_prefix(1);
            return {first == '\n' ? Token::line_end : first == '\r' ? Token::nothing : Token::character, first, ""};
        }
        if (rest_.size() == 1) {
            rest_ = {};
            return {Token::nothing, first, kBackslash};
        }
        char const second = rest_[1];
        rest_.remove_prefix(2);
        switch (second) {
            case 'n':
                return {Token::line_end, second, kBackslashN};
            case 'r':
                return {Token::nothing, second, kBackslash};
            default:
                return {Token::character, second, kBackslash};
        }
    }

    std::string_view rest_;
};

// What scanning the line as a decimal number leaves in `value`. A number beyond an int does not convert.
int scanned(std::string const& line, int value) {
    std::size_t at = std::min(line.find_first_not_of(" \t\n\v\f\r"), line.size());
    bool const negative = line[at] == '-';
    at += line[at] == '-' || line[at] == '+' ? 1 : 0;
    if (line[at] < '0' || line[at] > '9') {
        return value;
    }
    long long const limit = std::numeric_limits<int>::max() + (negative ? 1LL : 0LL);
    long long magnitude = 0;
    for (; line[at] >= '0' && line[at] <= '9' && magnitude <= limit; ++at) {
        magnitude = magnitude * 10 + (line[at] - '0');
    }
    return magnitude > limit ? value : static_cast<int>(negative ? -magnitude : magnitude);
}

// A console with its client connected, and all that the client should get.
class Session {
public:
    explicit Session(std::string const& sent) : lines_(sent) {
        int pair[2];
        require(::socketpair(AF_UNIX, SOCK_STREAM, 0, pair) == 0, "a pair of sockets");
        station_ = pair[0];
        client_ = std::make_unique<socket_tcp>(pair[1]);
        require(::send(station_, sent.data(), sent.size(), 0) == static_cast<ssize_t>(sent.size()), "all is sent");
        ::shutdown(station_, SHUT_WR);
        p_client_socket = client_.get();
        bsock = true;
        send_string.clear();
        console_buffer_ = std::cout.rdbuf(printed_.rdbuf());
    }

    ~Session() {
        std::cout.rdbuf(console_buffer_);
        bsock = false;
        p_client_socket = nullptr;
        ::close(station_);
        admit_client();
    }

    Session(Session const&) = delete;
    Session& operator=(Session const&) = delete;

    void read_line() {
        char line[kLineSize];
        bool const read = sckt_read_line(line);
        auto const expected = expect_line();
        require_equal(read, expected.has_value(), "a line is read");
        require_equal(std::string(line), seen(expected.value_or("")), "line");
        require_printed();
    }

    // False at the end.
    bool read_option() {
        char option = '?';
        kogetchar(option);
        auto const expected = expect_line();
        require_equal(option, expected ? (*expected)[0] : kClientGone, "option");
        require_printed();
        return expected.has_value();
    }

    void read_number() {
        int value = -77;
        bool answered = true;
        try {
            koscanf("%d", value);
        } catch (no_answer const&) {
            answered = false;
        }
        auto const expected = expect_line();
        require_equal(answered, expected.has_value(), "a number is answered");
        require_equal(value, expected ? scanned(*expected, -77) : -77, "number");
        require_printed();
        require_received(expected.value_or(""), "echo");
    }

    void add_item(int value) {
        kosstream("%d", value);
        waiting_ += std::to_string(value) + ";";
        require_equal(send_string, waiting_, "reply being built");
        require_received("", "nothing before the end of the reply");
    }

    void send_reply() {
        std::string const reply = waiting_ + "\\n";
        waiting_.clear();
        require_equal(kosstream_send(), static_cast<int>(reply.size()), "bytes of the reply");
        require(send_string.empty(), "the next reply starts empty");
        require_received(reply, "reply");
    }

    void reply_in_terminal_mode() {
        bsock = false;
        kosstream("%d", 1);
        require_equal(kosstream_send(), -1, "result in terminal mode");
        require_equal(send_string, waiting_, "reply in terminal mode");
        require_received("", "nothing in terminal mode");
        bsock = true;
    }

    void write_line() {
        sckt_write_line("text\r\n");
        trace_ = "void sckt_write_line(std::string)\n";
        require_printed();
        require_received("text\r\n", "line written");
    }

    // Nothing of what the client sent counts any more.
    void dismiss() {
        dismiss_client();
        lines_ = LineModel("");
    }

private:
    std::optional<std::string> expect_line() { return lines_.next(trace_); }

    void require_printed() {
        require_equal(printed_.str(), trace_, "trace");
        printed_.str("");
    }

    void require_received(std::string const& expected, char const* what) {
        static char buffer[kMostSent];
        ssize_t const count = ::recv(station_, buffer, sizeof buffer, MSG_DONTWAIT);
        std::string const received(buffer, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        require_equal(received, expected, what);
    }

    LineModel lines_;
    int station_ = -1;
    std::unique_ptr<socket_tcp> client_;
    std::ostringstream printed_;
    std::streambuf* console_buffer_ = nullptr;
    std::string trace_;
    std::string waiting_;
};

// A digit makes up the value of the items.
void take_step(char step, Session& session, unsigned int& value) {
    switch (step) {
        case 'g':
            session.read_option();
            break;
        case 's':
            session.read_number();
            break;
        case 'i':
            session.add_item(static_cast<int>(value));
            break;
        case 'e':
            session.send_reply();
            break;
        case 't':
            session.reply_in_terminal_mode();
            break;
        case 'w':
            session.write_line();
            break;
        case 'd':
            session.dismiss();
            break;
        case '!':
            ++interrupts;
            break;
        case '-':
            value = -value;
            break;
        default:
            if (step >= '0' && step <= '9') {
                value = value * 10 + static_cast<unsigned int>(step - '0');
            } else {
                session.read_line();
            }
            break;
    }
}

}  // namespace

extern "C" ssize_t __real_recv(int descriptor, void* buffer, std::size_t size, int flags);

extern "C" ssize_t __wrap_recv(int descriptor, void* buffer, std::size_t size, int flags) {
    if (interrupts > 0 && flags == 0) {  // the console's reads; the station's do not wait
        --interrupts;
        errno = EINTR;
        return -1;
    }
    return __real_recv(descriptor, buffer, size, flags);
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    if (size > kMostSent) {
        return -1;
    }
    std::string const input(reinterpret_cast<char const*>(data), size);
    std::size_t const line_end = std::min(input.find('\n'), input.size());
    std::string const sent = input.substr(std::min(line_end + 1, input.size()));
    Session session(sent);
    unsigned int value = 0;
    for (char const step : input.substr(0, line_end)) {
        take_step(step, session, value);
    }
    while (session.read_option()) {
    }
    return 0;
}
