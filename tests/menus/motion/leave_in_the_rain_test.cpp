// Menus that are left while the library calls back, from all of its threads.
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <set>
#include <utility>

#include "tests/menus/motion/motion_run.h"
#include "tests/support/screens/motion.h"

namespace {

using namespace motion;
using namespace screens;
using support::Calls;
using support::ConsoleSession;
using support::SessionOptions;

struct RainyMenu {
    Menu const& menu;
    Calls callbacks;  // that come in the rain, of every object that has one
};

void PrintTo(RainyMenu const& rainy, std::ostream* out) {
    *out << rainy.menu.name;
}

std::string const kReached = "callback gyro_alarm_t::on_position_reached()";
std::string const kLeft = "callback gyro_alarm_t::on_position_left()";
std::string const kSampled = "callback gyro_delegate_t(37)";
std::string const kTaught = "callback button_t::release_records(1)";

RainyMenu const kMenus[] = {
    {kAlarm, {kReached, kLeft, kTaught}},
    {kDelegate, {kSampled}},
    {kDelegateAndAlarm, {kReached, kLeft, kSampled, kTaught}},
    {kButton,
     {"callback button_t::press_records(1)", "callback button_t::press_records(3)",
      "callback button_t::release_records(3)"}},
};

// A device that is tilted and its button pressed a hundred times as fast as by hand. The objects that go last take
// long, so that a callback of those that went before them would still come.
class RainTest : public testing::Test {
protected:
    explicit RainTest(Calls callbacks, SessionOptions const& options = {})
        : session(fast(options)), callbacks_(std::move(callbacks)) {}

    // One drop: tilts the device, and presses its button unless it is pressed still.
    void rain() {
        upright_ = !upright_;
        session.control(upright_ ? "tilt 0 0 0" : "tilt 0 40 0");
        if (!is_pressed(session)) {
            session.control("press 5s");
        }
    }

    // How often the callback came that came least.
    long times_called() const {
        Calls const calls = session.calls();
        auto least = static_cast<long>(calls.size());
        for (std::string const& callback : callbacks_) {
            least = std::min<long>(least, std::count(calls.begin(), calls.end(), callback));
        }
        return least;
    }

    void rain_until_called(long times) {
        support::look_until(
            [&] {
                rain();
                return times_called() >= times;
            },
            "callbacks");
    }

    // Leaves the menu, which holds and releases its callbacks first, while it rains on.
    void leave() {
        constexpr int kDrops = 20;
        session.type("ttx");
        for (int drop = 0; drop < kDrops; ++drop) {
            rain();
        }
    }

    void wait_for_the_end_of_the_press() {
        support::look_until([this] { return !is_pressed(session); }, "the end of the press");
    }

    ConsoleSession session;

private:
    static SessionOptions fast(SessionOptions options) {
        options.clock = "scaled 100";
        options.scenario = {"fault add button_t::~button_t delay 1000", "fault add gyro_t::~gyro_t delay 1000",
                            "fault add rtu_t::~rtu_t delay 1000"};
        return options;
    }

    Calls const callbacks_;
    bool upright_ = true;
};

// Each line of the journal is of an object that was built and has not gone.
void expect_living_objects(std::vector<std::string> const& journal) {
    std::set<int> living{0};  // operations without an object
    for (std::string const& line : journal) {
        int const object = support::object_of(line);
        std::string const call = support::call_of(line);
        std::string const operation = call.substr(0, call.find('('));
        std::size_t const colons = operation.find("::");
        if (colons != std::string::npos && operation.substr(0, colons) == operation.substr(colons + 2)) {
            living.insert(object);
        }
        EXPECT_EQ(living.count(object), 1U) << line;
        if (operation.find("::~") != std::string::npos) {
            living.erase(object);
        }
    }
    EXPECT_EQ(living, std::set<int>{0});
}

class LeaveInTheRainTest : public RainTest, public testing::WithParamInterface<RainyMenu> {
protected:
    LeaveInTheRainTest() : RainTest(GetParam().callbacks) {}
};

TEST_P(LeaveInTheRainTest, NothingIsCalledWithoutItsObject) {
    constexpr int kVisits = 8;
    constexpr int kCallsOfAVisit = 2;
    long called = 0;
    for (int visit = 0; visit < kVisits; ++visit) {
        session.type(GetParam().menu.entry_keys());
        session.wait_for(GetParam().menu.prompt());
        ASSERT_NO_FATAL_FAILURE(rain_until_called(called + kCallsOfAVisit));
        leave();
        session.wait_for(main_menu());
        ASSERT_NO_FATAL_FAILURE(wait_for_the_end_of_the_press());
        called = times_called();
    }
    session.type("x");
    EXPECT_EQ(session.wait_for_exit(), 0);
    EXPECT_EQ(session.errors(), "");
    EXPECT_GE(times_called(), kVisits * kCallsOfAVisit);
    expect_living_objects(session.journal());
}

INSTANTIATE_TEST_SUITE_P(Menus, LeaveInTheRainTest, testing::ValuesIn(kMenus),
                         [](auto const& rainy) { return std::string(rainy.param.menu.name); });

// Where its button is the device's.
class LeaveLegacyAlarmInTheRainTest : public RainTest {
protected:
    LeaveLegacyAlarmInTheRainTest() : RainTest({"callback gyro_t::callback_records(0, 37)", kTaught}, legacy()) {}

private:
    static SessionOptions legacy() {
        SessionOptions options = of_another_variant();
        options.entry_point = "alarm_old_waits";
        return options;
    }
};

TEST_F(LeaveLegacyAlarmInTheRainTest, NothingIsCalledWithoutItsObject) {
    session.wait_for(kLegacyAlarmMenu);
    ASSERT_NO_FATAL_FAILURE(rain_until_called(10));
    session.type("ttx");
    EXPECT_EQ(session.wait_for_exit(), 0);
    EXPECT_EQ(session.errors(), "");
    expect_living_objects(session.journal());
}

}  // namespace
