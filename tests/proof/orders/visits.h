// The runs whose orders are tried: a menu that has callbacks, visited in each of the ways in which it can be left.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/proof/orders/record.h"
#include "tests/support/menus.h"

namespace orders {

enum class Way {
    terminal,         // the operator opens the menu, works and leaves it
    client,           // in socket mode the client opens it; who works it leaves it; then both leave the console
    client_goes,      // the client hangs up while the menu is worked
    operator_leaves,  // the operator ends socket mode while the menu is worked
};
constexpr char const* kWays[] = {"terminal", "client", "client-goes", "operator-leaves"};

struct Visit {
    menus::Menu const& menu;
    std::string keys;  // what is done in the menu, without its exit key
    Way way;

    // "GyroAlarm client-goes"
    std::string name() const { return std::string(menu.name) + " " + kWays[static_cast<int>(way)]; }
    // Whether each thread does the same in each order.
    bool is_settled() const { return way == Way::terminal || way == Way::client; }
};

std::vector<Visit> every_visit();

// Runs the console in this process, which it ends: with status 0 where all went as it should. Where no callbacks come,
// it is the run that the others are compared with.
[[noreturn]] void run(Visit const& visit, std::uint64_t seed, bool with_callbacks, Record& record);

}  // namespace orders
