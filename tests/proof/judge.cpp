// Judges a run of a session by what the console is expected to ask, call and say.
#include "tests/proof/judge.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include "sim/core/error_names.h"
#include "tests/proof/expected_console.h"

namespace proof {

namespace {

using support::JournalLine;

// What the console did, and what it should have done.
struct Difference : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A key that ends the process, from however deep.
struct ConsoleEnds {};

std::string quoted(std::string_view text) {
    constexpr std::size_t kLongest = 100;
    std::string quote = "\"" + std::string(text.substr(0, kLongest));
    return quote + (text.size() > kLongest ? "\"..." : "\"");
}

// A call of the journal, without the numbers of objects.
struct Call {
    std::string text;                  // operation and arguments
    std::string status;                // truth values as 1 and 0
    std::vector<std::string> results;  // field by field
    std::string error;                 // the name of its errno
    bool by_rule = false;              // of a fault
};

std::string truth_as_number(std::string const& value) {
    return value == "true" ? "1" : value == "false" ? "0" : value;
}

std::string without_object_numbers(std::string const& text) {
    std::string plain;
    for (char const c : text) {
        if (plain.empty() || plain.back() != '#' || std::isdigit(static_cast<unsigned char>(c)) == 0) {
            plain += c;
        }
    }
    return plain;
}

Call call_in(JournalLine const& line) {
    std::size_t const end = std::min(line.text.find(") = "), line.text.size() - 1) + 1;
    Call call{without_object_numbers(line.text.substr(0, end)), "", {}, line.error, line.rule != "-"};
    std::string answer = line.text.substr(end);
    for (char& c : answer) {
        c = std::strchr("=[]{},", c) != nullptr ? ' ' : c;
    }
    std::istringstream words(answer);
    words >> call.status;
    call.status = truth_as_number(call.status);
    for (std::string word; words >> word;) {
        call.results.push_back(truth_as_number(word));
    }
    return call;
}

// The bits of the device check's code that each missing file sets.
std::map<std::string, int> const kFileBits{
    {"/dev/i2c-2", 1},
    {"/dev/r47-rtu-driver", 2},
    {"/dev/r47-autofocus-driver", 4},
    {"/dev/r47-illumination-driver", 16},
    {"/dev/gpiochip1", 32},
    {"/dev/imx296", 64},
    {"/dev/imx567", 64},
    {menus::kFirmwareAp, 128},
    {"/sys/class/gpio/gpio481/value", 256},
};

Dialogue const* dialogue_of(char key) {
    for (Dialogue const& dialogue : dialogues()) {
        if (dialogue.menu->key == key && dialogue.menu != &menus::kLegacyAlarm && dialogue.menu != &menus::kMain) {
            return &dialogue;
        }
    }
    return nullptr;
}

Dialogue const& dialogue_of(menus::Menu const& menu) {
    return *std::find_if(dialogues().begin(), dialogues().end(),
                         [&menu](Dialogue const& dialogue) { return dialogue.menu == &menu; });
}

// Follows the dialogue of both sides with the console through all of a run.
class Walk {
public:
    Walk(Session const& session, Evidence const& evidence)
        : session_(session), evidence_(evidence), typed_(evidence.typed), sent_(evidence.sent) {
        for (std::string const& line : evidence.journal) {
            lines_.push_back(support::parse_journal_line(line));
            if (lines_.back().kind == "call" && lines_.back().thread != "-") {
                calls_.push_back(lines_.size() - 1);
            }
        }
        variables_ = {{"FIRMWARE", menus::kFirmwareAp}, {"RATE", "50"}, {"LATENCY", "100"}};
    }

    Verdict verdict() {
        try {
            run();
        } catch (Difference const& difference) {
            verdict_.problems.push_back(place_ + ": " + difference.what());
        }
        judge_callbacks();
        return verdict_;
    }

private:
    void run() {
        place_ = "start";
        play("<rtu_t::rtu_t(\"/dev/r47-rtu-driver\", 2)>");
        try {
            run_console();
        } catch (ConsoleEnds const&) {
        }
        place_ = "end";
        if (visited_.count(&menus::kDio) != 0) {
            play("<rtu_t::~rtu_t()>");  // the menu's own
        }
        play("<rtu_t::~rtu_t()>");
        expect_nothing_left();
    }

    void run_console() {
        std::string const& entry_point = session_.options.entry_point;
        std::string const word = session_.options.arguments.empty() ? "" : session_.options.arguments.front();
        if (entry_point == menus::kLegacyAlarm.entry_point) {
            visit(dialogue_of(menus::kLegacyAlarm));
            return;
        }
        if (!entry_point.empty()) {
            has_client_ = !evidence_.sent.empty();
            play(entry_point_scripts().at(entry_point));
            return;
        }
        say(screens::kStart);
        if (!word.empty()) {
            say(std::to_string(word.size()) + "\n");
        }
        if (word == "socket") {
            serve_client();
        } else if (word == "alarm") {
            say("Teste Gyro Alarm\n");
            visit(dialogue_of(menus::kAlarm));
        } else {
            variables_["FIRMWARE"] = word == "old_gyro_fw" ? menus::kFirmwareAb : menus::kFirmwareAp;
            visit(dialogue_of(menus::kMain));
        }
    }

    void serve_client() {
        say("int test_socket()\n" + screens::kSocketMenu + screens::kStart);
        has_client_ = true;
        visit(dialogue_of(menus::kMain));
        has_client_ = false;
        place_ = "the menu of socket mode";
        say(std::string("\t\t Your Option = ") + next_key(typed_) + "\n");
    }

    void visit(Dialogue const& dialogue) {
        menus::Menu const& menu = *dialogue.menu;
        visited_.insert(&menu);
        enter(menu, "opening");
        no_menu_ = false;
        stop_ = menu.prompt();
        play(dialogue.opening);
        while (!no_menu_) {
            char const key = answered_key(dialogue);
            enter(menu, std::string("key ") + key);
            variables_["key"] = std::string(1, key);
            if (key == 'x') {
                play(dialogue.closing);
                if (&menu == &menus::kSystem) {
                    throw ConsoleEnds();
                }
                return;
            }
            if (key == '0' && &menu == &menus::kMain) {
                return;
            }
            if (key == '0' && menu.is(menus::offers_zero)) {
                say(screens::kGoodBye);
                throw ConsoleEnds();
            }
            answer(dialogue, key);
            stop_ = menu.prompt();
        }
        no_menu_ = false;
    }

    void answer(Dialogue const& dialogue, char key) {
        auto const command = dialogue.commands.find(key);
        if (command != dialogue.commands.end()) {
            play(command->second);
        } else if (dialogue.menu != &menus::kMain) {
            play(dialogue.otherwise);
        } else if (key == 'L') {
            if (!has_client_) {
                serve_client();
            }
        } else if (Dialogue const* const below = dialogue_of(key)) {
            visit(*below);
        }
    }

    // Each command begins with its own names at 0.
    void enter(menus::Menu const& menu, std::string const& where) {
        first_ = next_;
        place_ = std::string(menu.name) + ", " + where + " (" + std::to_string(++commands_) + ".)";
        for (auto variable = variables_.begin(); variable != variables_.end();) {
            bool const own = std::islower(static_cast<unsigned char>(variable->first.front())) != 0;
            variable = own ? variables_.erase(variable) : std::next(variable);
        }
    }

    // The screen, and its answer. Between the two callbacks may print.
    char answered_key(Dialogue const& dialogue) {
        menus::Menu const& menu = *dialogue.menu;
        bool const of_client = has_client_ && menu.is(menus::client_driven);
        say(menu.prompt());
        char const key = next_key(of_client ? sent_ : typed_);
        std::string const echo =
            (of_client ? screens::line_from_client(std::string(1, key)) : "") + menu.echo + key + "\n";
        if (!dialogue.callbacks.empty()) {
            std::size_t const end = evidence_.output.find(echo, at_);
            if (end == std::string::npos) {
                throw Difference("the key " + std::string(1, key) + " is not answered");
            }
            std::string const printed = evidence_.output.substr(at_, end - at_);
            if (!printed.empty() && !callbacks_came()) {
                throw Difference("without a callback it prints " + quoted(printed));
            }
            printed_by_callbacks_ += printed;
            observe("callbacks before", printed);
            at_ = end;
        }
        say(echo);
        return key;
    }

    static char next_key(std::istringstream& input) {
        char key = '\0';
        if (!(input >> key)) {
            throw Difference("asks for a key more than there are");
        }
        return key;
    }

    void play(std::string_view script) {
        while (!script.empty()) {
            char const mark = script.front();
            std::size_t const end = std::min(script.find_first_of("@^<{$&%"), script.size());
            if (end != 0) {
                say(std::string(script.substr(0, end)));
                script.remove_prefix(end);
            } else if (mark == '<') {
                std::size_t const close = script.find('>');
                call(script.substr(1, close - 1));
                script.remove_prefix(close + 1);
            } else if (mark == '{') {
                std::size_t const close = closing_brace(script);
                choose(script.substr(1, close - 1));
                script.remove_prefix(close + 1);
            } else if (mark == '$' && script[1] == '&') {
                replies_ += has_client_ ? items_ + "\\n" : "";
                items_.clear();
                script.remove_prefix(2);
            } else if (mark == '$') {
                say(value_at(script));
            } else if (mark == '%' && script[1] == '(') {
                std::size_t const equals = script.find('=');
                std::size_t const close = script.find(')');
                variables_[std::string(script.substr(2, equals - 2))] =
                    expanded(script.substr(equals + 1, close - equals - 1));
                script.remove_prefix(close + 1);
            } else {
                script.remove_prefix(1);
                std::string const name = name_at(script);
                if (mark == '%') {
                    run_builtin(name, script);
                } else if (mark == '&') {
                    items_ += has_client_ ? variables_[name].empty() ? "0;" : variables_[name] + ";" : "";
                } else {
                    ask(name, mark == '^' && has_client_);
                }
            }
        }
    }

    static std::size_t closing_brace(std::string_view script) {
        std::size_t at = 0;
        for (int depth = 0;; ++at) {
            depth += script.at(at) == '{' ? 1 : script[at] == '}' ? -1 : 0;
            if (depth == 0) {
                return at;
            }
        }
    }

    // The name at the beginning, which is taken away.
    static std::string name_at(std::string_view& script) {
        auto const end =
            std::find_if(script.begin(), script.end(), [](unsigned char c) { return std::isalpha(c) == 0; });
        std::string name(script.begin(), end);
        script.remove_prefix(name.size());
        return name;
    }

    // The value behind the mark at the beginning, which is taken away.
    std::string value_at(std::string_view& script) {
        script.remove_prefix(1);
        bool const truth = script.front() == '?';
        bool const bracketed = script.front() == '(';
        script.remove_prefix(truth || bracketed ? 1 : 0);
        std::string const& stored = variables_[name_at(script)];
        script.remove_prefix(bracketed ? 1 : 0);
        std::string const value = stored.empty() ? "0" : stored;
        return !truth ? value : value == "0" ? "false" : "true";
    }

    std::string expanded(std::string_view text) {
        std::string result;
        while (!text.empty()) {
            if (text.front() == '$') {
                result += value_at(text);
            } else {
                result += text.front();
                text.remove_prefix(1);
            }
        }
        return result;
    }

    void choose(std::string_view branch) {
        if (branch.empty()) {
            return;
        }
        std::size_t const question = branch.find('?');
        std::size_t bar = question;
        for (int depth = 0; depth != 0 || branch.at(bar) != '|'; ++bar) {
            depth += branch[bar] == '{' ? 1 : branch[bar] == '}' ? -1 : 0;
        }
        bool const yes = holds(branch.substr(0, question));
        play(yes ? branch.substr(question + 1, bar - question - 1) : branch.substr(bar + 1));
    }

    bool holds(std::string_view condition) {
        if (condition.empty()) {
            return variables_["status"] == "0";
        }
        std::string const name = name_at(condition);
        std::string const stored = variables_[name];
        double const left = stored.empty() ? 0 : std::stod(stored);
        std::size_t const operators = condition.find_first_not_of("<=>");
        double const right = std::stod(expanded(condition.substr(operators)));
        condition = condition.substr(0, operators);
        return (condition.find('<') != std::string_view::npos && left < right) ||
               (condition.find('>') != std::string_view::npos && left > right) ||
               (condition.find('=') != std::string_view::npos && left == right);
    }

    void ask(std::string const& name, bool of_client) {
        std::istringstream& input = of_client ? sent_ : typed_;
        std::string answer;
        input >> std::ws;
        while (name == "word" ? input.peek() > ' ' : std::strchr("+-.0123456789", input.peek()) != nullptr) {
            answer += static_cast<char>(input.get());
        }
        if (answer.empty()) {
            throw Difference("asks for a number more than there are");
        }
        variables_[name] = answer;
        if (of_client) {
            say(screens::line_from_client(answer));
            replies_ += answer;
        }
    }

    void call(std::string_view script) {
        std::size_t const end = script.rfind(')') + 1;
        std::string const expected = expanded(script.substr(0, end));
        if (next_ == calls_.size()) {
            throw Difference("does not call " + expected);
        }
        last_ = call_in(lines_[calls_[next_]]);
        if (last_.text != expected) {
            throw Difference("calls " + last_.text + " instead of " + expected);
        }
        ++next_;
        variables_["status"] = last_.status;
        if (expected.find("::info_") != std::string::npos) {
            has_report_ = has_report_ || last_.status == "0";
            may_report_ = may_report_ || last_.status == "0" || !last_.by_rule;
        }
        std::istringstream names{std::string(script.substr(end))};
        auto result = last_.results.begin();
        for (std::string name; result != last_.results.end() && names >> name; ++result) {
            if (name == "*") {
                shot_ = last_.results;
                return;
            }
            variables_[name] = *result;
        }
    }

    void run_builtin(std::string const& name, std::string_view rest) {
        if (name == "report") {
            take_report(rest);
        } else if (name == "error") {
            auto const number = sim::error_named(last_.error);
            errors_ += std::string("Failed read rev\n: ") + std::strerror(number.value_or(0)) + "\n";
        } else if (name == "files") {
            look_at_files();
        } else if (name == "leave") {
            no_menu_ = true;
        } else if (name == "number") {
            variables_["number"] = std::to_string(std::stoul(variables_["pins"], nullptr, 2));
        } else if (name == "grid") {
            print_grid();
        } else {
            throw std::logic_error("no such word: %" + name);
        }
    }

    // The library's report ends where the rest of the command and the next screen begin.
    void take_report(std::string_view rest) {
        std::string behind;
        for (std::size_t at = 0; at < rest.size(); ++at) {
            at = rest[at] == '<' ? rest.find('>', at) : at;
            behind += rest[at] == '>' ? "" : std::string(1, rest[at]);
        }
        behind += stop_;
        std::size_t const end = evidence_.output.find(behind, at_);
        if (end == std::string::npos) {
            throw Difference("no menu behind the library's report");
        }
        std::string const report = evidence_.output.substr(at_, end - at_);
        if (report.empty() ? has_report_ : !may_report_) {
            throw Difference("the library's report is " + quoted(report));
        }
        has_report_ = false;
        may_report_ = false;
        observe("report of", report);
        at_ = end;
    }

    // At one of the calls so far.
    bool a_rule_has_fired() const {
        std::size_t const end = next_ == 0 ? 0 : calls_[next_ - 1] + 1;
        return std::any_of(lines_.begin(), lines_.begin() + static_cast<std::ptrdiff_t>(end),
                           [](JournalLine const& line) { return line.rule != "-"; });
    }

    void look_at_files() {
        int code = 0;
        std::vector<std::string> const& missing = session_.options.without;
        bool const lost = a_rule_has_fired();
        auto const is_missing = [&](std::string const& path) {
            return std::find(missing.begin(), missing.end(), path) != missing.end() ||
                   (lost && path == evidence_.lost_node);
        };
        for (auto const& [path, bit] : kFileBits) {
            code |= is_missing(path) ? bit : 0;
        }
        variables_["code"] = std::to_string(code);
        variables_["sensor"] = !is_missing("/dev/imx296") ? "296" : !is_missing("/dev/imx567") ? "567" : "0";
    }

    // As a square of at most the 64 distances, which stand in the record behind a temperature and five other tables.
    void print_grid() {
        constexpr std::size_t kZones = 64;
        constexpr std::size_t kFirst = 1 + 5 * kZones;
        std::size_t const zones = std::min<std::size_t>(std::stoul(variables_["zones"]), kZones);
        auto const side = static_cast<std::size_t>(std::sqrt(zones));
        std::string grid;
        for (std::size_t zone = 0; zone < zones; ++zone) {
            char distance[16];
            std::snprintf(distance, sizeof distance, "%4d\t", std::stoi(shot_.at(kFirst + zone)));
            grid += distance;
            grid += zone != 0 && (zone + 1) % side == 0 ? "\n" : "";
        }
        say(grid + "\n\n");
    }

    void say(std::string const& text) {
        if (evidence_.output.compare(at_, text.size(), text) == 0) {
            at_ += text.size();
            return;
        }
        std::size_t same = 0;
        while (at_ < evidence_.output.size() && same < text.size() && evidence_.output[at_] == text[same]) {
            ++at_;
            ++same;
        }
        throw Difference("prints " + quoted(std::string_view(evidence_.output).substr(at_)) + " instead of " +
                         quoted(std::string_view(text).substr(same)));
    }

    // Whether the journal has a callback between the console's last call and its next.
    bool callbacks_came() const {
        std::size_t const begin = next_ == 0 ? 0 : calls_[next_ - 1];
        std::size_t const end = next_ == calls_.size() ? lines_.size() : calls_[next_];
        return std::any_of(lines_.begin() + static_cast<std::ptrdiff_t>(begin),
                           lines_.begin() + static_cast<std::ptrdiff_t>(end),
                           [](JournalLine const& line) { return line.kind == "callback"; });
    }

    void observe(std::string const& what, std::string const& text) {
        std::string history;
        bool const stepped = session_.options.clock == "stepped";
        std::size_t const begin = first_ == calls_.size() ? lines_.size() : calls_[first_];
        std::size_t const end = next_ == calls_.size() ? lines_.size() : calls_[next_];
        for (std::size_t i = 0; i < end; ++i) {
            bool const reads = lines_[i].text.find("::get_") != std::string::npos ||
                               lines_[i].text.find("::info_") != std::string::npos;
            if (!reads || i >= begin) {
                history += (stepped ? lines_[i].start + lines_[i].took : "") + lines_[i].text;
            }
        }
        verdict_.observed[what + " " + place_ + " behind " + std::to_string(std::hash<std::string>()(history))] = text;
    }

    void expect_nothing_left() {
        if (next_ != calls_.size()) {
            throw Difference("calls " + lines_[calls_[next_]].text + " as well");
        }
        if (at_ != evidence_.output.size()) {
            throw Difference("prints " + quoted(std::string_view(evidence_.output).substr(at_)) + " as well");
        }
        if (evidence_.errors != errors_) {
            throw Difference("standard error is " + quoted(evidence_.errors) + " instead of " + quoted(errors_));
        }
        if (evidence_.replies != replies_) {
            throw Difference("the client gets " + quoted(evidence_.replies) + " instead of " + quoted(replies_));
        }
    }

    // The hub's callbacks and the button's run beside each other, so a call may come behind another callback.
    void judge_callbacks() {
        std::vector<std::string> running;
        std::map<std::string, std::size_t> calls;
        for (JournalLine const& line : lines_) {
            if (line.thread != "-") {
                continue;
            }
            if (line.kind == "callback") {
                running.push_back(line.text);
                continue;
            }
            std::string const called = call_in(line).text;
            ++calls[called];
            auto const caller = std::find_if(running.begin(), running.end(),
                                             [&](std::string const& callback) { return may_call(callback, called); });
            if (caller == running.end()) {
                verdict_.problems.push_back("no callback calls " + called);
            } else {
                running.erase(caller);
            }
        }
        for (std::string const& callback : running) {
            if (!may_call(callback, "")) {
                verdict_.problems.push_back("nothing comes of " + callback);
            }
        }
        judge_announcements(calls);
    }

    void judge_announcements(std::map<std::string, std::size_t>& calls) {
        for (menus::Menu const* const menu : visited_) {
            for (auto const& [text, call] : dialogue_of(*menu).announcements) {
                std::size_t count = 0;
                for (std::size_t at = printed_by_callbacks_.find(text); at != std::string::npos;
                     at = printed_by_callbacks_.find(text, at + 1)) {
                    ++count;
                }
                if (count != calls[call]) {
                    verdict_.problems.push_back(quoted(text) + " is printed " + std::to_string(count) + " times, " +
                                                call + " called " + std::to_string(calls[call]));
                }
            }
        }
    }

    bool may_call(std::string const& callback, std::string const& called) const {
        for (Dialogue const& dialogue : dialogues()) {
            auto const rule = dialogue.callbacks.find(callback);
            if (visited_.count(dialogue.menu) != 0 && rule != dialogue.callbacks.end() &&
                std::find(rule->second.begin(), rule->second.end(), called) != rule->second.end()) {
                return true;
            }
        }
        return false;
    }

    Session const& session_;
    Evidence const& evidence_;
    std::istringstream typed_;  // what the console has not taken yet
    std::istringstream sent_;
    std::vector<JournalLine> lines_;
    std::vector<std::size_t> calls_;  // the lines that are calls of the console's own threads
    std::size_t next_ = 0;            // of these
    std::size_t first_ = 0;           // of the command
    std::size_t at_ = 0;              // in the output
    Call last_;
    std::vector<std::string> shot_;
    bool has_report_ = false;  // the library printed since the last report that was taken
    bool may_report_ = false;  // or where the device refused it, and no fault
    std::map<std::string, std::string> variables_;
    bool has_client_ = false;
    bool no_menu_ = false;
    std::string stop_;   // the screen that follows the command
    std::string items_;  // of the next reply
    std::string replies_;
    std::string errors_;
    std::string printed_by_callbacks_;
    std::set<menus::Menu const*> visited_;
    std::string place_;
    std::size_t commands_ = 0;
    Verdict verdict_;
};

}  // namespace

Verdict judge(Session const& session, Evidence const& evidence) {
    return Walk(session, evidence).verdict();
}

}  // namespace proof
