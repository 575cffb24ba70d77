// Tests of the autofocus module's model.
#include "sim/models/autofocus.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>

#include "sim/control/value_words.h"
#include "sim/device/describe.h"

namespace {

using sim::Autofocus;
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
    autofocus.get_position_limits(min, max);
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

TEST(AutofocusTest, UnknownDeviceTypeIsRefused) {
    Autofocus autofocus;
    unsigned short min = 7;
    unsigned short max = 8;
    for (char const* word : {"", "2", "R47XXXX", "R47XXXX4", "r47xxxx1"}) {
        SCOPED_TRACE(word);
        errno = 0;
        EXPECT_EQ(autofocus.get_position_limits_mm(word, min, max), -1);
        EXPECT_EQ(errno, EINVAL);
    }
    EXPECT_EQ(min, 7);
    EXPECT_EQ(max, 8);
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
    autofocus.advance(milliseconds(499));
    EXPECT_FALSE(autofocus.errors().motor_stuck);
    autofocus.advance(milliseconds(500));
    EXPECT_TRUE(autofocus.errors().motor_stuck);
    EXPECT_EQ(position_of(autofocus), 100);
    EXPECT_FALSE(autofocus.moving());
    autofocus.module.motor_free = true;
    EXPECT_EQ(autofocus.reset(), 0);
    EXPECT_FALSE(autofocus.errors().motor_stuck);
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
    autofocus.module.present = false;
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
    EXPECT_EQ(sim::set_property(properties, "autofocus.device_type", "R47XXXX3"), "");
    EXPECT_NE(sim::set_property(properties, "autofocus.device_type", "3"), "");
    EXPECT_NE(sim::set_property(properties, "autofocus.position", "5"), "");
    EXPECT_NE(sim::set_property(properties, "autofocus.target", "5"), "");
    EXPECT_EQ(sim::set_property(properties, "autofocus.maintenance", "true"), "");
    EXPECT_EQ(sim::set_property(properties, "autofocus.target", "5"), "");
    EXPECT_TRUE(autofocus.moving());
}

}  // namespace
