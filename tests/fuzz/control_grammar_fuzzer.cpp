// Fuzzer of the control grammar: any lines, given to a device of their own as commands.
//
// A line answered with an error must have changed nothing; replies must have the form that clients rely on.
#include <algorithm>
#include <cctype>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sim/control/command.h"
#include "sim/device/device.h"
#include "tests/support/require.h"

namespace {

// Tells whether a text is one JSON value, by the grammar alone.
class JsonReader {
public:
    explicit JsonReader(std::string_view text) : rest_(text) {}

    bool reads_whole_text() { return value() && (skip_blanks(), rest_.empty()); }

private:
    bool value() {
        skip_blanks();
        if (take('{')) {
            return members('}', [this] { return string() && take(':') && value(); });
        }
        if (take('[')) {
            return members(']', [this] { return value(); });
        }
        return take_word("true") || take_word("false") || take_word("null") || (starts_with('"') ? string() : number());
    }

    template <typename Member>
    bool members(char end, Member member) {
        if (take(end)) {
            return true;
        }
        do {
            if (!member()) {
                return false;
            }
        } while (take(','));
        return take(end);
    }

    bool string() {
        if (!take('"')) {
            return false;
        }
        while (!rest_.empty() && rest_[0] != '"') {
            if (static_cast<unsigned char>(rest_[0]) < ' ' || (rest_[0] == '\\' && !escape())) {
                return false;
            }
            rest_.remove_prefix(1);
        }
        return take('"');
    }

    // Leaves the last character of the escape for the caller to take.
    bool escape() {
        rest_.remove_prefix(1);
        if (starts_with('u')) {
            for (int digit = 0; digit < 4; ++digit) {
                rest_.remove_prefix(1);
                if (rest_.empty() || std::isxdigit(static_cast<unsigned char>(rest_[0])) == 0) {
                    return false;
                }
            }
            return true;
        }
        return !rest_.empty() && std::string_view("\"\\/bfnrt").find(rest_[0]) != std::string_view::npos;
    }

    bool number() {
        take('-', false);
        if (!take('0', false) && !digits()) {
            return false;
        }
        if (take('.', false) && !digits()) {
            return false;
        }
        if (take('e', false) || take('E', false)) {
            take('+', false) || take('-', false);
            return digits();
        }
        return true;
    }

    bool digits() {
        std::size_t const count = std::min(rest_.find_first_not_of("0123456789"), rest_.size());
        rest_.remove_prefix(count);
        return count > 0;
    }

    bool starts_with(char c) const { return !rest_.empty() && rest_[0] == c; }

    bool take(char c, bool after_blanks = true) {
        if (after_blanks) {
            skip_blanks();
        }
        bool const found = starts_with(c);
        rest_.remove_prefix(found ? 1 : 0);
        return found;
    }

    bool take_word(std::string_view word) {
        bool const found = rest_.substr(0, word.size()) == word;
        rest_.remove_prefix(found ? word.size() : 0);
        return found;
    }

    void skip_blanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r\n"), rest_.size())); }

    std::string_view rest_;
};

class Session {
public:
    Session() { state_ = state(); }

    void give(std::string const& line) {
        sim::Reply const reply = sim::device_commands().run({device_, {}, [](sim::StreamForm const&) {}}, line);
        // What came by itself later would look like a change.
        device_.timeline.run_stepped();
        device_.timeline.step(sim::Duration(0));
        State const before = std::exchange(state_, state());
        if (reply.ok) {
            require(reply.text.empty() || reply.text.back() == '\n', "a body is whole lines");
            return;
        }
        require(!reply.text.empty() && reply.text.find('\n') == std::string::npos, "an error is one line");
        require_same(before, line);
    }

    void check_json() {
        sim::Reply const reply = sim::device_commands().run({device_}, "show --json");
        require(reply.ok && JsonReader(reply.text).reads_whole_text(), "show --json answers JSON");
    }

private:
    // All that commands can change.
    struct State {
        std::vector<sim::Value> properties;
        std::string faults;
        std::string nodes;
    };

    State state() {
        auto const device = device_.access();
        State state{{}, device->faults.list(), device->nodes.list()};
        for (auto const& [name, property] : device->properties.all()) {
            state.properties.push_back(property.get());
        }
        return state;
    }

    void require_same(State const& before, std::string const& line) {
        auto value = state_.properties.begin();
        auto value_before = before.properties.begin();
        auto const device = device_.access();
        for (auto const& [name, property] : device->properties.all()) {
            if (*value != *value_before) {
                require_equal(sim::value_text(*value), sim::value_text(*value_before),
                              (name + changed_by(line)).c_str());
            }
            ++value;
            ++value_before;
        }
        require_equal(state_.faults, before.faults, ("fault rules" + changed_by(line)).c_str());
        require_equal(state_.nodes, before.nodes, ("nodes" + changed_by(line)).c_str());
    }

    static std::string changed_by(std::string const& line) { return " after the refused command " + line; }

    sim::Device device_{std::make_unique<sim::MemoryFileSystem>()};
    State state_;
};

void check_words(std::string const& line) {
    sim::Words words;
    if (!sim::split_words(line, words)) {
        return;
    }
    sim::Words again;
    require(sim::split_words(sim::join_words(words), again), "joined words can be split");
    require(words == again, "splitting takes apart what joining made");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::istringstream lines(std::string(reinterpret_cast<char const*>(data), size));
    Session session;
    for (std::string line; std::getline(lines, line);) {
        check_words(line);
        session.give(line);
    }
    session.check_json();
    return 0;
}
