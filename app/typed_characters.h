// Standard input as characters, and what comes instead of one.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

struct typed_event {
    enum event_kind {
        character,
        nothing_yet,
        control_d,    // on a terminal; more may be typed behind it
        client_gone,  // whose menu reads
        ended,
    };
    event_kind kind;
    char c = '\0';  // NUL where it is no character
};

// Not for several threads at once. A character stays the next one until drop(). Of the other events nothing is kept:
// the next look tries again.
class typed_characters {
public:
    // From now on peek() ends as soon as the peer of this connected socket has gone. -1: of none.
    void watch(int connection) { connection_ = connection; }

    // Blocks, and never answers nothing_yet.
    typed_event peek();
    // Does not block, and does not look at the connection.
    typed_event peek_at_once();
    void drop() { ++next_; }

    // Blocks until the descriptor can be read (true) or Ctrl-D is typed at the terminal (false). What else is typed
    // there meanwhile is kept for the reads that follow.
    bool readable_before_control_d(int descriptor);

private:
    // Takes what standard input has. Says nothing_yet where that is no end.
    typed_event fill();
    bool is_standard_input();
    bool connection_ended() const;

    int connection_ = -1;
    std::string text_;
    std::size_t next_ = 0;
    std::optional<struct stat> at_start_;
};
