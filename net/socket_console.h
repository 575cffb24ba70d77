// Socket mode: one TCP client drives the console.
#pragma once

// Listens on TCP port 32360 of all interfaces, serves one client's main menu on a thread of its own and shows a
// local menu at the terminal meanwhile. Blocks until the operator's 'x' there or, where the terminal's input has
// ended, until the client's menu has. Returns 0; -1 where socket mode is active already. Throws as server_tcp.
// Ending it closes standard input.
int test_socket();
