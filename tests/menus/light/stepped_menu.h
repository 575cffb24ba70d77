// A visit of one menu in which the time is stepped between the keys.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tests/support/console_session.h"
#include "tests/support/screens/shell.h"

namespace light {

class SteppedMenuTest : public testing::Test {
protected:
    explicit SteppedMenuTest(char main_key) {
        session.type({&main_key, 1});
        session.wait_for(screens::main_menu(main_key));
    }

    // The console goes its own way out.
    void TearDown() override {
        session.type("xx");
        EXPECT_EQ(session.wait_for_exit(), 0);
    }

    // Answers the menu with the key and waits for what that prints, up to the menu that follows.
    void expect(char key, std::string const& typed, std::string const& printed) {
        session.type(key + typed);
        session.wait_for(std::string("Your Option = ") + key + "\n" + printed + screens::kTopUsage);
    }

    support::ConsoleSession session{stepped()};

private:
    static support::SessionOptions stepped() {
        support::SessionOptions options;
        options.clock = "stepped";
        return options;
    }
};

}  // namespace light
