// The commands that move the device and press its button.
#include "tests/sim/stepped_device.h"

namespace {

class MotionVerbsTest : public SteppedDeviceTest {
protected:
    void expect_error(std::string const& line, std::string const& message) {
        sim::Reply const reply = run(line);
        EXPECT_FALSE(reply.ok) << line;
        EXPECT_EQ(reply.text, message) << line;
    }

    double angle(std::string const& name) { return std::stod(value("orientation." + name)); }
};

TEST_F(MotionVerbsTest, TiltSetsTheThreeAngles) {
    expect_done("tilt 10 -20 30.5");
    EXPECT_NEAR(angle("yaw"), 10, 1e-3);
    EXPECT_NEAR(angle("pitch"), -20, 1e-3);
    EXPECT_NEAR(angle("roll"), 30.5, 1e-3);
}

TEST_F(MotionVerbsTest, TiltOverATimeTurnsTheDevice) {
    expect_done("tilt 0 0 90 over 3s");
    expect_done("step 1s");
    EXPECT_NEAR(angle("roll"), 30, 1e-3);
    expect_done("step 10s");
    EXPECT_NEAR(angle("roll"), 90, 1e-3);
}

TEST_F(MotionVerbsTest, BadTiltChangesNothing) {
    std::string const usage = "usage: tilt YAW PITCH ROLL [over DURATION]";
    for (char const* line :
         {"tilt", "tilt 1 2", "tilt 1 2 3 4", "tilt 1 2 3 over", "tilt 1 2 3 in 4s", "tilt 1 2 3 over 4s 5"}) {
        expect_error(line, usage);
    }
    expect_error("tilt 1 two 3", "bad angle: degrees as 20 or -7.5");
    expect_error("tilt 1 2 3 over 4", "bad duration 4: as 3s, 250ms, 10us, 5min or 2h, at most one day");
    expect_error("tilt 0 91 0", "angle out of range: yaw and roll -360 to 360, pitch -90 to 90");
    expect_error("tilt 361 0 0", "angle out of range: yaw and roll -360 to 360, pitch -90 to 90");
    EXPECT_EQ(angle("yaw"), 0);
    EXPECT_EQ(angle("pitch"), 0);
}

TEST_F(MotionVerbsTest, PressEndsByItself) {
    expect_done("press 2s");
    EXPECT_EQ(value("button.pressed"), "true");
    expect_done("step 1500ms");
    EXPECT_EQ(value("button.held"), "1.5");
    expect_done("step 500ms");
    EXPECT_EQ(value("button.pressed"), "false");
    EXPECT_EQ(value("button.held"), "0");
}

TEST_F(MotionVerbsTest, PressMayBounce) {
    expect_done("press 1s bounce 499ms");
    EXPECT_EQ(value("button.pressed"), "true");
    expect_done("step 500ms");
    EXPECT_EQ(value("button.pressed"), "false");
    expect_error("press 1s", "the button is pressed already");
    expect_error("button down", "the button is pressed already");
    expect_done("button up");
    expect_error("button up", "the button is not pressed");
}

TEST_F(MotionVerbsTest, ButtonIsHeldUntilItIsReleased) {
    expect_done("button down");
    expect_done("step 60s");
    EXPECT_EQ(value("button.held"), "60");
    expect_done("button up");
    EXPECT_EQ(value("button.pressed"), "false");
}

TEST_F(MotionVerbsTest, BadPressesAreRefused) {
    for (char const* line :
         {"press", "press 1s 2s", "press 1s bounce", "press 1s pounce 1ms", "press 1s bounce 1ms 2"}) {
        expect_error(line, "usage: press DURATION [bounce DURATION]");
    }
    expect_error("press 1s bounce 2", "bad duration 2: as 3s, 250ms, 10us, 5min or 2h, at most one day");
    expect_error("press 4ms bounce 2ms", "the press is too short for that bounce: more than twice it");
    expect_error("press long", "bad duration long: as 3s, 250ms, 10us, 5min or 2h, at most one day");
    expect_error("button", "usage: button down | button up");
    expect_error("button sideways", "usage: button down | button up");
    expect_error("button up", "the button is not pressed");
    expect_done("button down");
    expect_error("button down", "the button is pressed already");
    expect_error("press 1s", "the button is pressed already");
    expect_done("step 5s");
    EXPECT_EQ(value("button.pressed"), "true");
}

TEST_F(MotionVerbsTest, NoiseAndUploadTimeHaveTheirRanges) {
    expect_done("set orientation.noise 0.5");
    expect_error("set orientation.noise -1", "orientation.noise: -1 is not a number from 0 to 10 degrees");
    expect_error("set orientation.noise 11", "orientation.noise: 11 is not a number from 0 to 10 degrees");
    EXPECT_EQ(value("orientation.noise"), "0.5");
    expect_done("set orientation.drift 0.5");
    expect_error("set orientation.drift -0.1", "orientation.drift: -0.1 is not a number from 0 to 10 degrees/min");
    expect_error("set orientation.drift 10.1", "orientation.drift: 10.1 is not a number from 0 to 10 degrees/min");
    EXPECT_EQ(value("orientation.drift"), "0.5");
    expect_done("set orientation.seed 7");
    EXPECT_EQ(value("orientation.seed"), "7");
    expect_error("set hub.upload_time 60001", "hub.upload_time: 60001 is not an integer from 0 to 60000 ms");
}

}  // namespace
