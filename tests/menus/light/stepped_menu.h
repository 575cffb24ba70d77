// A visit of one menu in which the time is stepped between the keys.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tests/support/menus.h"

namespace light {

class SteppedMenuTest : public testing::Test {
protected:
    explicit SteppedMenuTest(menus::Menu const& menu) : menu_(menu) {
        session.type(menu.entry_keys());
        session.wait_for(screens::main_menu(menu.key));
    }

    // The console goes its own way out.
    void TearDown() override {
        session.type(menu_.exit_keys());
        EXPECT_EQ(session.wait_for_exit(), 0);
    }

    // Answers the menu with the key and waits for what that prints, up to the menu that follows.
    void expect(char key, std::string const& typed, std::string const& printed) {
        session.type(key + typed);
        session.wait_for(menu_.echo + key + "\n" + printed + menu_.prompt());
    }

    support::ConsoleSession session{stepped()};

private:
    menus::Menu const menu_;

    static support::SessionOptions stepped() {
        support::SessionOptions options;
        options.clock = "stepped";
        return options;
    }
};

}  // namespace light
