// Standard input: every option, number and word that is typed at the terminal is read here.
#include "app/terminal_input.h"

#include <chrono>
#include <iostream>
#include <mutex>
#include <thread>

#include "app/no_answer.h"
#include "app/terminal_turn.h"
#include "app/typed_characters.h"
#include "app/typed_numbers.h"

namespace {

constexpr auto kWaitAtEndOfInput = std::chrono::milliseconds(20);  // 50 redisplays a second

struct terminal {
    std::mutex mutex;  // held through each read of a menu; guards the rest
    typed_characters characters;
    terminal_turn turn;
};

// Never destroyed: exit() may be called while another thread waits here.
terminal& the_terminal() {
    static terminal* const instance = new terminal;
    return *instance;
}

bool is_space(typed_event const& event) {
    return event.kind == typed_event::character && ::is_space(event.c);
}

// One read of a menu. White space before what it reads is skipped.
class menu_read {
public:
    menu_read() : lock_(the_terminal().mutex) {
        the_terminal().turn.take_for_a_menu();
        std::cout << std::flush;
        next_ = characters_.peek();
        while (is_space(next_)) {
            advance();
        }
    }

    // One character, or what comes instead.
    typed_event take() {
        if (next_.kind == typed_event::character) {
            characters_.drop();
        }
        return next_;
    }

    // The characters that `wanted` takes, up to the first that it refuses. Throws where the answer never comes.
    template <typename Wanted>
    void take_answer(Wanted wanted) {
        if (next_.kind != typed_event::character) {
            throw no_answer();
        }
        while (next_.kind == typed_event::character && wanted(next_.c)) {
            advance();
        }
        require_client();
    }

    void drop_line() {
        while (next_.kind == typed_event::character && next_.c != '\n') {
            advance();
        }
        take();
        require_client();
    }

private:
    void advance() {
        characters_.drop();
        next_ = characters_.peek();
    }

    // What a client's end cuts off is not the whole answer.
    void require_client() const {
        if (next_.kind == typed_event::client_gone) {
            throw no_answer();
        }
    }

    std::unique_lock<std::mutex> lock_;
    typed_characters& characters_ = the_terminal().characters;
    typed_event next_{typed_event::nothing_yet};
};

template <typename Typed, typename Number>
void read_typed(Number& value) {
    menu_read input;
    Typed typed;
    input.take_answer([&typed](char c) { return typed.take(c); });
    if (auto const number = typed.value()) {
        value = *number;
    } else {
        input.drop_line();
    }
}

// For the local menu: the next character behind white space, or what comes instead.
typed_event take_at_once(typed_characters& characters) {
    typed_event event = characters.peek_at_once();
    while (is_space(event)) {
        characters.drop();
        event = characters.peek_at_once();
    }
    if (event.kind == typed_event::character) {
        characters.drop();
    }
    return event;
}

// Makes the event the option, Ctrl-D NUL; false where the input has ended.
bool take_option(typed_event const& event, char& option) {
    bool const is_option = event.kind == typed_event::character || event.kind == typed_event::control_d;
    if (is_option) {
        option = event.c;
    }
    return is_option;
}

}  // namespace

void read_option(char& option) {
    if (!take_option(menu_read().take(), option)) {
        std::this_thread::sleep_for(kWaitAtEndOfInput);
    }
}

void read_number(int& value) {
    read_typed<typed_integer<int>>(value);
}

void read_number(unsigned int& value) {
    read_typed<typed_integer<unsigned int>>(value);
}

void read_number(float& value) {
    read_typed<typed_float>(value);
}

void read_scanned_number(float& value) {
    read_typed<scanned_float>(value);
}

void read_word(std::string& word) {
    word.clear();
    menu_read().take_answer([&word](char c) {
        bool const wanted = !is_space(c);
        if (wanted) {
            word += c;
        }
        return wanted;
    });
}

bool read_local_option(char& option) {
    std::cout << std::flush;
    terminal& input = the_terminal();
    while (true) {
        std::unique_lock<std::mutex> lock(input.mutex);
        bool const menus_turn = input.turn.is_the_menus();
        typed_event const event = menus_turn ? typed_event{typed_event::nothing_yet} : take_at_once(input.characters);
        lock.unlock();
        if (event.kind != typed_event::nothing_yet) {
            return take_option(event, option);
        }
        input.turn.wait(menus_turn);
    }
}

void release_terminal() {
    std::lock_guard<std::mutex> const lock(the_terminal().mutex);
    the_terminal().turn.give_back();
}

void wait_for_client(int descriptor) {
    std::lock_guard<std::mutex> const lock(the_terminal().mutex);
    if (the_terminal().turn.is_the_menus() && !the_terminal().characters.readable_before_control_d(descriptor)) {
        throw no_answer();
    }
}

void watch_connection(int descriptor) {
    std::lock_guard<std::mutex> const lock(the_terminal().mutex);
    the_terminal().characters.watch(descriptor);
}
