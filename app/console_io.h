// Options, numbers and results, exchanged with the terminal or, in socket mode, with the TCP client.
#pragma once

#include <cstddef>
#include <string>

class socket_tcp;

// Human text always goes to standard output. What is declared here adds the line protocol of socket mode
// (docs/line-protocol.md). The globals need no lock: the start and the join of the client's menu thread order
// every access.

// Size of the buffer that takes one line of the client; a longer line is cut to fit, its end dropped.
constexpr std::size_t kLineSize = 1024;

extern bool bsock;                   // socket mode is active
extern std::string send_string;      // the reply being built
extern socket_tcp* p_client_socket;  // the connected client, or null

// One option character, from the terminal (as read_option) or as the first of the client's next line.
// When the client has gone it becomes kExitKey, so that every menu unwinds through its own exit. What was printed of
// the line is not flushed: every menu echoes its option next, and that is.
void kogetchar(char& option);

// One number, from the terminal (as read_number) or from the client's next line, scanned as by "%d", the one format,
// and echoed to the client as it was read. The value stays where nothing converts. Throws no_answer where the client
// has gone; and at Ctrl-D, where the menu reads its options from the terminal.
void koscanf(char const* format, int& value);

// Adds one item to the reply. Nothing happens in terminal mode.
void kosstream(char const* format, int value);

// Ends the reply and sends it: the bytes sent, or -1. In terminal mode -1, and nothing is sent.
int kosstream_send();

// Gives the terminal to the local menu and reads one line that is not empty into `buffer` of kLineSize characters.
// Blocks. What is printed of the line is not flushed. False, and the buffer holds an empty line, when the client has
// gone.
bool sckt_read_line(char* buffer);

// A new client: its lines count.
void admit_client();
// From now on the client counts as gone, whatever lines of it still wait; a read that is pending ends with the
// connection. From any thread.
void dismiss_client();

// Sends the text as it is.
void sckt_write_line(std::string text);
