// Standard input as characters, and what comes instead of one.
#include "app/typed_characters.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

typed_event typed_characters::peek() {
    while (true) {
        if (connection_ended()) {
            return {typed_event::client_gone};
        }
        if (next_ < text_.size()) {
            return {typed_event::character, text_[next_]};
        }
        if (!is_standard_input()) {
            return {typed_event::ended};
        }
        pollfd waited[] = {{STDIN_FILENO, POLLIN, 0}, {connection_, POLLRDHUP, 0}};
        if (::poll(waited, 2, -1) > 0 && waited[0].revents != 0) {
            typed_event const end = fill();
            if (end.kind != typed_event::nothing_yet) {
                return end;
            }
        }
    }
}

typed_event typed_characters::peek_at_once() {
    if (next_ == text_.size()) {
        if (!is_standard_input()) {
            return {typed_event::ended};
        }
        pollfd waited{STDIN_FILENO, POLLIN, 0};
        typed_event const end = ::poll(&waited, 1, 0) > 0 ? fill() : typed_event{typed_event::nothing_yet};
        if (next_ == text_.size()) {
            return end;
        }
    }
    return {typed_event::character, text_[next_]};
}

bool typed_characters::readable_before_control_d(int descriptor) {
    // Only a terminal has a Ctrl-D; whatever else standard input is may wait.
    bool listening = is_standard_input() && ::isatty(STDIN_FILENO);
    while (true) {
        pollfd waited[] = {{descriptor, POLLIN, 0}, {listening ? STDIN_FILENO : -1, POLLIN, 0}};
        bool const ready = ::poll(waited, 2, -1) > 0;
        if (ready && waited[1].revents != 0) {  // first: who types Ctrl-D wants no answer to count any more
            typed_event const end = fill();
            if (end.kind == typed_event::control_d) {
                return false;
            }
            listening = end.kind != typed_event::ended;
        }
        if (ready && waited[0].revents != 0) {
            return true;
        }
    }
}

typed_event typed_characters::fill() {
    char buffer[1024];
    ssize_t const count = ::read(STDIN_FILENO, buffer, sizeof buffer);
    if (count > 0) {
        text_.erase(0, next_);
        next_ = 0;
        text_.append(buffer, static_cast<std::size_t>(count));
        return {typed_event::nothing_yet};
    }
    if (count == -1 && (errno == EINTR || errno == EAGAIN)) {
        return {typed_event::nothing_yet};
    }
    return {count == 0 && ::isatty(STDIN_FILENO) ? typed_event::control_d : typed_event::ended};
}

// The end of socket mode closes descriptor 0; whatever is opened there later is not the terminal.
bool typed_characters::is_standard_input() {
    struct stat now {};
    if (::fstat(STDIN_FILENO, &now) == -1) {
        return false;
    }
    if (!at_start_) {
        at_start_ = now;
    }
    return now.st_dev == at_start_->st_dev && now.st_ino == at_start_->st_ino;
}

bool typed_characters::connection_ended() const {
    if (connection_ == -1) {
        return false;
    }
    pollfd waited{connection_, POLLRDHUP, 0};
    return ::poll(&waited, 1, 0) > 0;
}
