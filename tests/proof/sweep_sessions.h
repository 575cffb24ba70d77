// The sessions of the fault sweep, which together visit every key of every menu.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/support/console_session.h"

namespace proof {

// What one side does, and what it waits for.
struct Step {
    enum class Kind {
        type,     // the operator types the text
        connect,  // the client connects
        send,     // the client sends the text
        wait,     // until the console has printed the text
        control,  // a command to the device
    };
    Kind kind;
    std::string text;
};

// Who leaves the console at the end, from the menu where the steps have led.
enum class Exit {
    operator_x,    // the operator, by 'x'
    operator_0,    // the operator, by '0'
    by_itself,     // nobody, it ends when the steps are done
    client_first,  // the client leaves the main menu by 'x', then the operator ends socket mode by 'x'
};

struct Session {
    std::string name;
    support::SessionOptions options;
    std::vector<Step> steps;
    Exit exit = Exit::operator_x;
    bool twin = false;  // of a session in real time, for the faults that need a stepped clock
};

std::vector<Session> const& sweep_sessions();

bool has_client(Session const& session);

// Plays a session with its console, once.
class Player {
public:
    Player(Session const& session, support::ConsoleSession& console) : session_(session), console_(console) {}

    // Plays the steps, leaves the console and waits for its end; its exit status. Throws as ConsoleSession does.
    int play();

    // All that either side said.
    std::string const& typed() const { return typed_; }
    std::string const& sent() const { return sent_; }
    // All that the client got; to be asked once, after play().
    std::string received();

private:
    void play(Step const& step);
    void leave();
    void type(std::string const& text);
    void send(std::string const& text);

    Session const& session_;
    support::ConsoleSession& console_;
    std::unique_ptr<support::StationClient> client_;
    std::string typed_;
    std::string sent_;
};

}  // namespace proof
