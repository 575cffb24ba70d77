// The ten actions of the button test, and the records that it fills.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "menus/motion/button.h"

namespace {

struct Action {
    char const* name;
    void (*run)();
    bool has_light_bar;
};

class ButtonActionTest : public testing::TestWithParam<Action> {
protected:
    static std::string printed(void (*run)()) {
        testing::internal::CaptureStdout();
        run();
        return testing::internal::GetCapturedStdout();
    }

    static std::string trace(std::string const& name) { return "###   void " + name + "() called \n"; }
};

TEST_P(ButtonActionTest, PrintsItsNameAndSkipsAnUnsetAction) {
    EXPECT_EQ(printed(GetParam().run), trace(GetParam().name));
}

TEST_P(ButtonActionTest, RunsItsOwnLightBarAction) {
    std::string log;
    g_lightbar_p1 = [&] { log += "1"; };
    g_lightbar_p2 = [&] { log += "2"; };
    g_lightbar_p3 = [&] { log += "3"; };
    g_lightbar_p4 = [&] { log += "4"; };
    EXPECT_EQ(printed(GetParam().run), trace(GetParam().name));
    std::string const name = GetParam().name;
    EXPECT_EQ(log, GetParam().has_light_bar ? name.substr(name.size() - 1) : "");
    for (auto* action : {&g_lightbar_p1, &g_lightbar_p2, &g_lightbar_p3, &g_lightbar_p4}) {
        *action = nullptr;
    }
}

INSTANTIATE_TEST_SUITE_P(, ButtonActionTest,
                         testing::Values(Action{"testButtonp1", testButtonp1, true},
                                         Action{"testButtonp2", testButtonp2, true},
                                         Action{"testButtonp3", testButtonp3, true},
                                         Action{"testButtonp4", testButtonp4, true},
                                         Action{"testButtonp5", testButtonp5, false},
                                         Action{"testButtonRelease1", testButtonRelease1, false},
                                         Action{"testButtonRelease2", testButtonRelease2, false},
                                         Action{"testButtonRelease3", testButtonRelease3, false},
                                         Action{"testButtonRelease4", testButtonRelease4, false},
                                         Action{"testButtonRelease5", testButtonRelease5, false}),
                         [](auto const& action) { return action.param.name; });

// "2000 testButtonp2": a record's hold time and the action it runs, "-" for none.
std::string text(hal::button_t::action_record const& record) {
    auto const* const function = record.action.target<void (*)()>();
    std::string name = record.action ? "?" : "-";
    for (auto const& [known, run] :
         {std::pair("p2", &testButtonp2), std::pair("p4", &testButtonp4), std::pair("Release2", &testButtonRelease2),
          std::pair("Release3", &testButtonRelease3), std::pair("Release5", &testButtonRelease5)}) {
        name = function != nullptr && *function == run ? known : name;
    }
    return std::to_string(record.hold_time_ms) + " " + name;
}

TEST(ButtonRecordsTest, LastReleaseRecordGoesToIndex3) {
    hal::button_t button("/dev/none", 82, true, 2000);
    button.press_records[0].action = [] {};
    button.release_records[4] = {77, [] {}};
    testbutton_init(button);
    std::string press;
    std::string release;
    for (auto const& record : button.press_records) {
        press += text(record) + ", ";
    }
    for (auto const& record : button.release_records) {
        release += text(record) + ", ";
    }
    EXPECT_EQ(press, "50 -, 2000 p2, 3000 -, 4000 p4, 0 -, ");
    EXPECT_EQ(release, "50 -, 1250 Release2, 2250 Release3, 4250 Release5, 77 ?, ");
}

}  // namespace
