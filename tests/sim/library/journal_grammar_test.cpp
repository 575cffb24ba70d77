// Tests that the journal's lines are as docs/virtual-device.md says, and its JSON tells the same.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <map>
#include <optional>
#include <sstream>

#include "hal/button.h"
#include "hal/camera.h"
#include "hal/gyro_alarm.h"
#include "hal/gyro_delegate.h"
#include "hal/illumination.h"
#include "hal/rtu.h"
#include "hal/tof.h"
#include "sim/calls/text.h"
#include "tests/sim/served_gyro.h"

namespace {

using sim::Record;
using sim::RecordKind;
using Fields = std::map<std::string, std::string>;

// The grammar of the text, read from the document and not from the code. Each rule takes what it describes.
class Grammar {
public:
    explicit Grammar(std::string_view text) : rest_(text) {}

    // Whether the text of a line of that kind is all that the grammar has for it.
    bool takes(std::string const& kind) {
        bool const good = kind == "call"       ? call()
                          : kind == "callback" ? callback()
                          : kind == "command"  ? command()
                          : kind == "program"  ? program()
                          : kind == "lost"     ? lost()
                                               : false;
        return good && rest_.empty();
    }

private:
    bool word(std::string_view expected) {
        bool const there = rest_.substr(0, expected.size()) == expected;
        rest_.remove_prefix(there ? expected.size() : 0);
        return there;
    }
    // One of these characters at least.
    bool some(std::string_view characters) {
        std::size_t const count = std::min(rest_.find_first_not_of(characters), rest_.size());
        rest_.remove_prefix(count);
        return count > 0;
    }
    bool digits() { return some("0123456789"); }
    bool name() { return some("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_:~"); }

    bool call() { return name() && word("(") && values(")") && (!word(" = ") || (value() && results())); }
    bool callback() { return name() && word("(") && values(")"); }
    bool results() { return !word(" [") || (value() && more_values("]")); }
    bool command() {
        bool const printable = std::all_of(rest_.begin(), rest_.end(), [](unsigned char c) { return c >= 0x20; });
        rest_ = printable ? "" : rest_;
        return printable;
    }
    bool program() {
        return word("connected") || (word("ended") && (!word(", ") || (digits() && word(" objects released"))));
    }
    bool lost() {
        if (word("an event: the program does not keep up")) {
            return true;
        }
        std::string_view const all = rest_;
        if (digits() && word(" lines, as they ")) {
            return word("were not read in time") || word("could not be written");
        }
        rest_ = all;
        return callback();
    }

    bool values(std::string_view end) { return word(end) || (value() && more_values(end)); }
    bool more_values(std::string_view end) {
        while (word(", ")) {
            if (!value()) {
                return false;
            }
        }
        return word(end);
    }
    bool value() {
        if (word("true") || word("false") || word("null") || word("function")) {
            return true;
        }
        if (word("#")) {
            return digits();
        }
        if (word("{")) {
            return record_or_map();
        }
        return rest_.substr(0, 1) == "\"" ? text() : number();  // pins are a number's digits
    }
    bool number() {
        word("-");
        if (word("nan") || word("inf")) {
            return true;
        }
        return digits() && (!word(".") || digits()) && (!word("e") || ((word("-") || word("+")) && digits()));
    }
    bool text() {
        word("\"");
        while (!rest_.empty() && !word("\"")) {
            if (rest_[0] == '\\') {
                bool const escaped = word("\\\"") || word("\\\\") || word("\\n") || (word("\\x") && hex() && hex());
                if (!escaped) {
                    return false;
                }
            } else if (rest_[0] < 0x20 || rest_[0] == 0x7F) {
                return false;
            } else {
                rest_.remove_prefix(1);
            }
            if (rest_.empty()) {
                return false;
            }
        }
        return true;
    }
    bool hex() {
        bool const digit = !rest_.empty() && std::string_view("0123456789ABCDEF").find(rest_[0]) != std::string::npos;
        rest_.remove_prefix(digit ? 1 : 0);
        return digit;
    }
    bool record_or_map() {
        if (word("}")) {
            return true;
        }
        if (!value()) {
            return false;
        }
        if (!word(": ")) {
            return more_values("}");
        }
        while (value()) {
            if (word("}")) {
                return true;
            }
            if (!word(", ") || !number() || !word(": ")) {
                return false;
            }
        }
        return false;
    }

    std::string_view rest_;
};

// The ten fields of a line by their names in JSON, those that are none left out.
Fields fields_of_line(std::string const& line) {
    Fields fields;
    std::istringstream stream(line);
    for (char const* const name :
         {"start", "took", "sequence", "kind", "program", "thread", "object", "error", "rule"}) {
        std::string field;
        std::getline(stream, field, ' ');
        EXPECT_NE(field, "") << name << " of " << line;
        if (field != "-") {
            fields[name] = field;
        }
    }
    std::getline(stream, fields["text"]);
    bool const of_callbacks = fields.count("program") != 0 && fields["kind"] != "program";
    if (of_callbacks && fields.count("thread") == 0) {
        fields["thread"] = "0";
    }
    return fields;
}

// The members of an object of numbers and texts. Empty where it is none.
Fields fields_of_json(std::string const& json) {
    Fields fields;
    std::size_t at = 0;
    auto const text = [&] {
        std::string value;
        for (++at; at < json.size() && json[at] != '"'; ++at) {
            if (json[at] == '\\' && json[++at] == 'u') {
                value += static_cast<char>(std::stoi(json.substr(at + 1, 4), nullptr, 16));
                at += 4;
            } else {
                value += json[at];
            }
        }
        ++at;
        return value;
    };
    while (at < json.size() && json[at] != '}') {
        at += at == 0 ? 1 : 2;  // "{" or ", "
        std::string const name = text();
        at += 2;  // ": "
        std::size_t const end = std::min(json.find_first_of(",}", at), json.size());
        std::string const number = json.substr(at, end - at);
        fields[name] = json[at] == '"' ? text() : (at = end, number);
    }
    return at + 1 == json.size() ? fields : Fields{};
}

void expect_line(std::uint64_t sequence, Record const& record) {
    std::string const line = record_line(sequence, record);
    Fields const fields = fields_of_line(line);
    EXPECT_TRUE(Grammar(fields.at("text")).takes(fields.at("kind"))) << line;
    EXPECT_EQ(fields_of_json(record_json(sequence, record)), fields) << line;
}

TEST(GrammarTest, RefusesWhatIsNone) {
    for (char const* const text : {"a(", "a()x", "a() = ", "a(1,2)", "a(\"x)", "a(\"\\y\")", "a() = 0 []", "a() = 0 [1",
                                   "a({1: 2, 3})", "a({1, 2)", "a(yes)", "a(1.)", "a(#)", "(1)", "a() = 0 [1] "}) {
        EXPECT_FALSE(Grammar(text).takes("call")) << text;
    }
    EXPECT_FALSE(Grammar("ended, objects released").takes("program"));
    EXPECT_FALSE(Grammar("2 lines").takes("lost"));
    EXPECT_FALSE(Grammar("a\x1B").takes("command"));
}

TEST(GrammarTest, HasTheValuesOfEveryOperation) {
    auto const expect = [](std::string_view name, std::string const& arguments, std::string const& results) {
        Record record;
        record.text = std::string(name) + "(" + arguments + ") = 0" + (results.empty() ? "" : " [" + results + "]");
        expect_line(1, record);
    };
    auto const list = [](auto const& values) {
        return std::apply([](auto const&... each) { return sim::list_of(each...); }, values);
    };
#define EXPECT_VALUES(type) expect(type::kName, list(type::Arguments{}), list(type::Results{}));
#define CONSTRUCTOR(class_name, arguments) EXPECT_VALUES(sim::operations::class_name::constructor)
#define DESTRUCTOR(class_name) EXPECT_VALUES(sim::operations::class_name::destructor)
#define OPERATION(class_name, operation, result, arguments, results) \
    EXPECT_VALUES(sim::operations::class_name::operation)
#include "sim/calls/operation_table.def"
#undef CONSTRUCTOR
#undef DESTRUCTOR
#undef OPERATION
#undef EXPECT_VALUES
}

TEST(GrammarTest, HasNumbersOfEverySize) {
    for (float const value : {0.0F, -0.0F, 1.5F, -2e-20F, 3e30F, std::numeric_limits<float>::infinity(),
                              -std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()}) {
        Record record;
        record.text = "gyro_t::activate_vsensor(" + sim::list_of(value, -7, 8U) + ") = -1";
        expect_line(1, record);
    }
}

// Every kind of record, from a session that has them all.
class JournalGrammarTest : public ServedGyroTest {
protected:
    JournalGrammarTest() {
        follower_ = device_.access()->journal.follow([this](std::uint64_t sequence, Record const& record) {
            expect_line(sequence, record);
            ++kinds_[record.kind];
            rules_ += record.rule != 0 ? 1 : 0;
            errors_ += record.error != 0 ? 1 : 0;
        });
    }

    ~JournalGrammarTest() override { device_.access()->journal.unfollow(follower_); }

    int follower_ = 0;
    // Guarded by the device's lock.
    std::map<RecordKind, int> kinds_;
    int rules_ = 0;
    int errors_ = 0;
};

TEST_F(JournalGrammarTest, EveryKindOfRecordIsAsTheDocumentSays) {
    unsigned int number = 0;
    {
        hal::rtu_t rtu("/dev/r47-rtu-driver", 2);
        hal::base_t const strange("we\"ird \\ \n\x01\x7F\xC3\xBC\xFF", -1);
        hal::base_t const none(nullptr, 0);
        hal::dio_pin_config_t config;
        std::bitset<6> pins;
        hal::revision_t revision{};
        control("fault add rtu_t::get_exposure errno EBUSY count 1");
        control("fault add rtu_t::get_revision value 1,2");
        control("fault add \"base_t::base_t\" arg 1 \"two words \xFF\" delay 1");
        EXPECT_EQ(rtu.get_exposure(number), -1);
        EXPECT_EQ(rtu.get_revision(revision), 0);
        EXPECT_EQ(rtu.get_io_pin_config(2, config), 0);
        EXPECT_EQ(rtu.set_io_pin_config(2, config), 0);
        EXPECT_EQ(rtu.get_all_pin_values(pins), 0);
        EXPECT_EQ(hal::camera_t::determine_imxtype(), hal::imx_te::imx296);
        hal::tof_t tof("/dev/r47-tof-driver", 2);
        VL53L5CX_ResultsData data{};
        EXPECT_EQ(tof.shot(data), 0);
        control("power off");
        EXPECT_EQ(rtu.get_exposure(number), -1);
        control("power on");
    }
    {
        auto const device = device_.access();
        device->hub.boot(sim::make_firmware_image({sim::HubVariant::bhi260ap, 1}));
        device->hub.install_callbacks();
    }
    {
        hal::gyro_delegate_t const delegate(*gyro_, 37, [](unsigned char, hal::cb_struct_te, void*) {});
        hal::gyro_delegate_t const empty(*gyro_, 37, {});
        hal::gyro_alarm_t alarm(*gyro_, 37);
        EXPECT_EQ(gyro_->irq_callback_hold(false), 0);
        EXPECT_EQ(gyro_->activate_vsensor(37, 10.5F, 1), 0);
        control("fault add gyro_delegate_t skip 1 count 1 drop");
        control("tilt 0 90 0");
        step(std::chrono::seconds(1));
    }
    Record gap;
    gap.kind = RecordKind::lost;
    gap.text = "7 lines, as they could not be written";
    device_.access()->journal.write(gap);
    gap.text = "7 lines, as they were not read in time";
    device_.access()->journal.write(gap);
    gap.program = "sim_tests.1";
    gap.object = 3;
    gap.text = "an event: the program does not keep up";
    device_.access()->journal.write(gap);
    Record ended;
    ended.kind = RecordKind::program;
    ended.program = "sim_tests.1";
    for (char const* const text : {"connected", "ended", "ended, 3 objects released"}) {
        ended.text = text;
        device_.access()->journal.write(ended);
    }
    auto const device = device_.access();
    EXPECT_GT(kinds_[RecordKind::call], 10);
    EXPECT_GT(kinds_[RecordKind::callback], 5);
    EXPECT_GT(kinds_[RecordKind::command], 5);
    EXPECT_EQ(kinds_[RecordKind::lost], 4);
    EXPECT_EQ(kinds_[RecordKind::program], 3);
    EXPECT_GT(rules_, 2);
    EXPECT_GT(errors_, 1);
}

}  // namespace
