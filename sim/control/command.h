// The control grammar: one-line commands, each a verb and its words.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
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

// The programs that use the device, for the commands that speak of them; a line each, without line end.
class ProgramList {
public:
    virtual ~ProgramList() = default;
    virtual std::vector<std::string> connected() = 0;
    // Those whose callbacks a step of the clock waits for.
    virtual std::vector<std::string> waited_for() = 0;
};

// How lines are sent to a client that follows something.
struct StreamForm {
    bool json = false;
    std::optional<std::chrono::milliseconds> every{};  // so often by the host's clock; nothing: as it happens
};

// Who gave the command.
struct Caller {
    Device& device;
    // Lines for the caller while a command goes on; empty: nobody is told.
    std::function<void(std::string const& line)> tell{};
    // Sends the journal to the caller from now on; empty where there is no connection to send it on.
    std::function<void(StreamForm const& form)> follow_journal{};
    ProgramList* programs = nullptr;  // null: there are none
    // Sends the changes of these properties to the caller from now on; empty where there is no connection.
    std::function<void(std::vector<std::string> const& prefixes, StreamForm const& form)> watch{};
    // Whether he has gone; empty where there is nobody who could wait.
    std::function<bool()> gone{};
    bool rehearses = false;  // what programs do is not there to be expected
};

struct Verb {
    std::string name;
    std::string usage;  // all of its forms, one a line, without line end
    std::string help;   // what it does, one line
    // `words` without the verb. A bad command answers one clear line and changes nothing.
    std::function<Reply(Device::Access& device, Words const& words)> run;
    // In place of `run`, for a verb that takes time or sets the clock: it has the device for itself when it needs it.
    std::function<Reply(Caller const& caller, Words const& words)> run_unlocked{};
    bool only_looks = false;  // changes nothing, so the journal does not have it
    std::string details{};    // what else there is to know, lines of at most 76 characters, without the last line end
};

class Commands {
public:
    void add(Verb verb);
    // A line without words, or whose first word begins with #, does nothing.
    Reply run(Caller const& caller, std::string_view line) const;
    // The usage of all verbs.
    std::string help() const;
    // All that is to be said of one of them. Where there is none, the error may suggest one, or one of `others`.
    Reply help(std::string const& name, std::vector<std::string> const& others = {}) const;
    bool has(std::string const& name) const { return find(name) != nullptr; }
    // What is said of a command that there is not.
    Reply unknown(std::string const& name, std::vector<std::string> const& others = {}) const;

private:
    Verb const* find(std::string const& name) const;

    std::vector<Verb> verbs_;
};

// All commands of the device.
Commands const& device_commands();

// The usage of `verb` as an error message.
Reply usage_error(std::string const& usage);
// The error for a `word` that parse_duration refuses.
Reply duration_error(std::string const& word);

// Takes "--json" and "--every DURATION" off the front of `words`; an error for what else begins with "--".
Error take_stream_form(Words& words, std::string const& usage, StreamForm& form);

// Words are separated by blanks; between double quotes blanks count and \" and \\ stand for " and \. False when a
// quote is not closed.
bool split_words(std::string_view line, Words& words);
// The line that split_words takes apart into `words`.
std::string join_words(Words const& words);

}  // namespace sim
