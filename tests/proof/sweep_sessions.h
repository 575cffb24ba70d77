// The sessions of the fault sweep, which together visit every key of every menu.
#pragma once

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
    client_first,  // the client leaves the main menu by 'x', then the operator ends socket mode by 'x'
};

struct Session {
    std::string name;
    support::SessionOptions options;
    std::vector<Step> steps;
    Exit exit = Exit::operator_x;
};

std::vector<Session> const& sweep_sessions();

}  // namespace proof
