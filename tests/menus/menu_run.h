// Runs of one menu, key by key, and sessions of a client with the console.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/menus.h"
#include "tests/support/transcript.h"

namespace menus {

// One key of the menu: what is typed after it, what it prints, what it calls, what it prints on standard error.
struct Step {
    char key;
    std::string typed;
    std::string printed;
    Calls calls;
    std::string errors{};
};

// The transcript of a visit of the menu, which is answered with the steps and 'x'.
inline void expect_run(Menu const& menu, std::vector<Step> const& steps, support::SessionOptions const& options = {}) {
    std::string typed = menu.entry_keys();
    std::string printed;
    Calls calls;
    std::string errors;
    for (Step const& step : steps) {
        typed += step.key + step.typed;
        printed += menu.screen(step.key) + step.printed;
        calls.insert(calls.end(), step.calls.begin(), step.calls.end());
        errors += step.errors;
    }
    support::expect_transcript(options_for(menu, options), typed + menu.exit_keys(), output_of_visit(menu, printed),
                               calls_of_visit(menu, calls), errors);
}

// Each of the keys does nothing but show the menu again.
inline std::vector<Step> ignored(std::string const& keys) {
    std::vector<Step> steps;
    for (char const key : keys) {
        steps.push_back({key, "", "", {}});
    }
    return steps;
}

inline support::SessionOptions with_scenario(std::vector<std::string> const& scenario) {
    support::SessionOptions options;
    options.scenario = scenario;
    return options;
}

// What the module information commands print on standard error when the library fails.
inline std::string const kInformationError = "Failed read rev\n: Input/output error\n";

// The lines of the text that begin with `start`, each with its line end.
inline std::vector<std::string> lines_with(std::string const& start, std::string const& text) {
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t const next = text.find('\n', at) + 1;
        if (text.compare(at, start.size(), start) == 0) {
            lines.push_back(text.substr(at, next - at));
        }
        at = next == 0 ? text.size() : next;
    }
    return lines;
}

// The console in socket mode, with its client at the main menu.
class ClientTest : public testing::Test {
protected:
    ClientTest() { session.wait_for("****  Enter the Option ******\n"); }

    static support::SessionOptions socket_mode() {
        support::SessionOptions options;
        options.arguments = {"socket"};
        return options;
    }

    // The device check of the main menu: it sends what waits, with its own 0 behind it.
    void expect_waiting(std::string const& items) {
        client.send("A\n");
        EXPECT_EQ(client.receive_reply(), items + "0;\\n");
    }

    // A menu that reads the terminal prints the same, whatever is typed, while a client is connected.
    void expect_as_at_the_terminal(Menu const& menu, std::string const& typed) {
        std::string const alone = support::run_console(menu.entry_keys() + typed + menu.exit_keys()).output;
        std::string const before = screens::kStart + screens::main_menu(menu.key);
        std::string const after = screens::main_menu('x');
        ASSERT_GT(alone.size(), before.size() + after.size());
        std::string const printed = alone.substr(before.size(), alone.size() - before.size() - after.size());
        client.send(menu.entry_keys() + "\n");
        session.wait_for(printed.substr(0, printed.find("option: ") + 1));  // from here on the menu has the terminal
        session.type(typed + "x");
        session.wait_for(printed.substr(printed.find("option: ") + 1));
    }

    // The client leaves the main menu, then the operator the mode; the calls that were made.
    Calls end() {
        client.send("x\n");
        session.wait_for("Entered Option = x\n");
        session.type("x\n");
        EXPECT_EQ(session.wait_for_exit(), 0);
        EXPECT_EQ(session.errors(), "");
        return session.calls();
    }

    support::ConsoleSession session{socket_mode()};
    support::StationClient client;
};

}  // namespace menus
