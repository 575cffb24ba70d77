// Tests of the control grammar.
#include "sim/control/command.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <optional>
#include <sstream>
#include <vector>

#include "sim/control/value_words.h"

namespace {

using namespace std::chrono_literals;
using sim::Device;
using sim::Reply;
using sim::Words;

class CommandTest : public testing::Test {
protected:
    Reply run(std::string const& line) { return sim::device_commands().run({device_}, line); }
    // The body of a command that must be done.
    std::string done(std::string const& line) {
        Reply const reply = run(line);
        EXPECT_TRUE(reply.ok) << line << ": " << reply.text;
        return reply.text;
    }
    // The message of a command that must be refused.
    std::string refused(std::string const& line) {
        Reply const reply = run(line);
        EXPECT_FALSE(reply.ok) << line;
        EXPECT_EQ(reply.text.find('\n'), std::string::npos) << "one line: " << reply.text;
        return reply.text;
    }

    Device device_{std::make_unique<sim::MemoryFileSystem>()};
};

TEST_F(CommandTest, SetChangesWhatShowShows) {
    EXPECT_EQ(done("set system.state 4"), "");
    EXPECT_EQ(
        done("show system.state").find("system.state  4 find_me  set  choice  state shown to the user: 1 boot, 2"), 0U);
    EXPECT_NE(done("show --json system.state").find("{\"value\":4,\"name\":\"find_me\","), std::string::npos);
    EXPECT_EQ(done("set system.state warning"), "");
    EXPECT_NE(done("show system.state").find("  5 warning  "), std::string::npos);
    EXPECT_NE(done("show").find("\nimx567.revision.year "), std::string::npos);
    EXPECT_NE(done("show --json").find("\"camera.fitted\": {\"value\":1,"), std::string::npos);
}

TEST_F(CommandTest, ShowTakesSeveralPrefixes) {
    std::string const shown = done("show imx296.roi clock.mode");
    EXPECT_EQ(shown.find("clock.mode "), 0U);
    EXPECT_NE(shown.find("\nimx296.roi "), std::string::npos);
    EXPECT_NE(shown.find("\nimx296.roi.x "), std::string::npos);
    EXPECT_EQ(refused("show clock nothing"), "unknown property nothing");
}

TEST_F(CommandTest, TheSchemaHasNoValues) {
    EXPECT_EQ(done("show --schema hub.upload_time"),
              "{\n"
              "  \"hub.upload_time\": {\"type\":\"integer\",\"unit\":\"ms\",\"range\":{\"min\":0,\"max\":60000},"
              "\"settable\":true,\"meaning\":\"that the upload of a firmware takes\"}\n"
              "}\n");
}

TEST_F(CommandTest, ARegionIsSetAtOnceOrByItsEdges) {
    EXPECT_EQ(done("set imx567.roi 16,8"), "");
    EXPECT_EQ(done("set imx567.roi.x 24"), "");
    EXPECT_NE(done("show imx567.roi").find("  24,8 pixels  "), std::string::npos);
    EXPECT_EQ(refused("set imx567.roi 20,8"),
              "imx567.roi: beyond the sensor; it takes X,Y, each as its own property takes it");
    EXPECT_EQ(refused("set imx567.roi 20"), "imx567.roi: 20 is not X,Y, each as its own property takes it");
    EXPECT_EQ(refused("set imx567.roi.y 20"), "imx567.roi.y: 20 is not a multiple of 8 from 0 to 2056 pixels");
}

TEST_F(CommandTest, ARefusedValueIsToldTheRangeOfTheMoment) {
    EXPECT_EQ(done("set rtu.trigger.rate 97"), "");
    EXPECT_EQ(done("set rtu.imager_type imx567"), "");
    EXPECT_EQ(refused("set rtu.trigger.rate 97"), "rtu.trigger.rate: 97 is not an integer from 1 to 96 fps");
    EXPECT_EQ(done("set autofocus.maintenance on"), "");
    EXPECT_EQ(refused("set autofocus.target 3001"), "autofocus.target: 3001 is not an integer from 0 to 3000 steps");
    EXPECT_EQ(done("set ranging.power sleep"), "");
    EXPECT_EQ(refused("set ranging.frequency 2"),
              "ranging.frequency: the sensor sleeps; it takes an integer from 1 to 60 Hz");
}

// Whatever has a range takes its ends, and not what lies beyond.
TEST_F(CommandTest, EveryRangeIsTheOneThatTheDeviceKeeps) {
    auto const device = device_.access();
    int ranges = 0;
    for (auto const& [name, property] : device->properties.all()) {
        if (!property.set || !property.about.range || !std::holds_alternative<long long>(property.get())) {
            continue;
        }
        ++ranges;
        SCOPED_TRACE(name);
        sim::Value const before = property.get();
        sim::ValueRange const range = property.about.range();
        for (double const end : {range.min, range.max}) {
            EXPECT_EQ(property.set(static_cast<long long>(end)), "") << end;
            EXPECT_EQ(property.get(), sim::Value(static_cast<long long>(end)));
        }
        property.set(before);
        EXPECT_NE(device->properties.set(name, static_cast<long long>(range.max) + 1), "");
        EXPECT_NE(device->properties.set(name, static_cast<long long>(range.min) - 1), "");
        EXPECT_EQ(property.get(), before);
    }
    EXPECT_GT(ranges, 30);
}

TEST_F(CommandTest, EveryChoiceCanBeSetByValueAndName) {
    auto const device = device_.access();
    for (auto const& [name, property] : device->properties.all()) {
        for (sim::Choice const& choice : property.about.choices) {
            if (property.set) {
                SCOPED_TRACE(name + " " + choice.name);
                EXPECT_EQ(sim::set_property(device->properties, name, choice.name), "");
                EXPECT_EQ(property.get(), choice.value);
                EXPECT_EQ(sim::set_property(device->properties, name, sim::value_text(choice.value)), "");
                EXPECT_EQ(property.get(), choice.value);
            }
        }
    }
}

TEST_F(CommandTest, FaultsAreAddedListedAndCleared) {
    EXPECT_EQ(done("fault add rtu_t::get_exposure count 2 status -1"), "1\n");
    EXPECT_EQ(done("fault add * delay 5"), "2\n");
    EXPECT_EQ(done("fault list"), "1  rtu_t::get_exposure count 2 status -1  fired 0\n2  * delay 5  fired 0\n");
    EXPECT_EQ(done("fault clear 1"), "");
    EXPECT_EQ(done("fault list"), "2  * delay 5  fired 0\n");
    EXPECT_EQ(done("fault clear"), "");
    EXPECT_EQ(done("fault list"), "");
}

TEST_F(CommandTest, NodesAreRemovedAndRestored) {
    EXPECT_EQ(done("node remove /dev/imx296"), "");
    EXPECT_NE(done("show --json camera.fitted").find("{\"value\":2,"), std::string::npos);
    EXPECT_NE(done("node list").find("missing  /dev/imx296\n"), std::string::npos);
    EXPECT_EQ(done("node restore /dev/imx296"), "");
    EXPECT_NE(done("node list").find("present  /dev/imx296\n"), std::string::npos);
}

TEST_F(CommandTest, TheClockIsChosenAndStepped) {
    EXPECT_EQ(done("clock"), "stepped\n");
    EXPECT_EQ(done("clock scaled 2.5"), "");
    EXPECT_EQ(done("clock"), "scaled 2.5\n");
    EXPECT_EQ(done("clock stepped"), "");
    auto const before = device_.timeline.now();
    EXPECT_EQ(done("step 3s"), "");
    EXPECT_EQ(done("step 250ms"), "");
    EXPECT_EQ(device_.timeline.now() - before, 3250ms);
    EXPECT_EQ(done("clock real"), "");
    EXPECT_EQ(done("clock"), "real\n");
}

TEST_F(CommandTest, FollowingTheJournalIsTheCallersMatter) {
    std::optional<sim::StreamForm> form;
    sim::Caller const caller{device_, {}, [&](sim::StreamForm const& wanted) { form = wanted; }};
    EXPECT_TRUE(sim::device_commands().run(caller, "journal follow").ok);
    ASSERT_TRUE(form);
    EXPECT_FALSE(form->json);
    EXPECT_FALSE(form->every);
    EXPECT_TRUE(sim::device_commands().run(caller, "journal follow --json --every 1s").ok);
    EXPECT_TRUE(form->json);
    EXPECT_EQ(form->every, 1s);
    EXPECT_EQ(refused("journal follow"), "journal follow needs a connection");
}

class TwoPrograms : public sim::ProgramList {
public:
    std::vector<std::string> connected() override { return {"one", "two"}; }
    std::vector<std::string> waited_for() override { return {"two is busy"}; }
};

TEST_F(CommandTest, ProgramsAreListedByTheirLines) {
    TwoPrograms programs;
    sim::Caller caller{device_};
    EXPECT_EQ(sim::device_commands().run(caller, "programs").text, "");
    caller.programs = &programs;
    EXPECT_EQ(sim::device_commands().run(caller, "programs").text, "one\ntwo\n");
}

TEST_F(CommandTest, AStepSaysWhomItWaitsFor) {
    std::promise<void> rest;
    device_.timeline.set_barrier([released = rest.get_future().share()] { released.wait(); });
    TwoPrograms programs;
    std::vector<std::string> told;
    sim::Caller caller{device_, [&](std::string const& line) {
                           if (told.empty()) {
                               rest.set_value();
                           }
                           told.push_back(line);
                       }};
    caller.programs = &programs;
    EXPECT_TRUE(sim::device_commands().run(caller, "step 1ms").ok);
    ASSERT_FALSE(told.empty());
    EXPECT_EQ(told.front(), "waiting: two is busy");
}

TEST_F(CommandTest, WhatChangesTheDeviceIsJournaledWithItsLength) {
    std::vector<std::string> lines;
    device_.access()->journal.follow([&](std::uint64_t sequence, sim::Record const& record) {
        lines.push_back(sim::record_line(sequence, record));
    });
    done("set system.state 4");
    done("show system");
    refused("set system.state 7");
    done("step 1500ms");
    done("# nothing");
    EXPECT_EQ(lines, (std::vector<std::string>{"0.000000 0.000000 1 command - - - - - set system.state 4",
                                               "0.000000 1.500000 2 command - - - - - step 1500ms"}));
}

TEST_F(CommandTest, EmptyLinesAndCommentsDoNothing) {
    EXPECT_EQ(done(""), "");
    EXPECT_EQ(done("  \t\r"), "");
    EXPECT_EQ(done("# set system.state 4"), "");
}

TEST_F(CommandTest, BlanksAroundWordsDoNotCount) {
    EXPECT_EQ(done("  set\tsystem.state   \"5\" \r"), "");
    EXPECT_NE(done("show system.state").find("  5 warning  "), std::string::npos);
}

TEST_F(CommandTest, HelpExplainsACommand) {
    std::string const help = done("help show");
    EXPECT_EQ(help.find("show [--json | --schema] [PREFIX...]\n    the device's state"), 0U);
    EXPECT_NE(help.find("\nExamples: show system;"), std::string::npos);
    EXPECT_EQ(refused("help shwo"), "unknown command \"shwo\": did you mean show?");
    EXPECT_EQ(refused("help show set"), "usage: help [COMMAND]");
    std::istringstream all(done("help"));
    for (std::string line; std::getline(all, line);) {
        if (line.front() != ' ') {
            EXPECT_NE(done("help " + line.substr(0, line.find(' '))), "");
        }
    }
}

TEST_F(CommandTest, NearMissesAreTold) {
    EXPECT_EQ(refused("jounral follow"), "unknown command \"jounral\": did you mean journal?");
    EXPECT_EQ(refused("set system.stat 1"), "unknown property system.stat: did you mean system.state?");
    EXPECT_EQ(refused("show imx269"), "unknown property imx269: did you mean imx296?");
    EXPECT_EQ(refused("fault add rtu_t::get_exposre status 1"),
              "no operation is called rtu_t::get_exposre: did you mean rtu_t::get_exposure?");
    EXPECT_EQ(refused("fault add gyro_delegat_t drop"),
              "no callback is called gyro_delegat_t: did you mean gyro_delegate_t?");
    EXPECT_EQ(refused("fault add rtu_t::* stats 1"), "unknown word stats: did you mean status?");
}

TEST_F(CommandTest, OperationsAreListedByPatternOrPart) {
    EXPECT_EQ(done("operations rtu_t::get_exposure"),
              "rtu_t::get_exposure  call  arguments 0  values 1\n"
              "rtu_t::get_exposure_offset  call  arguments 0  values 1\n");
    EXPECT_EQ(done("operations *_left"), "gyro_alarm_t::on_position_left  callback  arguments 0  values 0\n");
    std::string const all = done("operations");
    EXPECT_NE(all.find("rtu_t::~rtu_t  destructor"), std::string::npos);
    EXPECT_EQ(done("operations *"), all);
    std::istringstream lines(all);
    for (std::string name, rest; lines >> name && std::getline(lines, rest);) {
        bool const is_callback = rest.find("callback") != std::string::npos;
        EXPECT_TRUE(run("fault add " + name + (is_callback ? " drop" : " delay 1")).ok) << name;
    }
    EXPECT_EQ(refused("operations get_exposre"), "no operation is called get_exposre");
    EXPECT_EQ(refused("operations a b"), "usage: operations [PATTERN]");
}

TEST_F(CommandTest, HelpNamesEveryVerb) {
    std::string const help = done("help");
    for (char const* usage :
         {"show [--json | --schema] [PREFIX...]", "set NAME VALUE", "fault add OPERATION", "fault list",
          "fault clear [ID]", "node remove PATH", "node restore PATH", "node list", "journal follow", "programs",
          "clock [real | scaled FACTOR | stepped]", "step DURATION", "operations [PATTERN]", "help [COMMAND]"}) {
        EXPECT_NE(help.find(usage), std::string::npos) << usage;
    }
}

TEST_F(CommandTest, BadCommandsAreRefusedAndChangeNothing) {
    std::string const before = done("show system") + done("fault list") + done("node list") + done("clock");
    for (char const* line : {"frobnicate",
                             "SHOW",
                             "show nothing",
                             "show --yaml",
                             "show system a",
                             "show --json --schema",
                             "show --json a b",
                             "set",
                             "set system.state",
                             "set system.state 7",
                             "set system.state 4 5",
                             "set system.alive true",
                             "set nothing 1",
                             "fault",
                             "fault add",
                             "fault add rtu_t::nothing status 1",
                             "fault add rtu_t::get_exposure",
                             "fault list all",
                             "fault clear x",
                             "fault clear 1",
                             "fault clear 1 2",
                             "node",
                             "node list all",
                             "node remove",
                             "node remove /etc/passwd",
                             "node restore /dev/imx296",
                             "node mend /dev/imx296",
                             "clock fast",
                             "clock real now",
                             "clock scaled",
                             "clock scaled 0",
                             "clock scaled -1",
                             "clock scaled x",
                             "clock scaled 1001",
                             "clock stepped 1",
                             "step",
                             "step 3",
                             "step 3 s",
                             "step -3s",
                             "step 86401s",
                             "programs all",
                             "set system.state 1x",
                             "set system.state 99999999999999999999",
                             "journal",
                             "journal stop",
                             "journal follow me",
                             "journal follow --every",
                             "journal --json follow",
                             "\"show",
                             "\x01\xFF\xFE",
                             "--json"}) {
        EXPECT_NE(refused(line), "") << line;
    }
    EXPECT_EQ(done("show system") + done("fault list") + done("node list") + done("clock"), before);
}

TEST_F(CommandTest, AStepIsRefusedWhileTheClockRuns) {
    done("clock scaled 0.001");
    EXPECT_EQ(refused("step 1s"), "the clock is not stepped");
}

TEST_F(CommandTest, AnUnknownCommandIsNamedReadably) {
    EXPECT_EQ(refused("a\x01"), "unknown command \"a\\x01\": try help");
}

TEST(WordsTest, QuotesKeepBlanksTogether) {
    Words words;
    EXPECT_TRUE(sim::split_words("a \"b c\"d \"\" \"e\\\"f\\\\\"", words));
    EXPECT_EQ(words, (Words{"a", "b cd", "", "e\"f\\"}));
}

TEST(WordsTest, JoinedWordsAreTakenApartAgain) {
    Words const words{"set", "a name", "", "quo\"te", "back\\slash", "\\", "plain"};
    Words again;
    EXPECT_TRUE(sim::split_words(sim::join_words(words), again));
    EXPECT_EQ(again, words);
}

TEST(WordsTest, AnOpenQuoteIsRefused) {
    Words words;
    EXPECT_FALSE(sim::split_words("a \"b", words));
}

}  // namespace
