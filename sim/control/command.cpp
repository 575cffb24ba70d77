// The control grammar: one-line commands, each a verb and its words.
#include "sim/control/command.h"

#include <algorithm>

#include "sim/control/verbs.h"
#include "sim/core/suggestion.h"
#include "sim/core/text.h"

namespace sim {

namespace {

bool is_blank(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

// Takes one word from `line` at `at`; false when a quote is not closed.
bool take_word(std::string_view line, std::size_t& at, std::string& word) {
    bool in_quotes = false;
    for (; at < line.size() && (in_quotes || !is_blank(line[at])); ++at) {
        char const c = line[at];
        if (c == '"') {
            in_quotes = !in_quotes;
        } else if (in_quotes && c == '\\' && at + 1 < line.size()) {
            word += line[++at];
        } else {
            word += c;
        }
    }
    return !in_quotes;
}

// Whether the command changes nothing: in every verb a form without words, or a list, is but a question.
bool only_looks(Verb const& verb, Words const& words) {
    return verb.only_looks || words.empty() || words.front() == "list";
}

void write(Device::Access const& device, bool looks, Reply const& reply, Record& record) {
    if (!looks && reply.ok) {
        record.took = device.now() - record.start;
        device->journal.write(record);
    }
}

}  // namespace

void Commands::add(Verb verb) {
    verbs_.push_back(std::move(verb));
}

Reply Commands::run(Caller const& caller, std::string_view line) const {
    Words words;
    if (!split_words(line, words)) {
        return Reply::error("a quote is not closed");
    }
    if (words.empty() || words.front().front() == '#') {
        return Reply::done();
    }
    Verb const* const verb = find(words.front());
    if (verb == nullptr) {
        return unknown(words.front());
    }
    words.erase(words.begin());
    bool const looks = only_looks(*verb, words);
    Record record;
    record.kind = RecordKind::command;
    record.text = printable(line);
    if (verb->run_unlocked) {
        record.start = caller.device.timeline.now();
        Reply reply = verb->run_unlocked(caller, words);
        auto const device = caller.device.access();
        write(device, looks, reply, record);
        return reply;
    }
    auto device = caller.device.access();
    record.start = device.now();
    Reply reply = verb->run(device, words);
    write(device, looks, reply, record);
    return reply;
}

std::string Commands::help() const {
    std::string help;
    for (Verb const& verb : verbs_) {
        help += verb.usage + "\n    " + verb.help + "\n";
    }
    return help;
}

Reply Commands::help(std::string const& name, std::vector<std::string> const& others) const {
    Verb const* const verb = find(name);
    if (verb == nullptr) {
        return unknown(name, others);
    }
    std::string const details = verb->details.empty() ? "" : "\n" + verb->details + "\n";
    return Reply::done(verb->usage + "\n    " + verb->help + "\n" + details);
}

Reply Commands::unknown(std::string const& name, std::vector<std::string> const& others) const {
    std::vector<std::string> names = others;
    for (Verb const& verb : verbs_) {
        names.push_back(verb.name);
    }
    return Reply::error("unknown command " + quoted(name) + did_you_mean(name, names, ": try help"));
}

Verb const* Commands::find(std::string const& name) const {
    auto const verb = std::find_if(verbs_.begin(), verbs_.end(), [&](Verb const& v) { return v.name == name; });
    return verb != verbs_.end() ? &*verb : nullptr;
}

Commands const& device_commands() {
    // Never destroyed: the library's threads may outlive the program's statics.
    static Commands const& commands = *[] {
        auto* all = new Commands;
        add_state_verbs(*all);
        add_observation_verbs(*all);
        add_fault_verbs(*all);
        add_node_verbs(*all);
        add_imaging_verbs(*all);
        add_motion_verbs(*all);
        add_ranging_verbs(*all);
        add_time_verbs(*all);
        add_program_verbs(*all);
        add_journal_verbs(*all);
        all->add({"help",
                  "help [COMMAND]",
                  "this list, or what there is to know of a command",
                  [all](Device::Access&, Words const& words) {
                      return words.size() > 1 ? usage_error("help [COMMAND]")
                             : words.empty()  ? Reply::done(all->help())
                                              : all->help(words.front());
                  },
                  {},
                  true});
        return all;
    }();
    return commands;
}

Reply usage_error(std::string const& usage) {
    std::string line = usage;
    for (std::size_t at = line.find('\n'); at != std::string::npos; at = line.find('\n', at)) {
        line.replace(at, 1, " | ");
    }
    return Reply::error("usage: " + line);
}

Reply duration_error(std::string const& word) {
    return Reply::error("bad duration " + word + ": as 3s, 250ms, 10us, 5min or 2h, at most one day");
}

Error take_stream_form(Words& words, std::string const& usage, StreamForm& form) {
    constexpr std::chrono::milliseconds kMostOften{1};
    auto word = words.begin();
    for (; word != words.end() && word->compare(0, 2, "--") == 0; ++word) {
        if (*word == "--json") {
            form.json = true;
        } else if (*word == "--every" && word + 1 != words.end()) {
            ++word;
            auto const every = parse_duration(*word);
            if (!every) {
                return duration_error(*word).text;
            }
            form.every = std::max(std::chrono::duration_cast<std::chrono::milliseconds>(*every), kMostOften);
        } else {
            return usage_error(usage).text;
        }
    }
    words.erase(words.begin(), word);
    return {};
}

bool split_words(std::string_view line, Words& words) {
    for (std::size_t at = 0; at < line.size();) {
        if (is_blank(line[at])) {
            ++at;
            continue;
        }
        bool const quoted_word = line[at] == '"';
        std::string word;
        if (!take_word(line, at, word)) {
            return false;
        }
        if (!word.empty() || quoted_word) {
            words.push_back(word);
        }
    }
    return true;
}

std::string join_words(Words const& words) {
    std::string line;
    for (std::string const& word : words) {
        line += (line.empty() ? "" : " ") + word_text(word);
    }
    return line;
}

}  // namespace sim
