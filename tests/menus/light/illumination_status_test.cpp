// Transcripts of the illumination menu's status readouts, and of how the module warms up and cools down.
#include "tests/menus/light/illumination_run.h"
#include "tests/menus/light/stepped_menu.h"

namespace {

using namespace light;

std::string flag_lines(std::vector<std::string> const& labels, std::vector<bool> const& flags) {
    std::string lines;
    for (std::size_t i = 0; i < labels.size(); ++i) {
        lines += labels[i] + (flags[i] ? ": TRUE \n" : ": FALSE \n");
    }
    return lines;
}

std::string spot_flags(std::vector<bool> const& flags) {
    return flag_lines({"ERROR", "CALIBRATION ERROR", "DRIVER ERROR", "DVSC", "LOW POWER", "BC", "OT", "TRG OVF"},
                      flags);
}

std::string guards(std::vector<bool> const& flags) {
    return flag_lines({"OT", "DVS", "AUTOCAL", "PVD"}, flags);
}

std::string segments(std::string const& states) {
    std::string lines;
    for (std::size_t i = 0; i < 4; ++i) {
        lines += "SEGMENT " + std::to_string(i) + " IS " + (states[i] == '1' ? "ON\n" : "OFF\n");
    }
    return lines;
}

std::string const kExposurePrompt = "set exposure mode: 0: CONTINOUS, 1: SWITCH, 2: FLASH\n";
std::string const kTimePrompt = "Exposure time is needed for FLASH mode, enter a value: \n";
std::string const kGuardPrompts =
    "set guards: OT: 0 FALSE, 1 TRUE\nset guards: DVS: 0 FALSE, 1 TRUE\nset guards: AUTOCAL: 0 FALSE, 1 TRUE\n"
    "set guards: PVD: 0 FALSE, 1 TRUE\n";

TEST(IlluminationStatusTest, ReadoutsShowTheModule) {
    expect_run(
        kIllumination,
        {
            {'d', "", "IS RGBW\n", {"illumination_t::is_rgbw_illumination() = 0 [true]"}},
            {'e',
             "",
             "CONTINUOUS MODE \nNOMINAL RANGE \n" + segments("0000"),
             {"illumination_t::get_spot_states() = 0 [{64, 48, 0, 0, 0, 0, 0}]"}},
            {'C',
             "2\n",
             "Enter a value for brightness: sensor set  brightness: 2\n",
             {"illumination_t::set_brightness(2) = 0"}},
            {'J', "2\n500\n", kExposurePrompt + kTimePrompt, {"illumination_t::set_exposure_mode(65534, 500) = 0"}},
            {'j', "", "exposure FLASH \n", {"illumination_t::get_exposure_mode() = 0 [65534]"}},
            {'e',
             "",
             "FLASH MODE \nDOUBLE RANGE \n" + segments("1111"),
             {"illumination_t::get_spot_states() = 0 [{128, 16, 1, 1, 1, 1, 0}]"}},
            {'J', "1\n", kExposurePrompt, {"illumination_t::set_exposure_mode(65535, 0) = 0"}},
            {'j', "", "exposure SWITCH \n", {"illumination_t::get_exposure_mode() = 0 [65535]"}},
            {'J', "0\n", kExposurePrompt, {"illumination_t::set_exposure_mode(0, 0) = 0"}},
            {'j', "", "exposure CONTINUOUS \n", {"illumination_t::get_exposure_mode() = 0 [0]"}},
            {'f',
             "",
             spot_flags({0, 0, 0, 0, 0, 0, 0, 0}),
             {"illumination_t::get_spot_flags() = 0 [{false, false, false, false, false, false, false, false}]"}},
            {'g', "", "ERROR CODE: 0\n", {"illumination_t::get_error_code() = 0 [0]"}},
            {'o', "", "internal temp: 25\n", {"illumination_t::get_internal_temperature() = 0 [25]"}},
            {'O', "", "external temp: 25\n", {"illumination_t::get_external_temperature() = 0 [25]"}},
            {'q', "", guards({1, 1, 1, 1}), {"illumination_t::get_guards() = 0 [{true, true, true, true}]"}},
            {'i', "", "", {"illumination_t::set_write_protection(false) = 0"}},
            {'Q', "2\n0\n0\n1\n", kGuardPrompts, {"illumination_t::set_guards({true, false, false, true}) = 0"}},
            {'q', "", guards({1, 0, 0, 1}), {"illumination_t::get_guards() = 0 [{true, false, false, true}]"}},
        });
}

TEST(IlluminationStatusTest, FailedReadoutsPrintNoughts) {
    for (std::string const status : {"-1", "3"}) {
        SCOPED_TRACE(status);
        std::string const end = "() = " + status;
        expect_run(
            kIllumination,
            {
                {'d', "", kFailure + "IS NOT RGBW\n", {"illumination_t::is_rgbw_illumination" + end}},
                {'e', "", kFailure + segments("0000"), {"illumination_t::get_spot_states" + end}},
                {'f', "", kFailure + spot_flags({0, 0, 0, 0, 0, 0, 0, 0}), {"illumination_t::get_spot_flags" + end}},
                {'g', "", kFailure + "ERROR CODE: 0\n", {"illumination_t::get_error_code" + end}},
                {'j', "", kFailure + "exposure CONTINUOUS \n", {"illumination_t::get_exposure_mode" + end}},
                {'J', "1\n", kExposurePrompt + kFailure, {"illumination_t::set_exposure_mode(65535, 0) = " + status}},
                {'o', "", kFailure + "internal temp: 0\n", {"illumination_t::get_internal_temperature" + end}},
                {'O', "", kFailure + "external temp: 0\n", {"illumination_t::get_external_temperature" + end}},
                {'q', "", kFailure + guards({0, 0, 0, 0}), {"illumination_t::get_guards" + end}},
                {'Q',
                 "1\n1\n1\n1\n",
                 kGuardPrompts + kFailure,
                 {"illumination_t::set_guards({true, true, true, true}) = " + status}},
            },
            with_scenario({"fault add illumination_t::*et_* status " + status,
                           "fault add illumination_t::is_rgbw_illumination status " + status}));
    }
}

TEST(IlluminationStatusTest, FlagsPrintInAnotherOrderThanTheyAreStored) {
    // Each flag alone, in the order of the record; where it is printed.
    std::size_t const printed_at[] = {0, 4, 7, 2, 1, 3, 5, 6};
    std::vector<Step> steps;
    std::vector<std::string> scenario;
    for (std::size_t stored = 0; stored < 8; ++stored) {
        std::vector<bool> printed(8);
        printed[printed_at[stored]] = true;
        std::string values;
        std::string record;
        for (std::size_t i = 0; i < 8; ++i) {
            values += (i == 0 ? "" : ",") + std::to_string(i == stored);
            record += std::string(i == 0 ? "" : ", ") + (i == stored ? "true" : "false");
        }
        scenario.push_back("fault add illumination_t::get_spot_flags count 1 value " + values);
        steps.push_back({'f', "", spot_flags(printed), {"illumination_t::get_spot_flags() = 0 [{" + record + "}]"}});
    }
    expect_run(kIllumination, steps, with_scenario(scenario));
}

TEST(IlluminationStatusTest, AnyByteButZeroIsATrueFlag) {
    expect_run(kIllumination,
               {
                   {'f',
                    "",
                    spot_flags({1, 0, 0, 0, 1, 0, 0, 1}),
                    {"illumination_t::get_spot_flags() = 0 [{true, true, true, false, false, false, false, false}]"}},
                   {'q',
                    "",
                    "OT: TRUE \nDVS: TRUE \nAUTOCAL: FALSE \nPVD: TRUE \n",
                    {"illumination_t::get_guards() = 0 [{true, true, false, true}]"}},
               },
               with_scenario({"fault add illumination_t::get_spot_flags value 2,128,255",
                              "fault add illumination_t::get_guards value 2,128,0,255"}));
}

TEST(IlluminationStatusTest, GuardsOfTheDeviceAreReadOut) {
    expect_run(kIllumination,
               {{'q',
                 "",
                 "OT: FALSE \nDVS: TRUE \nAUTOCAL: TRUE \nPVD: FALSE \n",
                 {"illumination_t::get_guards() = 0 [{false, true, true, false}]"}}},
               with_scenario({"set illumination.guards.ot false", "set illumination.guards.pvd false"}));
}

TEST(IlluminationStatusTest, GuardsPrintInTheOrderOfTheRecord) {
    std::vector<Step> steps;
    for (std::size_t guard = 0; guard < 4; ++guard) {
        std::vector<bool> set(4);
        set[guard] = true;
        std::string typed;
        std::string record;
        for (std::size_t i = 0; i < 4; ++i) {
            typed += i == guard ? "-7\n" : "0\n";
            record += std::string(i == 0 ? "" : ", ") + (i == guard ? "true" : "false");
        }
        steps.push_back({'Q', typed, kGuardPrompts, {"illumination_t::set_guards({" + record + "}) = 0"}});
        steps.push_back({'q', "", guards(set), {"illumination_t::get_guards() = 0 [{" + record + "}]"}});
    }
    steps.insert(steps.begin(), {'i', "", "", {"illumination_t::set_write_protection(false) = 0"}});
    expect_run(kIllumination, steps);
}

TEST(IlluminationStatusTest, StatesWithoutATextPrintTheirSegmentsAlone) {
    struct {
        std::string values;
        std::string record;
        std::string printed;
    } const states[] = {
        {"0,0x20,0,0,0,0,0", "{0, 32, 0, 0, 0, 0, 0}", segments("0000")},
        {"0xC0,0x30,1,0,0,1,0", "{192, 48, 1, 0, 0, 1, 0}", "CONTINUOUS MODE \nTRIPLE RANGE \n" + segments("1001")},
        {"0x80,0x10,0,255,2,0,0", "{128, 16, 0, 255, 2, 0, 0}", "FLASH MODE \nDOUBLE RANGE \n" + segments("0110")},
        {"0x40,0x30,0,0,0,0,9", "{64, 48, 0, 0, 0, 0, 9}", "CONTINUOUS MODE \nNOMINAL RANGE \n" + segments("0000")},
        {"0x40,1,0,0,0,0,0", "{64, 1, 0, 0, 0, 0, 0}", "NOMINAL RANGE \n" + segments("0000")},
        {"0x41,0x10,1,1,1,1,1", "{65, 16, 1, 1, 1, 1, 1}", "FLASH MODE \n" + segments("1111")},
    };
    std::vector<Step> steps;
    std::vector<std::string> scenario;
    for (auto const& state : states) {
        scenario.push_back("fault add illumination_t::get_spot_states count 1 value " + state.values);
        steps.push_back({'e', "", state.printed, {"illumination_t::get_spot_states() = 0 [" + state.record + "]"}});
    }
    expect_run(kIllumination, steps, with_scenario(scenario));
}

TEST(IlluminationStatusTest, ExposureChoicesBeyondTwoAreContinuousWithoutATime) {
    std::vector<Step> steps;
    for (std::string const typed : {"3", "0", "-1", "flash"}) {
        steps.push_back({'J', typed + "\n", kExposurePrompt, {"illumination_t::set_exposure_mode(0, 0) = 0"}});
    }
    steps.push_back({'J',
                     "2\n-1\n",
                     kExposurePrompt + kTimePrompt + kFailure,
                     {"illumination_t::set_exposure_mode(65534, 4294967295) = -1"}});
    steps.push_back({'J',
                     "2\nsoon\n",
                     kExposurePrompt + kTimePrompt + kFailure,
                     {"illumination_t::set_exposure_mode(65534, 0) = -1"}});
    expect_run(kIllumination, steps);
}

TEST(IlluminationStatusTest, ExposureCodeWithoutATextPrintsNothing) {
    expect_run(kIllumination, {{'j', "", "", {"illumination_t::get_exposure_mode() = 0 [1]"}}},
               with_scenario({"fault add illumination_t::get_exposure_mode value 1"}));
}

TEST(IlluminationStatusTest, NumbersPrintUnsigned) {
    expect_run(
        kIllumination,
        {{'g', "", "ERROR CODE: 4294967295\n", {"illumination_t::get_error_code() = 0 [4294967295]"}},
         {'o', "", "internal temp: 4000000000\n", {"illumination_t::get_internal_temperature() = 0 [4000000000]"}},
         {'O', "", "external temp: 7\n", {"illumination_t::get_external_temperature() = 0 [7]"}}},
        with_scenario({"fault add illumination_t::get_error_code value 4294967295",
                       "fault add illumination_t::get_internal_temperature value 4000000000",
                       "fault add illumination_t::get_external_temperature value 7"}));
}

TEST(IlluminationStatusTest, WhiteModuleIsNotRgbwAndRefusesColours) {
    expect_run(kIllumination,
               {{'d', "", "IS NOT RGBW\n", {"illumination_t::is_rgbw_illumination() = 0 [false]"}},
                {'s',
                 "5\n",
                 "Enter a value in range: 0 - 0\n",
                 {"illumination_t::get_brightness_limits_red() = -1", "illumination_t::set_brightness_red(5) = -1"}}},
               with_scenario({"set illumination.rgbw false"}));
}

TEST(IlluminationStatusTest, ProtectedSettingsAreRefusedUntilTheProtectionIsOff) {
    std::string const set_guards = "illumination_t::set_guards({true, true, true, true})";
    std::vector<Step> const refused = {
        {'L', "6\n", "set_dc_brightness_limit\n" + kFailure, {"illumination_t::set_dc_brightness_limit(6) = -1"}},
        {'M', "6\n", "set_flash_brightness_limit\n" + kFailure, {"illumination_t::set_flash_brightness_limit(6) = -1"}},
        {'P', "60\n", " SET OT OFF LIMIT: \n" + kFailure, {"illumination_t::set_ot_off_limit(60) = -1"}},
        {'r', "5\n", " SET OT DECREASE LIMIT: \n" + kFailure, {"illumination_t::set_limit_ot_decrease(5) = -1"}},
        {'Q', "1 1 1 1\n", kGuardPrompts + kFailure, {set_guards + " = -1"}},
    };
    std::vector<Step> steps = refused;
    steps.push_back({'i', "", "", {"illumination_t::set_write_protection(false) = 0"}});
    for (Step step : refused) {
        step.printed.erase(step.printed.size() - kFailure.size());
        step.calls[0].replace(step.calls[0].size() - 2, 2, "0");
        steps.push_back(step);
    }
    steps.push_back({'h', "", "", {"illumination_t::set_write_protection(true) = 0"}});
    steps.insert(steps.end(), refused.begin(), refused.end());
    expect_run(kIllumination, steps);
}

class WarmIlluminationTest : public light::SteppedMenuTest {
protected:
    WarmIlluminationTest() : SteppedMenuTest(kIllumination) {}
};

TEST_F(WarmIlluminationTest, FullLightHeatsToTheLimitGoesOffAndComesBackCool) {
    std::string const shining = "CONTINUOUS MODE \nNOMINAL RANGE \n" + segments("1111");
    std::string const dark = "CONTINUOUS MODE \nNOMINAL RANGE \n" + segments("0000");
    expect('C', "14\n", "Enter a value for brightness: sensor set  brightness: 14\n");
    expect('e', "", shining);
    session.control("step 60s");
    expect('o', "", "internal temp: 56\n");  // 25 + 80 (1 - exp(-60/120))
    expect('O', "", "external temp: 28\n");  // 25 + 30 (1 - exp(-60/600))
    session.control("step 106s");
    expect('o', "", "internal temp: 85\n");
    expect('e', "", shining);
    expect('f', "", spot_flags({0, 0, 0, 0, 0, 0, 0, 0}));
    session.control("step 1s");  // the limit is reached after 120 ln 4 = 166.4 s
    expect('e', "", dark);
    expect('f', "", spot_flags({1, 0, 0, 0, 0, 0, 1, 0}));
    expect('g', "", "ERROR CODE: 7\n");
    session.control("step 20s");
    expect('f', "", spot_flags({1, 0, 0, 0, 0, 0, 1, 0}));
    session.control("step 2s");  // and the decrease 120 ln(60/50) = 21.9 s later
    expect('f', "", spot_flags({0, 0, 0, 0, 0, 0, 0, 0}));
    expect('g', "", "ERROR CODE: 0\n");
    expect('e', "", shining);
}

TEST_F(WarmIlluminationTest, WithoutTheGuardItIsReportedAndShinesOn) {
    expect('i', "", "");
    expect('Q', "0 1 1 1\n", kGuardPrompts);
    expect('C', "14\n", "Enter a value for brightness: sensor set  brightness: 14\n");
    session.control("step 3600s");
    expect('o', "", "internal temp: 105\n");
    expect('f', "", spot_flags({1, 0, 0, 0, 0, 0, 1, 0}));
    expect('e', "", "CONTINUOUS MODE \nNOMINAL RANGE \n" + segments("1111"));
}

TEST_F(WarmIlluminationTest, LowerLimitAndDecreaseSwitchEarlier) {
    expect('i', "", "");
    expect('P', "50\n", " SET OT OFF LIMIT: \n");
    expect('r', "20\n", " SET OT DECREASE LIMIT: \n");
    expect('C', "14\n", "Enter a value for brightness: sensor set  brightness: 14\n");
    session.control("step 45s");  // 120 ln(80/55) = 44.96 s
    expect('f', "", spot_flags({1, 0, 0, 0, 0, 0, 1, 0}));
    session.control("step 192s");  // 120 ln(25/5) = 193.1 s later
    expect('f', "", spot_flags({1, 0, 0, 0, 0, 0, 1, 0}));
    session.control("step 2s");
    expect('f', "", spot_flags({0, 0, 0, 0, 0, 0, 0, 0}));
}

// No sensor takes exposures that fast: the unit alone does.
TEST_F(WarmIlluminationTest, FlashLongerThanTheExposuresAreApartOverflows) {
    session.control("fit none");
    session.control("set rtu.exposure.time 5000");
    expect('C', "14\n", "Enter a value for brightness: sensor set  brightness: 14\n");
    expect('J', "2\n10000\n", kExposurePrompt + kTimePrompt);
    expect('f', "", spot_flags({0, 0, 0, 0, 0, 0, 0, 0}));
    session.type("x");
    session.wait_for("Your Option = x\n" + screens::main_menu());
    session.type("bt 101\n");
    session.wait_for("sensor set  fps: 101\n");
    session.type("xc");
    session.wait_for(screens::main_menu('c'));
    session.control("step 1s");
    expect('f', "", spot_flags({1, 0, 0, 0, 0, 0, 0, 1}));
}

}  // namespace
