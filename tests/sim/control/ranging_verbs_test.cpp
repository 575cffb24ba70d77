// The command for the scene, and what the commands for every property do to light, focus and ranging.
#include "tests/sim/stepped_device.h"

namespace {

using sim::Reply;

class RangingVerbsTest : public SteppedDeviceTest {};

TEST_F(RangingVerbsTest, SceneIsPutInFrontOfTheSensor) {
    for (std::string const scene :
         {"none", "plane 700", "tilted 800 -20 5", "step 500 900 reflectance 10", "hole 600 0"}) {
        expect_done("scene " + scene);
        EXPECT_EQ(value("ranging.scene"), scene);
    }
    expect_done("set ranging.scene \"plane 333\"");
    EXPECT_EQ(value("ranging.scene"), "plane 333");
}

TEST_F(RangingVerbsTest, BadSceneAnswersOneLineAndChangesNothing) {
    for (char const* line : {"scene", "scene wall 3", "scene plane", "scene plane -1", "scene plane 800 900"}) {
        Reply const reply = run(line);
        EXPECT_FALSE(reply.ok) << line;
        EXPECT_EQ(reply.text.find("usage: scene none | scene plane MM"), 0U) << reply.text;
        EXPECT_EQ(reply.text.find('\n'), std::string::npos);
    }
    EXPECT_EQ(value("ranging.scene"), "plane 800");
}

TEST_F(RangingVerbsTest, TemperatureThatIsSetGoesOnFromThere) {
    device_.access()->illumination.set_brightness(sim::Illumination::kBrightnessLimits.max);
    expect_done("step 60s");
    expect_done("set illumination.temperature.internal 90");
    EXPECT_EQ(value("illumination.lit"), "false");
    expect_done("step 32s");  // from 90 to 75 in 120 ln(65/50) = 31.5 s
    EXPECT_EQ(value("illumination.lit"), "true");
}

TEST_F(RangingVerbsTest, LightFollowsTheTriggersOfTheRealTimeUnit) {
    {
        auto const device = device_.access();
        device->illumination.set_brightness(sim::Illumination::kBrightnessLimits.max);
        EXPECT_EQ(device->illumination.set_exposure_mode(hal::exposure_mode::flash, 5000), 0);
        EXPECT_EQ(device->rtu.set_rate(20), 0);
        EXPECT_EQ(device->rtu.set_continuous(true), 0);
    }
    EXPECT_EQ(value("illumination.load"), "0") << "before the first";
    expect_done("step 1s");
    EXPECT_EQ(value("illumination.load"), "0.1");
}

TEST_F(RangingVerbsTest, DoeGoesOffForTheExposuresOfTheRealTimeUnit) {
    expect_done("set rtu.exposure.time 5000");
    expect_done("set autofocus.doe.mode 1");
    EXPECT_EQ(value("autofocus.doe.active"), "true");
    expect_done("trigger 1");
    EXPECT_EQ(value("autofocus.doe.active"), "false");
    expect_done("step 10ms");
    EXPECT_EQ(value("autofocus.doe.active"), "true");
}

TEST_F(RangingVerbsTest, MotorMovesWhileTheTimeIsStepped) {
    EXPECT_EQ(device_.access()->autofocus.set_position(1100), 0);
    expect_done("step 250ms");
    EXPECT_EQ(value("autofocus.position"), "350");
    EXPECT_EQ(value("autofocus.moving"), "true");
    expect_done("set autofocus.motor.free false");
    expect_done("step 600ms");
    EXPECT_EQ(value("autofocus.error.motor_stuck"), "true");
}

}  // namespace
