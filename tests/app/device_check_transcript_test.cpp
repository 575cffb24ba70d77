// Transcripts of the device check.
#include <gtest/gtest.h>

#include "tests/support/console_session.h"
#include "tests/support/screens/shell.h"

namespace {

using namespace screens;

std::string checked_without(std::vector<std::string> const& paths) {
    support::SessionOptions options;
    options.without = paths;
    return support::run_console("Ax", options).output;
}

std::string code(int number) {
    return visit('A', "File Error Code: " + std::to_string(number) + "\n");
}

TEST(DeviceCheckTest, WholeDeviceHasCodeZero) {
    EXPECT_EQ(checked_without({}), code(0));
}

TEST(DeviceCheckTest, EachMissingFileSetsItsBit) {
    EXPECT_EQ(checked_without({"/dev/i2c-2"}), code(1));
    EXPECT_EQ(checked_without({"/dev/r47-rtu-driver"}), code(2));
    EXPECT_EQ(checked_without({"/dev/r47-autofocus-driver"}), code(4));
    EXPECT_EQ(checked_without({"/dev/r47-illumination-driver"}), code(16));
    EXPECT_EQ(checked_without({"/dev/gpiochip1"}), code(32));
    EXPECT_EQ(checked_without({"/dev/imx296"}), code(64));
    EXPECT_EQ(checked_without({"/dev/imx567"}), code(64));
    EXPECT_EQ(checked_without({"/opt/kelvora/libhal/fw/kelvora-260AP_1.6.fw"}), code(128));
    EXPECT_EQ(checked_without({"/sys/class/gpio/gpio481/value"}), code(256));
}

TEST(DeviceCheckTest, BothSensorsMissingSetTheOneBit) {
    EXPECT_EQ(checked_without({"/dev/imx296", "/dev/imx567"}), code(64));
}

TEST(DeviceCheckTest, FilesThatAreNotCheckedDoNotCount) {
    EXPECT_EQ(checked_without({"/dev/r47-tof-driver", "/opt/kelvora/libhal/fw/kelvora-260AB_turbo-1.x.fw"}), code(0));
}

TEST(DeviceCheckTest, BitsAddUp) {
    EXPECT_EQ(
        checked_without({"/opt/kelvora/libhal/fw/kelvora-260AP_1.6.fw", "/sys/class/gpio/gpio481/value", "/dev/i2c-2"}),
        code(385));
}

TEST(DeviceCheckTest, FirmwareThatIsCheckedStaysTheSameAfterTheOldOneWasChosen) {
    support::SessionOptions options;
    options.without = {"/opt/kelvora/libhal/fw/kelvora-260AP_1.6.fw"};
    EXPECT_EQ(support::run_console("OAx", options).output,
              kStart + main_menu('O') + main_menu('A') + "File Error Code: 128\n" + main_menu('x'));
}

TEST(DeviceCheckTest, UnreadableFileCountsAsMissing) {
    if (!support::has_forbidden_files()) {
        GTEST_SKIP() << "proot gives a user all his own files";
    }
    auto const run = support::run_console("Ax", support::in_shell("chmod 000 /dev/i2c-2; exec \"$@\""));
    EXPECT_EQ(run.output, code(1));
}

TEST(DeviceCheckTest, NodesThatComeAndGoAreSeen) {
    support::ConsoleSession session;
    session.control("node remove /dev/gpiochip1");
    session.type("A");
    session.wait_for("File Error Code: 32\n");
    session.control("node restore /dev/gpiochip1");
    session.type("A");
    session.wait_for("File Error Code: 0\n");
    session.type("x");
    EXPECT_EQ(session.wait_for_exit(), 0);
}

TEST(DeviceCheckTest, NoLibraryCallIsMade) {
    EXPECT_EQ(support::run_console("Ax").calls, support::Calls{});
}

}  // namespace
