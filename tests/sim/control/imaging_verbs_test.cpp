// The commands for what surrounds the camera.
#include "tests/sim/stepped_device.h"

namespace {

using namespace std::chrono_literals;
using sim::Reply;

class ImagingVerbsTest : public SteppedDeviceTest {
protected:
    void make_trigger_input(unsigned char pin) {
        hal::dio_pin_config_t config;
        config.type = hal::dio_pin_config_t::pin_type::pnp;
        config.func = hal::dio_pin_config_t::pin_func::trigger_input;
        ASSERT_EQ(device_.access()->rtu.set_pin_config(pin, config), 0);
    }
};

TEST_F(ImagingVerbsTest, DrivenTriggerInputTakesAFrame) {
    make_trigger_input(2);
    expect_done("drive 2 high");
    EXPECT_EQ(value("dio.2.value"), "true");
    expect_done("drive 2 low");
    EXPECT_EQ(value("dio.2.value"), "false");
    EXPECT_EQ(value("dio.2.terminal"), "low");
    expect_done("drive 2 open");
    EXPECT_EQ(value("dio.2.terminal"), "open");
    EXPECT_EQ(value("imx296.frames"), "1");
}

TEST_F(ImagingVerbsTest, PowerChoosesTheSupply) {
    EXPECT_EQ(value("rtu.power"), "24v");
    expect_done("power poe");
    EXPECT_EQ(value("rtu.power"), "poe");
    expect_done("set rtu.power 24v");
    EXPECT_EQ(value("rtu.power"), "24v");
}

// Files that stay where they are.
class FixedFileSystem : public sim::MemoryFileSystem {
public:
    sim::Error remove(std::string const& path) override { return "cannot remove " + path; }
};

TEST(FixedDeviceTest, SensorThatCannotBeFittedIsAnError) {
    sim::Device device(std::make_unique<FixedFileSystem>());
    sim::Reply const reply = sim::device_commands().run({device}, "fit none");
    EXPECT_FALSE(reply.ok);
    EXPECT_EQ(reply.text, "cannot remove /dev/imx296");
}

TEST_F(ImagingVerbsTest, FittedSensorIsTheOneWhoseNodeIsThere) {
    for (auto const& [name, type] : {std::pair("imx567", "2"), {"none", "0"}, {"none", "0"}, {"imx296", "1"}}) {
        expect_done(std::string("fit ") + name);
        EXPECT_EQ(value("camera.fitted"), type);
    }
    expect_done("trigger 1");
    expect_done("fit imx567");
    expect_done("step 1s");
    expect_done("trigger 1");
    expect_done("fit none");
    expect_done("step 1s");
    expect_done("trigger 1");
    EXPECT_EQ(value("imx296.frames"), "1");
    EXPECT_EQ(value("imx567.frames"), "1");
    EXPECT_EQ(value("rtu.trigger.count"), "3");
}

TEST_F(ImagingVerbsTest, TriggersComeAtOnceOrAtTheirRate) {
    expect_done("trigger 3");
    EXPECT_EQ(value("imx296.frames"), "1");
    EXPECT_EQ(value("rtu.trigger.missed"), "2");
    expect_done("step 1s");
    expect_done("trigger 3 at 2");
    EXPECT_EQ(value("imx296.frames"), "2");
    expect_done("step 500ms");
    EXPECT_EQ(value("imx296.frames"), "3");
    expect_done("step 10s");
    EXPECT_EQ(value("imx296.frames"), "4");
}

TEST_F(ImagingVerbsTest, TriggersFromOutsideCanBeStopped) {
    expect_done("trigger 1000 at 2");
    expect_done("step 1s");
    expect_done("trigger stop");
    expect_done("step 10s");
    EXPECT_EQ(value("rtu.trigger.count"), "3");
    expect_done("trigger stop");
}

TEST_F(ImagingVerbsTest, LightFollowsTheExposuresThatCome) {
    expect_done("set illumination.pattern 0xFFFF");
    expect_done("set illumination.brightness.total 14");
    expect_done("set rtu.exposure.time 1000000");
    EXPECT_EQ(value("illumination.load"), "0");
    expect_done("trigger 1");
    EXPECT_EQ(value("illumination.load"), "1");
    expect_done("step 999ms");
    expect_done("trigger 1");
    EXPECT_EQ(value("illumination.load"), "1");
    expect_done("step 1ms");
    EXPECT_EQ(value("illumination.load"), "0") << "the second one was missed";
    expect_done("set rtu.exposure.offset 500000");
    expect_done("trigger 1");
    expect_done("step 499ms");
    EXPECT_EQ(value("illumination.load"), "0");
    expect_done("step 1ms");
    EXPECT_EQ(value("illumination.load"), "1");
    expect_done("fit none");
    EXPECT_EQ(value("illumination.load"), "0") << "the exposure ended with its sensor";
    expect_done("set rtu.exposure.offset 0");
    expect_done("trigger 1");
    EXPECT_EQ(value("illumination.load"), "1") << "the unit needs no sensor for it";
}

TEST_F(ImagingVerbsTest, LightOfAnExposureHeatsTheSameHoweverOftenOneLooks) {
    sim::Device other(std::make_unique<sim::MemoryFileSystem>());
    for (char const* line : {"set illumination.pattern 0xFFFF", "set illumination.brightness.total 14",
                             "set rtu.exposure.time 10000000", "trigger 1"}) {
        expect_done(line);
        EXPECT_TRUE(sim::device_commands().run({other}, line).ok) << line;
    }
    for (int i = 0; i < 30; ++i) {
        expect_done("step 1s");
    }
    EXPECT_TRUE(sim::device_commands().run({other}, "step 30s").ok);
    std::string const name = "illumination.temperature.internal";
    EXPECT_EQ(value(name), sim::value_text(other.access()->properties.all().at(name).get()));
    EXPECT_GT(std::stod(value(name)), 29.0);
}

TEST_F(ImagingVerbsTest, BadCommandsAnswerOneLineAndChangeNothing) {
    make_trigger_input(2);
    std::string const before = run("show rtu").text + run("show dio").text + run("show camera").text;
    for (char const* line : {"drive",
                             "drive 2",
                             "drive 6 high",
                             "drive -1 high",
                             "drive two high",
                             "drive 2 on",
                             "drive 2 high low",
                             "power",
                             "power 12v",
                             "power 24v poe",
                             "fit",
                             "fit imx999",
                             "fit imx296 imx567",
                             "trigger",
                             "trigger 0",
                             "trigger -1",
                             "trigger 1000001",
                             "trigger x",
                             "trigger 1 at",
                             "trigger 1 at 0",
                             "trigger 1 at -5",
                             "trigger 1 by 5",
                             "trigger 1 at 5 6",
                             "trigger stop 1"}) {
        Reply const reply = run(line);
        EXPECT_FALSE(reply.ok) << line;
        EXPECT_FALSE(reply.text.empty()) << line;
        EXPECT_EQ(reply.text.find('\n'), std::string::npos) << line;
    }
    EXPECT_EQ(run("show rtu").text + run("show dio").text + run("show camera").text, before);
}

}  // namespace
