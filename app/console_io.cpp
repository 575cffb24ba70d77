// Options, numbers and results, exchanged with the terminal or, in socket mode, with the TCP client.
#include "app/console_io.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "app/no_answer.h"
#include "app/terminal_input.h"
#include "app/typed_numbers.h"
#include "net/socket.h"

bool bsock = false;
std::string send_string;
socket_tcp* p_client_socket = nullptr;

namespace {

constexpr char kCarriageReturn = '\r';
constexpr char kLineFeed = '\n';
constexpr char kBackslash = '\\';
constexpr char const* kEndMark = "\\n";  // a backslash and an n, not a newline

std::atomic<bool> client_dismissed{false};

// The next byte of the client; false at the end of the stream, on an error, or when nobody wants it any more.
bool read_byte(char& byte) {
    int count;
    do {
        wait_for_client(p_client_socket->descriptor());
        count = p_client_socket->read_data(&byte, 1);
    } while (count == -1 && errno == EINTR);
    return count == 1 && !client_dismissed;
}

// A line while it is read. What does not fit is dropped; what is not stored yet is zero.
class line_buffer {
public:
    char const* text() const { return text_; }
    std::size_t size() const { return size_; }

    void store(char c) {
        if (size_ < kLineSize - 1) {
            text_[size_++] = c;
        }
    }

private:
    char text_[kLineSize] = "";
    std::size_t size_ = 0;
};

// Reads up to the end of a line that is not empty; false where the stream ends first.
bool collect(line_buffer& line) {
    char c;
    while (read_byte(c)) {
        if (c == kCarriageReturn) {
            continue;
        }
        if (c == kLineFeed) {
            if (line.size() != 0) {
                return true;
            }
            continue;
        }
        if (c == kBackslash) {
            std::cout << "Backslash detected \n" << std::flush;
            if (!read_byte(c)) {
                return false;
            }
            if (c == 'r') {
                continue;
            }
            if (c == 'n') {
                std::cout << "Backslash and n detected \n" << std::flush;
                if (line.size() != 0) {
                    return true;
                }
                continue;
            }
        }
        line.store(c);  // after a backslash any character at all, an end of line included
    }
    return false;
}

// As sckt_read_line, but leaves the terminal to the menu that asks, where that has it. What is told of the line is
// flushed with what comes next.
bool read_line(line_buffer& line) {
    std::cout << std::flush;
    if (!collect(line)) {
        return false;
    }
    std::cout << "ReadLine: " << line.text() << '\n';
    return true;
}

}  // namespace

void admit_client() {
    client_dismissed = false;
}

void dismiss_client() {
    client_dismissed = true;
}

bool sckt_read_line(char* buffer) {
    release_terminal();
    line_buffer line;
    bool const read = read_line(line);
    std::memcpy(buffer, read ? line.text() : "", read ? line.size() + 1 : 1);
    return read;
}

void sckt_write_line(std::string text) {  // NOLINT(performance-unnecessary-value-param): its interface, as traced
    std::cout << "void sckt_write_line(std::string)" << std::endl;
    p_client_socket->write_data(text);
}

void kogetchar(char& option) {
    if (!bsock) {
        read_option(option);
        return;
    }
    char line[kLineSize];
    option = sckt_read_line(line) ? line[0] : kExitKey;
}

// The format is "%d" in every call, and scan_int() stays defined where a number is too large for it.
void koscanf(char const*, int& value) {
    if (!bsock) {
        read_number(value);
        return;
    }
    line_buffer line;
    if (!read_line(line)) {
        throw no_answer();
    }
    std::cout << std::flush;  // before the client sees its echo, and the library its call
    value = scan_int(line.text()).value_or(value);
    p_client_socket->write_data(std::string(line.text(), line.size()));
}

void kosstream(char const* format, int value) {
    if (!bsock) {
        return;
    }
    char text[kLineSize];
    if (std::snprintf(text, sizeof text, format, value) >= static_cast<int>(sizeof text)) {
        std::abort();  // an item that was cut would be a wrong result
    }
    send_string += text;
    send_string += ';';
}

int kosstream_send() {
    if (!bsock) {
        return -1;
    }
    send_string += kEndMark;
    int const sent = p_client_socket->write_data(send_string);
    send_string.clear();
    return sent;
}
