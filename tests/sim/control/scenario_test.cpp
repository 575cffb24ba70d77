// Tests of scenario files.
#include "sim/control/scenario.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "tests/sim/temporary_directory.h"

namespace {

using namespace std::chrono_literals;
using sim::Device;
using sim::Scenario;

Scenario parse(std::string const& text) {
    std::istringstream lines(text);
    return sim::parse_scenario(lines);
}

class ScenarioTest : public testing::Test {
protected:
    sim::Error load(std::string const& text, Scenario& scenario) {
        std::ofstream(path_) << text;
        return sim::load_scenario(path_, scenario);
    }
    hal::device_state_te state() {
        hal::device_state_te state{};
        device_.access()->system.get_state(state);
        return state;
    }

    Device device_{std::make_unique<sim::MemoryFileSystem>()};
    TemporaryDirectory directory_;
    std::string path_ = directory_.path() + "/scenario";
};

TEST_F(ScenarioTest, LinesHaveAnOptionalTime) {
    Scenario const scenario = parse("# a comment\n\nset system.state 2\n  1.5s set system.state 3\n250ms step 1s\n");
    ASSERT_EQ(scenario.size(), 3U);
    EXPECT_EQ(scenario[0].number, 3);
    EXPECT_FALSE(scenario[0].due);
    EXPECT_EQ(scenario[0].command, "set system.state 2");
    EXPECT_EQ(scenario[1].number, 4);
    EXPECT_EQ(scenario[1].due, 1500ms);
    EXPECT_EQ(scenario[1].command, " set system.state 3");
    EXPECT_EQ(scenario[2].due, 250ms);
}

TEST_F(ScenarioTest, APlusCountsFromTheTimeOfTheLineBefore) {
    Scenario const scenario =
        parse("2s help\n+500ms help\n# no line\n\n+0s help\n1s help\n+1us help\nhelp\n+3s help\n");
    ASSERT_EQ(scenario.size(), 7U);
    EXPECT_EQ(scenario[1].due, 2500ms);
    EXPECT_EQ(scenario[1].command, " help");
    EXPECT_EQ(scenario[2].due, 2500ms);
    EXPECT_EQ(scenario[4].due, 1s + 1us);
    EXPECT_EQ(scenario[6].due, 3s) << "after a line without a time from the start on";
    EXPECT_EQ(parse("+2s help\n")[0].due, 2s);
}

TEST_F(ScenarioTest, LinesWithAPlusRunAtTheirTime) {
    Scenario scenario;
    ASSERT_EQ(load("1s set system.state 5\n+1s set system.state 6\n", scenario), "");
    ASSERT_EQ(sim::start_scenario(scenario, device_), "");
    device_.timeline.step(1999ms);
    EXPECT_EQ(state(), hal::device_state_te::warning);
    device_.timeline.step(1ms);
    EXPECT_EQ(state(), hal::device_state_te::error);
}

TEST_F(ScenarioTest, ATimeThatIsNoneIsABadCommand) {
    Scenario scenario;
    for (std::string const word : {"+", "+1", "++1s", "+-1s", "-1s", "+x"}) {
        EXPECT_EQ(load("1s help\n" + word + " help\n", scenario),
                  "scenario " + path_ + ", line 2: unknown command \"" + word + "\": try help");
    }
    EXPECT_EQ(load("86400s help\n+0s help\n", scenario), "");
    EXPECT_NE(load("86400s help\n+1us help\n", scenario), "") << "beyond a day";
}

TEST_F(ScenarioTest, UntimedLinesRunAtOnceAndTimedOnesAtTheirTime) {
    Scenario scenario;
    ASSERT_EQ(load("2s set system.state 6\n1s set system.state 5\nset system.state 3\n", scenario), "");
    ASSERT_EQ(sim::start_scenario(scenario, device_), "");
    EXPECT_EQ(state(), hal::device_state_te::running);
    device_.timeline.step(1500ms);
    EXPECT_EQ(state(), hal::device_state_te::warning);
    device_.timeline.step(1s);
    EXPECT_EQ(state(), hal::device_state_te::error);
}

TEST_F(ScenarioTest, AnExpectationIsNotHeldAgainstTheRehearsal) {
    Scenario scenario;
    ASSERT_EQ(load("1s expect system.state == warning\n", scenario), "");
    EXPECT_EQ(load("1s expect system.state == warm\n", scenario).find("scenario " + path_ + ", line 1: system.state: "),
              0U);
}

TEST_F(ScenarioTest, AnExpectationThatFailsIsToldWithItsTime) {
    Scenario scenario;
    ASSERT_EQ(load("1s expect system.state == boot\n1500ms expect system.state == warning\n", scenario), "");
    std::string failure;
    ASSERT_EQ(sim::start_scenario(scenario, device_, [&](sim::Error const& error) { failure = error; }), "");
    device_.timeline.step(1s);
    EXPECT_EQ(failure, "");
    device_.timeline.step(1s);
    EXPECT_EQ(failure, "line 2: at 1.500000 s expected system.state == warning, but it is 1 boot");
}

TEST_F(ScenarioTest, AnEmptyFileIsAScenario) {
    Scenario scenario;
    EXPECT_EQ(load("", scenario), "");
    EXPECT_TRUE(scenario.empty());
}

TEST_F(ScenarioTest, ABadLineIsNamed) {
    Scenario scenario;
    EXPECT_EQ(load("set system.state 3\n\n1s set system.alive true\n", scenario),
              "scenario " + path_ + ", line 3: system.alive is read only");
    EXPECT_EQ(load("1 set system.state 3\n", scenario),
              "scenario " + path_ + ", line 1: unknown command \"1\": try help");
    EXPECT_EQ(load("5s\n6s nonsense", scenario),
              "scenario " + path_ + ", line 2: unknown command \"nonsense\": try help");
    EXPECT_EQ(load("journal follow\n", scenario), "scenario " + path_ + ", line 1: journal follow needs a connection");
}

TEST_F(ScenarioTest, LinesAreJudgedInTheOrderOfTheirTimes) {
    Scenario scenario;
    EXPECT_EQ(load("2s node restore /dev/imx296\n1s node remove /dev/imx296\n", scenario), "");
    EXPECT_NE(load("1s node restore /dev/imx296\n2s node remove /dev/imx296\n", scenario), "");
}

TEST_F(ScenarioTest, LinesComeBeforeWhatFallsDueAtTheirTime) {
    Scenario scenario;
    EXPECT_EQ(load("1s press 1s\n2001ms button down\n", scenario), "");
    EXPECT_EQ(load("1s press 1s\n2s button down\n", scenario),
              "scenario " + path_ + ", line 2: the button is pressed already");
}

TEST_F(ScenarioTest, TimesPassAlsoWhereAClockThatRunsIsChosen) {
    Scenario scenario;
    EXPECT_EQ(load("clock real\n5s press 1s\n7s press 1s\n", scenario), "");
    EXPECT_NE(load("clock real\n5s press 1s\n5.5s press 1s\n", scenario), "") << "pressed already";
    EXPECT_NE(load("clock scaled 10\nstep 1s\n", scenario), "") << "not stepped";
}

TEST_F(ScenarioTest, AFileThatCannotBeReadIsToldWithItsReason) {
    Scenario scenario;
    EXPECT_EQ(sim::load_scenario("/nowhere", scenario), "cannot read the scenario /nowhere: No such file or directory");
    EXPECT_NE(sim::load_scenario(directory_.path(), scenario), "") << "a directory";
}

TEST_F(ScenarioTest, TheFirstErrorAtTheStartEndsIt) {
    EXPECT_EQ(sim::start_scenario(parse("set system.state 3\nnonsense\nset system.state 4\n"), device_),
              "line 2: unknown command \"nonsense\": try help");
    EXPECT_EQ(state(), hal::device_state_te::running);
}

TEST_F(ScenarioTest, ALineWithATimeDoesNotStepTheClock) {
    Scenario scenario;
    std::string const error = load("1s step 1s\n", scenario);
    EXPECT_NE(error.find("line 1: a line with a time does not step the clock"), std::string::npos) << error;
    EXPECT_EQ(load("clock stepped\nstep 1s\n", scenario), "");
}

using ScenarioDeathTest = ScenarioTest;

TEST_F(ScenarioDeathTest, ATimedLineThatFailsEndsTheProcess) {
    Scenario const scenario = parse("1s node restore /dev/imx296\n");
    auto const run = [&] {
        sim::start_scenario(scenario, device_);
        device_.timeline.step(2s);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(125), "r47-sim: scenario line 1: /dev/imx296 is there already");
}

}  // namespace
