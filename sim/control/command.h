// The control grammar: one-line commands, each a verb and its words.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "sim/device/device.h"

namespace sim {

using Words = std::vector<std::string>;

// Body lines, each with its line end, or the message of an error, one line without line end.
struct Reply {
    bool ok;
    std::string text;

    static Reply done(std::string body = "") { return {true, std::move(body)}; }
    static Reply error(std::string message) { return {false, std::move(message)}; }
    // Done when there is no error.
    static Reply of(Error const& error_message) { return {error_message.empty(), error_message}; }
};

// Who gave the command.
struct Caller {
    Device& device;
    // Sends the journal to the caller from now on; empty where there is no connection to send it on.
    std::function<void()> follow_journal;
};

struct Verb {
    // The handler of a locked verb runs with the device's lock held and its models brought up to the present; the
    // others lock for themselves.
    enum class Locking { locked, unlocked };

    std::string name;
    std::string usage;  // all of its forms, one a line, without line end
    std::string help;   // what it does, one line
    // `words` without the verb. A bad command answers one clear line and changes nothing.
    std::function<Reply(Caller const& caller, Words const& words)> run;
    Locking locking = Locking::locked;
};

class Commands {
public:
    void add(Verb verb);
    // A line without words, or whose first word begins with #, does nothing.
    Reply run(Caller const& caller, std::string_view line) const;
    // The usage of all verbs.
    std::string help() const;

private:
    std::vector<Verb> verbs_;
};

// All commands of the device.
Commands const& device_commands();

// The usage of `verb` as an error message.
Reply usage_error(std::string const& usage);
// The error for a `word` that parse_duration refuses.
Reply duration_error(std::string const& word);

// Words are separated by blanks; between double quotes blanks count and \" and \\ stand for " and \. False when a
// quote is not closed.
bool split_words(std::string_view line, Words& words);
// The line that split_words takes apart into `words`.
std::string join_words(Words const& words);

}  // namespace sim
