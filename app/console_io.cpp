// Options, numbers and results, exchanged with the terminal or, in socket mode, with the TCP client.
#include "app/console_io.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "app/terminal_input.h"
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
        count = p_client_socket->read_data(&byte, 1);
    } while (count == -1 && errno == EINTR);
    return count == 1 && !client_dismissed;
}

// A line while it is read. What does not fit is dropped.
class Line {
public:
    explicit Line(char* buffer) : buffer_(buffer) { buffer_[0] = '\0'; }

    bool empty() const { return size_ == 0; }

    void store(char c) {
        if (size_ < kLineSize - 1) {
            buffer_[size_++] = c;
            buffer_[size_] = '\0';
        }
    }

    void clear() {
        size_ = 0;
        buffer_[0] = '\0';
    }

private:
    char* buffer_;
    std::size_t size_ = 0;
};

// Reads up to the end of a line that is not empty; false where the stream ends first.
bool collect(Line& line) {
    char c;
    while (read_byte(c)) {
        if (c == kCarriageReturn) {
            continue;
        }
        if (c == kLineFeed) {
            if (!line.empty()) {
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
                if (!line.empty()) {
                    return true;
                }
                continue;
            }
        }
        line.store(c);  // after a backslash any character at all, an end of line included
    }
    return false;
}

}  // namespace

void dismiss_client(bool dismissed) {
    client_dismissed = dismissed;
}

bool sckt_read_line(char* buffer) {
    release_terminal();
    std::cout << std::flush;
    Line line(buffer);
    if (!collect(line)) {
        line.clear();
        return false;
    }
    std::cout << "ReadLine: " << buffer << std::endl;
    return true;
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

void koscanf(char const* format, int& value) {
    if (!bsock) {
        read_number(value);
        return;
    }
    char line[kLineSize];
    if (sckt_read_line(line)) {
        std::sscanf(line, format, &value);
        p_client_socket->write_data(line);
    }
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
