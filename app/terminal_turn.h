// Whose turn at the terminal it is in socket mode: a menu's that the client is in, or the local menu's.
#pragma once

// To be used under the lock of the terminal, but for wait(). Lives as long as the process.
class terminal_turn {
public:
    terminal_turn();
    terminal_turn(terminal_turn const&) = delete;
    terminal_turn& operator=(terminal_turn const&) = delete;

    bool is_the_menus() const { return menus_; }
    void take_for_a_menu() { menus_ = true; }
    void give_back();

    // For the local menu: waits until the menus gave the terminal back and, unless it was theirs, for typed text. A
    // menu may have read that text, and given back what it left of it, before this wait saw it.
    void wait(bool was_the_menus) const;

private:
    bool menus_ = false;
    int const given_back_;  // an event
};
