// Socket mode: one TCP client drives the console.
#include "net/socket_console.h"

#include <csignal>
#include <iostream>
#include <thread>

#include "app/console_io.h"
#include "app/console_main.h"
#include "app/terminal_input.h"
#include "net/socket.h"

namespace {

constexpr unsigned short kPort = 32360;

constexpr char const* kMenu =
    "\t\t  Socket test menu     \n"
    "\t\t  x: Return to main     \n"
    "\n\n   Please enter your option: ";

// A send to a client that has gone must not kill the process.
class broken_pipe_ignored {
public:
    broken_pipe_ignored() : previous_(std::signal(SIGPIPE, SIG_IGN)) {}
    ~broken_pipe_ignored() { std::signal(SIGPIPE, previous_); }
    broken_pipe_ignored(broken_pipe_ignored const&) = delete;
    broken_pipe_ignored& operator=(broken_pipe_ignored const&) = delete;

private:
    void (*previous_)(int);
};

void serve_client() {
    console_main(1, nullptr);
    release_terminal();
}

// The local menu, once it is shown. True when the operator ends socket mode, false at the end of the terminal's input.
bool operator_ends_socket_mode() {
    char option = '\0';
    while (read_local_option(option)) {
        std::cout << "\t\t Your Option = " << option << std::endl;
        if (option == kExitKey) {
            return true;
        }
        std::cout << kMenu;
    }
    return false;
}

}  // namespace

int test_socket() {
    std::cout << "int test_socket()" << std::endl;
    if (bsock) {
        return -1;
    }
    bsock = true;
    server_tcp const server("0.0.0.0", kPort);
    socket_tcp client = server.accept();
    p_client_socket = &client;
    broken_pipe_ignored const ignored;
    admit_client();
    watch_connection(client.descriptor());
    release_terminal();
    std::cout << kMenu << std::flush;  // before the other thread prints too, and into the midst of a line
    std::thread menu_thread(serve_client);
    if (operator_ends_socket_mode()) {
        dismiss_client();
        client.shutdown();  // the menu thread's pending read returns, and its menus unwind
    }
    menu_thread.join();
    watch_connection(-1);
    p_client_socket = nullptr;
    bsock = false;
    client.close();  // kept: destruction then closes descriptor 0, standard input
    return 0;
}
