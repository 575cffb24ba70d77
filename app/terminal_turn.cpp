// Whose turn at the terminal it is in socket mode: a menu's that the client is in, or the local menu's.
#include "app/terminal_turn.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

terminal_turn::terminal_turn() : given_back_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void terminal_turn::give_back() {
    if (menus_) {
        menus_ = false;
        ::eventfd_write(given_back_, 1);
    }
}

void terminal_turn::wait(bool was_the_menus) const {
    pollfd waited[] = {{given_back_, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
    ::poll(waited, was_the_menus ? 1 : 2, -1);
    eventfd_t ignored;
    ::eventfd_read(given_back_, &ignored);
}
