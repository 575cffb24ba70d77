// Fuzzer of the terminal input: any typed bytes, any order of reads, compared with a model of what they answer.
//
// Input: the first line is the reads, a letter each (see take_step); what follows is typed (see typed_input.h).
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "app/no_answer.h"
#include "app/terminal_input.h"
#include "tests/fuzz/typed_input.h"
#include "tests/support/require.h"

namespace {

constexpr auto kWaitAtEnd = std::chrono::milliseconds(20);
constexpr std::size_t kLongestFloat = 1023;

// What the console finds at its input: a character, or what comes instead of one.
enum Event : int { control_d = -1, ended = -2 };

// The rules of the reads, once more and in another way than the console has them.
class Model {
public:
    Model(std::string const& script, bool terminal) {
        for (char const c : script) {
            if (c == typed_input::kEnd) {
                events_.push_back(terminal ? control_d : ended);
            } else if (c != typed_input::kInterrupt && c != typed_input::kSplit) {
                events_.push_back(static_cast<unsigned char>(c));
            }
        }
    }

    void set_connection_gone(bool gone) { connection_gone_ = gone; }
    bool all_read() const { return next_ == events_.size(); }
    // Whether the last word or number found no character to begin with.
    bool unanswered() const { return unanswered_; }

    // A character stays, anything else counts as seen.
    int look() {
        if (connection_gone_) {
            return ended;
        }
        return look_at_terminal();
    }

    // Option characters; the local menu's do not depend on the connection.
    int option(bool local) {
        int c;
        do {
            c = local ? look_at_terminal() : look();
            next_ += c >= 0 ? 1 : 0;
        } while (c >= 0 && is_blank(c));
        return c;
    }

    std::string word() {
        std::string word;
        skip_blanks();
        for (int c = last_; c >= 0 && !is_blank(c); c = look()) {
            word += take();
        }
        return word;
    }

    // The text of a number that starts here: `belongs` tells whether a character continues it.
    template <typename Belongs>
    std::string text(Belongs belongs) {
        std::string text;
        skip_blanks();
        for (; last_ >= 0 && belongs(text, static_cast<char>(last_)); last_ = look()) {
            text += take();
        }
        return text;
    }

    // A number that did not convert costs the rest of its line, unless that was where the input stopped.
    void refuse() {
        while (last_ >= 0 && take() != '\n') {
            last_ = look();
        }
    }

private:
    static bool is_blank(int c) {
        return std::string_view(" \t\n\v\f\r").find(static_cast<char>(c)) != std::string::npos;
    }

    int look_at_terminal() {
        if (all_read()) {
            return ended;
        }
        return events_[next_] >= 0 ? events_[next_] : events_[next_++];
    }

    char take() { return static_cast<char>(events_[next_++]); }

    void skip_blanks() {
        for (last_ = look(); last_ >= 0 && is_blank(last_); last_ = look()) {
            ++next_;
        }
        unanswered_ = last_ < 0;
    }

    std::vector<int> events_;
    std::size_t next_ = 0;
    int last_ = 0;
    bool connection_gone_ = false;
    bool unanswered_ = false;
};

bool is_digit(char c) {
    return '0' <= c && c <= '9';
}

template <typename Integer>
Integer expected_integer(Model& model, Integer kept) {
    std::string const text = model.text(
        [](std::string const& before, char c) { return is_digit(c) || (before.empty() && (c == '-' || c == '+')); });
    bool const negative = text[0] == '-';
    std::size_t const first = text.find_first_not_of("+-0");
    std::string const digits = first == std::string::npos ? "" : text.substr(first);
    bool const has_digits = !text.empty() && is_digit(text.back());
    long long const value = digits.size() > 10 ? std::numeric_limits<long long>::max() : std::atoll(digits.c_str());
    long long const longest = std::numeric_limits<Integer>::max();
    long long const lowest = std::is_signed_v<Integer> ? -longest - 1 : -longest;
    if (!has_digits || value > (negative ? -lowest : longest)) {
        model.refuse();
        return kept;
    }
    return static_cast<Integer>(negative ? -value : value);
}

float expected_float(Model& model, float kept) {
    std::string const text = model.text([](std::string const& before, char c) {
        static std::regex const beginning(R"([+-]?([0-9]*\.?[0-9]*|([0-9]+\.?[0-9]*|\.[0-9]+)[eE][+-]?[0-9]*))");
        return before.size() <= kLongestFloat && std::regex_match(before + c, beginning);
    });
    static std::regex const number(R"([+-]?([0-9]+\.?[0-9]*|\.[0-9]+)([eE][+-]?[0-9]+)?)");
    bool const converts = text.size() <= kLongestFloat && std::regex_match(text, number);
    double const value = converts ? std::strtod(text.c_str(), nullptr) : HUGE_VAL;
    char const* const start = text.c_str() + (text[0] == '+' ? 1 : 0);
    float exact = 0;
    bool const in_range = std::from_chars(start, text.c_str() + text.size(), exact).ec == std::errc();
    if (!converts || (!in_range && std::fabs(value) > 1) || std::isinf(exact)) {
        model.refuse();
        return kept;
    }
    return in_range ? exact : static_cast<float>(value);
}

float expected_scanned_float(Model& model, float kept) {
    std::string const text = model.text([](std::string const& before, char c) {
        static std::regex const beginning(
            R"([+-]?([0-9]*\.?[0-9]*|([0-9]+\.?[0-9]*|\.[0-9]+)e[+-]?[0-9]*|)"
            R"(0x([0-9a-f]*\.?[0-9a-f]*|([0-9a-f]+\.?[0-9a-f]*|\.[0-9a-f]+)p[+-]?[0-9]*)|)"
            R"(i|in|inf|infi|infin|infini|infinit|infinity|n|na|nan(\([0-9a-z_]*\)?)?))",
            std::regex::icase);
        return before.size() <= kLongestFloat && std::regex_match(before + c, beginning);
    });
    static std::regex const number(R"([+-]?(([0-9]+\.?[0-9]*|\.[0-9]+)(e[+-]?[0-9]+)?|)"
                                   R"(0x([0-9a-f]+\.?[0-9a-f]*|\.[0-9a-f]+)(p[+-]?[0-9]+)?|)"
                                   R"(inf|infinity|nan(\([0-9a-z_]*\))?))",
                                   std::regex::icase);
    if (text.size() > kLongestFloat || !std::regex_match(text, number)) {
        model.refuse();
        return kept;
    }
    return std::strtof(text.c_str(), nullptr);
}

// Two connected sockets, one with its peer gone.
struct Connections {
    Connections() {
        int gone_pair[2];
        require(::socketpair(AF_UNIX, SOCK_STREAM, 0, living) == 0, "a pair of sockets");
        require(::socketpair(AF_UNIX, SOCK_STREAM, 0, gone_pair) == 0, "a pair of sockets");
        ::close(gone_pair[1]);
        gone = gone_pair[0];
    }

    int living[2];
    int gone;
};

Connections const& connections() {
    static Connections const pairs;
    return pairs;
}

template <typename Number>
void require_number(Number const& found, Number const& expected, char const* what) {
    auto const found_float = static_cast<double>(found);
    auto const expected_float = static_cast<double>(expected);
    require(found == expected || (std::isnan(found_float) && std::isnan(expected_float)), what);
    require_equal(std::signbit(found_float), std::signbit(expected_float), what);
}

// Whether the read finds that no answer will come.
template <typename Read>
bool is_unanswered(Read read) {
    try {
        read();
        return false;
    } catch (no_answer const&) {
        return true;
    }
}

template <typename Number>
void take_number(Model& model, Number kept, void (*read)(Number&), Number (*expected)(Model&, Number),
                 char const* what) {
    Number value = kept;
    bool const unanswered = is_unanswered([&] { read(value); });
    require_number(value, expected(model, kept), what);
    require_equal(unanswered, model.unanswered(), what);
}

void take_option(Model& model) {
    char option = '?';
    typed_input::sleeps();
    read_option(option);
    int const expected = model.option(false);
    require_equal(option,
                  expected == ended       ? '?'
                  : expected == control_d ? '\0'
                                          : static_cast<char>(expected),
                  "option");
    require_equal(typed_input::sleeps(), expected == ended ? 1 : 0, "waits of an option");
    require(expected != ended || typed_input::last_sleep() == kWaitAtEnd, "wait at the end of input");
}

void take_local_option(Model& model) {
    char option = '?';
    release_terminal();
    bool const read = read_local_option(option);
    int const expected = model.option(true);
    require_equal(read, expected != ended, "local option read");
    require_equal(option,
                  expected == ended       ? '?'
                  : expected == control_d ? '\0'
                                          : static_cast<char>(expected),
                  "local option");
}

void take_step(char step, Model& model) {
    switch (step) {
        case 'i':
            take_number<int>(model, -77, read_number, expected_integer<int>, "int");
            break;
        case 'u':
            take_number<unsigned int>(model, 77, read_number, expected_integer<unsigned int>, "unsigned int");
            break;
        case 'f':
            take_number<float>(model, 7.5F, read_number, expected_float, "float");
            break;
        case 's':
            take_number<float>(model, 7.5F, read_scanned_number, expected_scanned_float, "scanned float");
            break;
        case 'w': {
            std::string word = "before";
            bool const unanswered = is_unanswered([&word] { read_word(word); });
            require_equal(word, model.word(), "word");
            require_equal(unanswered, model.unanswered(), "word");
            break;
        }
        case 'l':
            take_local_option(model);
            break;
        case 'g':
            watch_connection(connections().gone);
            model.set_connection_gone(true);
            break;
        case 'c':
            watch_connection(connections().living[0]);
            model.set_connection_gone(false);
            break;
        case 'n':
            watch_connection(-1);
            model.set_connection_gone(false);
            break;
        default:
            take_option(model);
            break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    typed_input::use();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string const input(reinterpret_cast<char const*>(data), size);
    std::size_t const line_end = std::min(input.find('\n'), input.size());
    std::string const script = input.substr(std::min(line_end + 1, input.size()));
    bool const terminal = input[0] == 't';
    typed_input::play(script, terminal);
    Model model(script, terminal);
    for (char const step : input.substr(0, line_end)) {
        take_step(step, model);
    }
    // What is left must be what the model has left, and the next input starts with nothing left.
    take_step('n', model);
    while (!model.all_read()) {
        take_step('o', model);
    }
    take_step('o', model);
    return 0;
}
