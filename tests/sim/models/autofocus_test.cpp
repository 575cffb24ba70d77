// Tests of the autofocus module's model.
#include "sim/models/autofocus.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <optional>
#include <utility>

#include "sim/control/value_words.h"
#include "sim/device/describe.h"

namespace {

using sim::Autofocus;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::seconds;

int position_of(Autofocus const& autofocus) {
    unsigned short position = 0;
    EXPECT_EQ(autofocus.get_position(position), 0);
    return position;
}

TEST(AutofocusTest, MotorIsOnItsWayAndArrives) {
    Autofocus autofocus;
    EXPECT_EQ(autofocus.set_position(1100), 0);
    EXPECT_EQ(position_of(autofocus), 100);
    autofocus.advance(milliseconds(250));
    EXPECT_DOUBLE_EQ(autofocus.position(), 350.0);
    autofocus.advance(milliseconds(250));
    autofocus.advance(milliseconds(249));
    EXPECT_DOUBLE_EQ(autofocus.position(), 350.0) << "that time has passed";
    EXPECT_EQ(position_of(autofocus), 350);
    EXPECT_TRUE(autofocus.moving());
    autofocus.advance(seconds(1));
    EXPECT_EQ(position_of(autofocus), 1100);
    EXPECT_FALSE(autofocus.moving());
    EXPECT_EQ(autofocus.set_position(600), 0);
    autofocus.advance(milliseconds(1200));
    EXPECT_EQ(position_of(autofocus), 900);
    autofocus.advance(seconds(9));
    EXPECT_EQ(position_of(autofocus), 600);
}

TEST(AutofocusTest, UnreachableTargetIsRefusedAndFlaggedUntilAReachableOne) {
    Autofocus autofocus;
    for (unsigned int position : {99U, 2901U, 4294967291U}) {
        SCOPED_TRACE(position);
        errno = 0;
        EXPECT_EQ(autofocus.set_position(position), -1);
        EXPECT_EQ(errno, ERANGE);
        EXPECT_TRUE(autofocus.errors().target_unreachable);
        EXPECT_FALSE(autofocus.moving());
    }
    EXPECT_EQ(autofocus.set_position(2900), 0);
    EXPECT_FALSE(autofocus.errors().target_unreachable);
}

TEST(AutofocusTest, MaintenanceReachesTheStopsAndLeavingItDrivesBack) {
    Autofocus autofocus;
    unsigned short min = 0;
    unsigned short max = 0;
    EXPECT_EQ(autofocus.get_position_limits(min, max), 0);
    EXPECT_EQ(min, 100);
    EXPECT_EQ(max, 2900);
    autofocus.set_maintenance_mode(true);
    autofocus.get_position_limits(min, max);
    EXPECT_EQ(min, 0);
    EXPECT_EQ(max, 3000);
    EXPECT_EQ(autofocus.set_position(0), 0);
    autofocus.advance(seconds(1));
    EXPECT_EQ(position_of(autofocus), 0);
    autofocus.set_maintenance_mode(false);
    autofocus.advance(seconds(2));
    EXPECT_EQ(position_of(autofocus), 100);
}

TEST(AutofocusTest, MillimetresGoByTheTableOfTheDeviceType) {
    struct {
        char const* type;
        int min;
        int max;
    } const types[] = {{"R47XXXX1", 65, 1000}, {"R47XXXX2", 110, 1500}, {"R47XXXX3", 270, 3000}};
    for (auto const& type : types) {
        SCOPED_TRACE(type.type);
        Autofocus autofocus;
        ASSERT_EQ(autofocus.set_device_type(type.type), 0);
        unsigned short min = 0;
        unsigned short max = 0;
        EXPECT_EQ(autofocus.get_position_limits_mm(type.type, min, max), 0);
        EXPECT_EQ(min, type.min);
        EXPECT_EQ(max, type.max);
        sim::Time now{0};
        for (int mm : {type.min, (type.min + type.max) / 2, type.max, 333}) {
            SCOPED_TRACE(mm);
            EXPECT_EQ(autofocus.set_position_mm(static_cast<unsigned int>(mm)), 0);
            now += seconds(5);
            autofocus.advance(now);
            unsigned short reached = 0;
            EXPECT_EQ(autofocus.get_position_mm(reached), 0);
            EXPECT_NEAR(reached, mm, 5);
        }
        EXPECT_EQ(autofocus.set_position_mm(static_cast<unsigned int>(type.min - 1)), -1);
        EXPECT_TRUE(autofocus.errors().target_unreachable);
        EXPECT_EQ(autofocus.set_position_mm(static_cast<unsigned int>(type.max + 1)), -1);
        EXPECT_EQ(autofocus.set_position_mm(4294967295U), -1);
    }
}

struct Focus {
    unsigned int mm;
    unsigned int step;
};

struct TypeFacts {
    char const* word;
    char const* number;
    int frequency_hz;
    Focus table[6];
};

constexpr TypeFacts kTypes[] = {
    {"R47XXXX1", "1", 183, {{1000, 100}, {500, 365}, {250, 895}, {120, 1795}, {80, 2475}, {65, 2900}}},
    {"R47XXXX2", "2", 176, {{1500, 100}, {700, 380}, {400, 800}, {220, 1500}, {150, 2190}, {110, 2900}}},
    {"R47XXXX3", "3", 158, {{3000, 100}, {1500, 340}, {800, 850}, {500, 1410}, {350, 2130}, {270, 2900}}},
};

TEST(AutofocusTest, TheDeviceTypeIsItsWordOrItsNumberInTheMenu) {
    for (auto const& type : kTypes) {
        SCOPED_TRACE(type.word);
        Autofocus autofocus;
        unsigned short min = 0;
        unsigned short max = 0;
        EXPECT_EQ(autofocus.get_position_limits_mm(type.number, min, max), 0);
        EXPECT_EQ(min, type.table[5].mm);
        EXPECT_EQ(max, type.table[0].mm);
        EXPECT_EQ(autofocus.device_type(), "R47XXXX1");
        EXPECT_EQ(autofocus.set_device_type(type.number), 0);
        EXPECT_EQ(autofocus.device_type(), type.word);
        autofocus.calibrate();
        autofocus.advance(seconds(2));
        EXPECT_EQ(autofocus.calibration_frequency(), type.frequency_hz);
    }
}

TEST(AutofocusTest, StepsAndMillimetresMeetInEveryEntryOfTheTable) {
    for (auto const& type : kTypes) {
        Autofocus autofocus;
        autofocus.set_device_type(type.word);
        sim::Time now{0};
        for (auto const& focus : type.table) {
            SCOPED_TRACE(focus.mm);
            EXPECT_EQ(autofocus.set_position_mm(focus.mm), 0);
            EXPECT_EQ(autofocus.target(), focus.step);
            now += seconds(5);
            autofocus.advance(now);
            unsigned short mm = 0;
            EXPECT_EQ(autofocus.get_position_mm(mm), 0);
            EXPECT_EQ(mm, focus.mm);
        }
    }
}

TEST(AutofocusTest, TheTableIsStraightBetweenItsEntriesAndGoesOnBeyondThem) {
    Autofocus autofocus;
    autofocus.set_maintenance_mode(true);
    sim::Time now{0};
    for (auto const& [step, mm] :
         {std::pair{232U, 751}, {0U, 1189}, {630U, 375}, {2135U, 100}, {2700U, 72}, {3000U, 61}}) {
        SCOPED_TRACE(step);
        EXPECT_EQ(autofocus.set_position(step), 0);
        now += seconds(5);
        autofocus.advance(now);
        unsigned short shown = 0;
        EXPECT_EQ(autofocus.get_position_mm(shown), 0);
        EXPECT_EQ(shown, mm);
    }
    EXPECT_EQ(autofocus.set_position_mm(750), 0);
    EXPECT_EQ(autofocus.target(), 233U);
    EXPECT_EQ(autofocus.set_position_mm(70), 0);
    EXPECT_EQ(autofocus.target(), 2758U);
}

TEST(AutofocusTest, UnknownDeviceTypeIsRefused) {
    Autofocus autofocus;
    unsigned short min = 7;
    unsigned short max = 8;
    for (char const* word : {"", "0", "4", "12", "R47XXXX", "R47XXXX4", "r47xxxx1"}) {
        SCOPED_TRACE(word);
        errno = 0;
        EXPECT_EQ(autofocus.get_position_limits_mm(word, min, max), -1);
        EXPECT_EQ(errno, EINVAL);
        errno = 0;
        EXPECT_EQ(autofocus.set_device_type(word), -1);
        EXPECT_EQ(errno, EINVAL);
    }
    EXPECT_EQ(min, 7);
    EXPECT_EQ(max, 8);
    EXPECT_EQ(autofocus.device_type(), "R47XXXX1");
}

TEST(AutofocusTest, EmptyTableKnowsNoMillimetres) {
    Autofocus autofocus;
    autofocus.module.table_filled = false;
    unsigned short mm = 0;
    unsigned short max = 0;
    errno = 0;
    EXPECT_EQ(autofocus.get_position_mm(mm), -1);
    EXPECT_EQ(errno, ENODATA);
    EXPECT_EQ(autofocus.set_position_mm(300), -1);
    EXPECT_EQ(autofocus.get_position_limits_mm("R47XXXX1", mm, max), -1);
    EXPECT_TRUE(autofocus.errors().empty_calibration_table);
}

TEST(AutofocusTest, CalibrationTakesItsTimeAndYieldsTheFrequency) {
    Autofocus autofocus;
    unsigned short frequency = 0;
    EXPECT_EQ(autofocus.get_calibration_frequency(frequency), -1);
    EXPECT_TRUE(autofocus.errors().no_valid_frequency);
    EXPECT_EQ(autofocus.calibrate(), 0);
    autofocus.advance(milliseconds(1999));
    EXPECT_EQ(autofocus.get_calibration_frequency(frequency), -1);
    errno = 0;
    EXPECT_EQ(autofocus.set_position(500), -1);
    EXPECT_EQ(errno, EBUSY);
    EXPECT_EQ(autofocus.calibrate(), -1);
    autofocus.advance(seconds(2));
    EXPECT_EQ(autofocus.get_calibration_frequency(frequency), 0);
    EXPECT_EQ(frequency, 183);
    EXPECT_FALSE(autofocus.errors().no_valid_frequency);
    EXPECT_EQ(autofocus.set_position(500), 0);
}

TEST(AutofocusTest, BothPositionCommandsAreRefusedAlike) {
    Autofocus autofocus;
    autofocus.calibrate();
    for (unsigned int const wanted : {500U, 5000U}) {
        errno = 0;
        EXPECT_EQ(autofocus.set_position(wanted), -1);
        EXPECT_EQ(errno, EBUSY);
        errno = 0;
        EXPECT_EQ(autofocus.set_position_mm(wanted), -1);
        EXPECT_EQ(errno, EBUSY);
        EXPECT_FALSE(autofocus.errors().target_unreachable);
    }
    autofocus.advance(seconds(2));
    errno = 0;
    EXPECT_EQ(autofocus.set_position_mm(5000), -1);
    EXPECT_EQ(errno, ERANGE);
    EXPECT_EQ(autofocus.target(), 100U);
    EXPECT_EQ(autofocus.set_position_mm(500), 0);
    EXPECT_FALSE(autofocus.errors().target_unreachable);
    autofocus.set_maintenance_mode(true);
    EXPECT_EQ(autofocus.set_position_mm(64), -1) << "the table ends";
    EXPECT_EQ(autofocus.set_position_mm(1001), -1);
    EXPECT_EQ(autofocus.set_position(3000), 0);
    EXPECT_EQ(autofocus.set_position(3001), -1);
}

TEST(AutofocusTest, FlagsStayWhileTheMotorIsBusy) {
    Autofocus autofocus;
    autofocus.set_position(5000);
    autofocus.calibrate();
    autofocus.set_position(500);
    EXPECT_TRUE(autofocus.errors().target_unreachable);
}

TEST(AutofocusTest, CalibrationNeedsAHealthyMirror) {
    Autofocus autofocus;
    autofocus.module.mirror_healthy = false;
    autofocus.calibrate();
    autofocus.advance(seconds(2));
    EXPECT_TRUE(autofocus.errors().mirror_failure);
    EXPECT_TRUE(autofocus.errors().no_valid_frequency);
    autofocus.module.mirror_fitted = false;
    autofocus.calibrate();
    autofocus.advance(seconds(4));
    EXPECT_FALSE(autofocus.errors().mirror_failure);
    EXPECT_TRUE(autofocus.errors().no_mirror);
    EXPECT_TRUE(autofocus.errors().no_valid_frequency);
}

TEST(AutofocusTest, StuckMotorIsFoundAndTheResetClearsIt) {
    Autofocus autofocus;
    autofocus.module.motor_free = false;
    EXPECT_EQ(autofocus.set_position(500), 0);
    autofocus.advance(microseconds(499999));
    EXPECT_FALSE(autofocus.errors().motor_stuck);
    autofocus.advance(milliseconds(500));
    EXPECT_TRUE(autofocus.errors().motor_stuck);
    EXPECT_EQ(position_of(autofocus), 100);
    EXPECT_FALSE(autofocus.moving());
    autofocus.module.motor_free = true;
    EXPECT_EQ(autofocus.reset(), 0);
    EXPECT_FALSE(autofocus.errors().motor_stuck);
}

TEST(AutofocusTest, StuckMotorIsFoundHoweverOftenItIsToldToMove) {
    Autofocus autofocus;
    autofocus.module.motor_free = false;
    sim::Time now{0};
    for (int i = 0; i < 5; ++i) {
        EXPECT_FALSE(autofocus.errors().motor_stuck);
        EXPECT_EQ(autofocus.set_position(i % 2 == 0 ? 500 : 900), 0);
        now += milliseconds(100);
        autofocus.advance(now);
    }
    EXPECT_TRUE(autofocus.errors().motor_stuck);
    EXPECT_FALSE(autofocus.errors().initialization_error);
    EXPECT_EQ(autofocus.set_position(500), 0);
    now += microseconds(499999);
    autofocus.advance(now);
    EXPECT_TRUE(autofocus.moving()) << "it tries again for as long";
    now += microseconds(1);
    autofocus.advance(now);
    EXPECT_FALSE(autofocus.moving());
}

TEST(AutofocusTest, MotorThatMovedHasItsWholeTimeAgain) {
    Autofocus autofocus;
    autofocus.set_position(2900);
    autofocus.module.motor_free = false;
    autofocus.advance(milliseconds(400));
    autofocus.module.motor_free = true;
    autofocus.advance(milliseconds(900));
    autofocus.module.motor_free = false;
    autofocus.advance(microseconds(1399999));
    EXPECT_FALSE(autofocus.errors().motor_stuck);
    autofocus.advance(milliseconds(1400));
    EXPECT_TRUE(autofocus.errors().motor_stuck);
    EXPECT_EQ(position_of(autofocus), 600);
}

TEST(AutofocusTest, ResetFindsAMotorThatIsStuckAtItsEndStop) {
    for (bool const maintenance : {false, true}) {
        Autofocus autofocus;
        autofocus.set_maintenance_mode(maintenance);
        autofocus.set_position(maintenance ? 0 : 100);
        autofocus.advance(seconds(1));
        autofocus.module.motor_free = false;
        EXPECT_EQ(autofocus.reset(), 0);
        EXPECT_TRUE(autofocus.moving());
        EXPECT_EQ(autofocus.set_position(500), -1);
        EXPECT_EQ(autofocus.calibrate(), -1);
        autofocus.advance(milliseconds(1499));
        EXPECT_FALSE(autofocus.errors().motor_stuck);
        autofocus.advance(milliseconds(1500));
        EXPECT_TRUE(autofocus.errors().motor_stuck);
        EXPECT_TRUE(autofocus.errors().initialization_error);
        EXPECT_FALSE(autofocus.moving());
        EXPECT_EQ(autofocus.set_position(500), 0);
    }
}

TEST(AutofocusTest, MotorThatIsFreedDuringTheResetIsHome) {
    Autofocus autofocus;
    autofocus.module.motor_free = false;
    autofocus.reset();
    autofocus.module.motor_free = true;
    autofocus.advance(milliseconds(1));
    EXPECT_FALSE(autofocus.moving());
    EXPECT_EQ(autofocus.set_position(500), 0) << "a free one that is there has nothing to do";
    autofocus.module.motor_free = false;
    autofocus.advance(milliseconds(501));
    EXPECT_TRUE(autofocus.errors().motor_stuck);
    EXPECT_FALSE(autofocus.errors().initialization_error) << "the reset was over";
}

TEST(AutofocusTest, InitializationErrorStaysUntilTheNextReset) {
    Autofocus autofocus;
    autofocus.module.motor_free = false;
    autofocus.reset();
    autofocus.advance(seconds(1));
    autofocus.set_position(500);
    autofocus.advance(seconds(2));
    EXPECT_TRUE(autofocus.errors().initialization_error);
    autofocus.module.motor_free = true;
    autofocus.reset();
    EXPECT_FALSE(autofocus.errors().initialization_error);
    EXPECT_FALSE(autofocus.moving());
}

TEST(AutofocusTest, NothingGoesOnWhileTheModuleIsAway) {
    Autofocus autofocus;
    autofocus.set_position(1100);
    autofocus.advance(milliseconds(500));
    autofocus.calibrate();
    autofocus.advance(seconds(1));
    autofocus.set_present(false);
    EXPECT_FALSE(autofocus.present());
    EXPECT_FALSE(autofocus.calibrating());
    EXPECT_EQ(position_of(autofocus), 1100);
    autofocus.advance(seconds(10));
    EXPECT_EQ(autofocus.calibration_frequency(), std::nullopt);
    EXPECT_EQ(position_of(autofocus), 1100);
    autofocus.set_present(true);
    autofocus.set_present(true);
    EXPECT_TRUE(autofocus.moving()) << "it comes back as after power-on: it drives to its lower limit";
    EXPECT_EQ(autofocus.set_position(500), -1);
    autofocus.advance(milliseconds(10250));
    EXPECT_EQ(position_of(autofocus), 850);
    autofocus.advance(seconds(11));
    EXPECT_EQ(position_of(autofocus), 100);
}

TEST(AutofocusTest, UnpluggedItForgetsAllButItsTable) {
    Autofocus autofocus;
    autofocus.set_device_type("2");
    autofocus.module.mirror_fitted = false;
    autofocus.module.link_up = false;
    autofocus.answer();
    autofocus.set_doe_mode(hal::doe_mode_te::off_by_trigger);
    autofocus.set_doe_force_active(true);
    autofocus.set_maintenance_mode(true);
    autofocus.set_position(5000);
    EXPECT_TRUE(autofocus.doe_active(true));
    autofocus.set_present(true);
    EXPECT_TRUE(autofocus.maintenance_mode()) << "it was there all the time";
    autofocus.set_present(false);
    EXPECT_FALSE(autofocus.doe_active(true));
    autofocus.set_doe_force_active(true);  // nobody is there
    EXPECT_FALSE(autofocus.doe_active(true));
    autofocus.set_present(true);
    EXPECT_EQ(autofocus.device_type(), "R47XXXX2");
    EXPECT_FALSE(autofocus.doe_forced());
    EXPECT_EQ(autofocus.doe_mode(), hal::doe_mode_te::disabled);
    EXPECT_FALSE(autofocus.maintenance_mode());
    EXPECT_FALSE(autofocus.errors().communication_error);
    EXPECT_FALSE(autofocus.errors().target_unreachable);
    EXPECT_TRUE(autofocus.errors().no_mirror);
}

TEST(AutofocusTest, WithoutPowerItForgetsTheFrequencyAndEndsACalibration) {
    Autofocus autofocus;
    autofocus.calibrate();
    autofocus.advance(seconds(2));
    EXPECT_EQ(autofocus.calibration_frequency(), 183);
    autofocus.lose_power();
    EXPECT_EQ(autofocus.calibration_frequency(), std::nullopt);
    autofocus.gain_power();
    EXPECT_EQ(autofocus.calibrate(), 0);
    autofocus.lose_power();
    EXPECT_FALSE(autofocus.calibrating());
    autofocus.gain_power();
    EXPECT_EQ(autofocus.set_position(500), 0);
}

TEST(AutofocusTest, WithoutPowerItsErrorsAreForgotten) {
    Autofocus autofocus;
    autofocus.set_position(1);
    EXPECT_TRUE(autofocus.errors().target_unreachable);
    autofocus.lose_power();
    EXPECT_FALSE(autofocus.errors().target_unreachable);
}

TEST(AutofocusTest, WithoutPowerNothingGoesOnAndItStaysSoForAModuleThatComes) {
    Autofocus autofocus;
    autofocus.set_position(1100);
    autofocus.advance(milliseconds(500));
    autofocus.module.motor_free = false;
    autofocus.advance(milliseconds(900));
    autofocus.lose_power();
    EXPECT_FALSE(autofocus.moving());
    autofocus.module.motor_free = true;
    autofocus.set_present(false);
    autofocus.set_present(true);
    EXPECT_FALSE(autofocus.moving());
    autofocus.put_position(900);
    autofocus.advance(seconds(5));
    EXPECT_EQ(position_of(autofocus), 600);
    autofocus.module.motor_free = false;
    autofocus.gain_power();
    autofocus.advance(microseconds(5499999));
    EXPECT_FALSE(autofocus.errors().motor_stuck) << "its whole time again";
    autofocus.set_present(false);
    autofocus.gain_power();
    EXPECT_FALSE(autofocus.moving());
}

TEST(AutofocusTest, ResetEndsACalibration) {
    Autofocus autofocus;
    autofocus.module.mirror_healthy = false;
    autofocus.calibrate();
    autofocus.advance(seconds(2));
    EXPECT_FALSE(autofocus.calibrating());
    EXPECT_TRUE(autofocus.errors().mirror_failure);
    EXPECT_FALSE(autofocus.errors().no_mirror);
    autofocus.calibrate();
    EXPECT_TRUE(autofocus.calibrating());
    autofocus.reset();
    EXPECT_FALSE(autofocus.calibrating());
    EXPECT_FALSE(autofocus.errors().mirror_failure);
    autofocus.module.mirror_healthy = true;
    autofocus.calibrate();
    autofocus.advance(seconds(3));
    EXPECT_TRUE(autofocus.calibrating()) << "two seconds from its start";
    autofocus.advance(seconds(4));
    EXPECT_EQ(autofocus.calibration_frequency(), 183);
    autofocus.calibrate();
    EXPECT_EQ(autofocus.calibration_frequency(), std::nullopt);
}

TEST(AutofocusTest, ResetDrivesHomeAndForgetsTheFrequency) {
    Autofocus autofocus;
    autofocus.calibrate();
    autofocus.advance(seconds(2));
    autofocus.set_position(1100);
    autofocus.advance(seconds(3));
    autofocus.set_position(5000);
    EXPECT_EQ(autofocus.reset(), 0);
    EXPECT_FALSE(autofocus.errors().target_unreachable);
    EXPECT_TRUE(autofocus.errors().no_valid_frequency);
    EXPECT_EQ(autofocus.set_position(500), -1);
    autofocus.advance(milliseconds(3999));
    EXPECT_TRUE(autofocus.moving());
    autofocus.advance(seconds(4));
    EXPECT_EQ(position_of(autofocus), 100);
    EXPECT_EQ(autofocus.set_position(500), 0);
}

TEST(AutofocusTest, ResetOfAStuckMotorIsAnInitializationError) {
    Autofocus autofocus;
    autofocus.set_position(1100);
    autofocus.advance(seconds(1));
    autofocus.module.motor_free = false;
    autofocus.reset();
    autofocus.advance(seconds(2));
    EXPECT_TRUE(autofocus.errors().initialization_error);
    EXPECT_TRUE(autofocus.errors().motor_stuck);
    EXPECT_EQ(position_of(autofocus), 1100);
}

TEST(AutofocusTest, MissingModuleOrLinkDoesNotAnswer) {
    Autofocus autofocus;
    EXPECT_EQ(autofocus.answer(), 0);
    autofocus.module.link_up = false;
    errno = 0;
    EXPECT_EQ(autofocus.answer(), -1);
    EXPECT_EQ(errno, EIO);
    autofocus.module.link_up = true;
    EXPECT_EQ(autofocus.answer(), 0);
    EXPECT_TRUE(autofocus.errors().communication_error);
    autofocus.reset();
    EXPECT_FALSE(autofocus.errors().communication_error);
    autofocus.set_present(false);
    EXPECT_EQ(autofocus.answer(), -1);
    EXPECT_EQ(errno, ENODEV);
}

TEST(AutofocusTest, DoeModeIsNoughtOrOne) {
    Autofocus autofocus;
    EXPECT_EQ(autofocus.set_doe_mode(hal::doe_mode_te::off_by_trigger), 0);
    EXPECT_EQ(autofocus.set_doe_mode(static_cast<hal::doe_mode_te>(2)), -1);
    sim::Properties properties;
    sim::describe(properties, autofocus);
    EXPECT_EQ(sim::value_text(properties.all().at("autofocus.doe.mode").get()), "1");
}

TEST(AutofocusTest, DoeIsOffWhileATriggerExposesUnlessForced) {
    Autofocus autofocus;
    EXPECT_FALSE(autofocus.doe_active(false));
    autofocus.set_doe_mode(hal::doe_mode_te::off_by_trigger);
    EXPECT_TRUE(autofocus.doe_active(false));
    EXPECT_FALSE(autofocus.doe_active(true));
    autofocus.set_doe_force_active(true);
    EXPECT_TRUE(autofocus.doe_active(true));
    autofocus.set_doe_mode(hal::doe_mode_te::disabled);
    EXPECT_TRUE(autofocus.doe_active(false));
    autofocus.set_doe_force_active(false);
    EXPECT_FALSE(autofocus.doe_active(false));
}

TEST(AutofocusTest, PropertiesShowTheMotorAndBreakThings) {
    Autofocus autofocus;
    sim::Properties properties;
    sim::describe(properties, autofocus);
    autofocus.set_position(1100);
    autofocus.advance(milliseconds(500));
    EXPECT_EQ(sim::set_property(properties, "autofocus.motor.free", "false"), "");
    autofocus.advance(milliseconds(900));
    EXPECT_EQ(sim::value_text(properties.all().at("autofocus.position").get()), "600");
    EXPECT_EQ(sim::value_text(properties.all().at("autofocus.moving").get()), "true");
    EXPECT_EQ(sim::set_property(properties, "autofocus.device_type", "3"), "");
    EXPECT_EQ(sim::value_text(properties.all().at("autofocus.device_type").get()), "R47XXXX3");
    EXPECT_NE(sim::set_property(properties, "autofocus.device_type", "4"), "");
    EXPECT_NE(sim::set_property(properties, "autofocus.position", "5"), "");
    EXPECT_NE(sim::set_property(properties, "autofocus.target", "5"), "");
    EXPECT_FALSE(autofocus.errors().target_unreachable) << "a hand that is refused changes nothing";
    EXPECT_EQ(autofocus.target(), 1100U);
    EXPECT_EQ(sim::set_property(properties, "autofocus.maintenance", "true"), "");
    EXPECT_EQ(sim::set_property(properties, "autofocus.target", "5"), "");
    EXPECT_TRUE(autofocus.moving());
    EXPECT_EQ(sim::set_property(properties, "autofocus.present", "false"), "");
    EXPECT_FALSE(autofocus.moving());
    EXPECT_EQ(sim::value_text(properties.all().at("autofocus.present").get()), "false");
}

}  // namespace
