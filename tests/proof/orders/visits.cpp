// The runs whose orders are tried: a menu that has callbacks, visited in each of the ways in which it can be left.
#include "tests/proof/orders/visits.h"

#include <cstdlib>
#include <functional>
#include <utility>

#include "app/console_main.h"
#include "app/standard_output.h"
#include "menus/motion/alarm_old.h"
#include "tests/proof/orders/library.h"
#include "tests/proof/orders/threads.h"
#include "tests/proof/orders/turns.h"
#include "tests/proof/orders/unseen.h"
#include "tests/proof/orders/world.h"

namespace orders {

namespace {

constexpr unsigned int kMostCallbacks = 6;  // of one object: enough for each to meet each thing that the menu does
constexpr std::uint64_t kLongestStay = 60;  // turns of who breaks a visit off, in which the menu is opened and worked

void wait_for_the_menus_end() {
    wait_until("waits for the menu's thread to end", [] { return has_left(kMenuThread); });
}

void stay(Random& random) {
    for (std::uint64_t turns = random.below(kLongestStay); turns > 0; --turns) {
        take_turn("stays");
    }
}

void operate(Visit const& visit, Random random) {
    menus::Menu const& menu = visit.menu;
    bool const works = !menu.is(menus::client_driven);
    if (visit.way == Way::terminal) {
        type(menu.entry_keys() + visit.keys + menu.exit_keys());
        return;
    }
    if (visit.way == Way::client) {
        if (works) {
            wait_for_output(menu.prompt());
            wait_for_question();
            type(visit.keys + "x");
        }
        wait_for_the_menus_end();
        type("x");
        return;
    }
    if (visit.way == Way::client_goes || random.below(2) == 0) {
        wait_for_output(menu.prompt());
    } else {
        stay(random);  // and leaves while the menu is opened
    }
    type(works ? visit.keys.substr(0, random.below(visit.keys.size() + 1)) : "");
    while (!leave_socket_mode()) {  // the menu had the terminal, and has left it
    }
}

void drive(Visit const& visit, Random random) {
    menus::Menu const& menu = visit.menu;
    connect_client();
    send_line(menu.entry_keys());
    if (visit.way == Way::client_goes) {
        wait_for_output(menu.prompt());
    }
    if (menu.is(menus::client_driven)) {
        for (char const key : visit.keys) {
            send_line(std::string(1, key));
            if (visit.way == Way::client) {
                receive_reply();
            }
        }
    }
    if (visit.way == Way::client) {
        send_line(menu.is(menus::client_driven) ? "x\nx" : "x");
    }
    if (visit.way == Way::client_goes) {
        stay(random);
        hang_up();
    }
}

// Somebody whose memory is not the console's.
void start_outside(std::string const& name, std::function<void()> act) {
    start_thread(name, [act = std::move(act)] {
        Unseen const unseen;
        act();
    }).detach();
}

void enter_console(Visit const& visit) {
    if (visit.menu.key == '\0') {
        test_alarm_old();
        return;
    }
    char program[] = "r47-console";
    char word[] = "socket";
    char* arguments[] = {program, word, nullptr};
    console_main(visit.way == Way::terminal ? 1 : 2, arguments);
}

}  // namespace

std::vector<Visit> every_visit() {
    std::vector<Visit> visits;
    for (Way const way : {Way::terminal, Way::client, Way::client_goes, Way::operator_leaves}) {
        visits.push_back({menus::kAlarm, "ta7.5\ntb1\n", way});
        visits.push_back({menus::kDelegate, "tttt", way});
        visits.push_back({menus::kDelegateAndAlarm, "tttt", way});
        visits.push_back({menus::kButton, "rrr", way});
    }
    visits.push_back({menus::kLegacyAlarm, "sitts", Way::terminal});
    return visits;
}

void run(Visit const& visit, std::uint64_t seed, bool with_callbacks, Record& record) {
    std::size_t const before = living_objects();  // those in static storage
    begin_turns(seed, record);
    begin_library(seed, with_callbacks ? kMostCallbacks : 0);
    make_world();
    set_up_standard_output();
    start_outside("operator", [&visit, seed] { operate(visit, Random(seed)); });
    if (visit.way != Way::terminal) {
        start_outside("client", [&visit, seed] { drive(visit, Random(seed)); });
    }
    enter_console(visit);
    if (living_objects() != before) {
        fail_run("leaves objects behind");
    }
    std::exit(EXIT_SUCCESS);
}

}  // namespace orders
