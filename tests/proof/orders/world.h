// What the console of a run finds around it: a terminal, a client, and an operating system that keeps to the turns.
#pragma once

#include <string>

namespace orders {

// The turn in which the console ends the connection.
constexpr char const* kShutsDown = "shuts the connection down";

// Before another thread takes part.
void make_world();

// For the operator: types at the terminal, character by character.
void type(std::string const& text);
// Waits until the console has shown the text in one piece, behind where the caller's last wait found its own.
void wait_for_output(std::string const& text);
// Waits until the client's menu waits for what is typed. Its prompt may be seen a moment before, where another thread
// flushes the output; what is typed then is the local menu's.
void wait_for_question();
// Ends the line, types x and waits for what comes of it: whether the console now only waits for its client's menu to
// end.
bool leave_socket_mode();

// For the client.
void connect_client();
void send_line(std::string const& text);
void receive_reply();
void hang_up();

}  // namespace orders
