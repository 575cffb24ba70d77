// Tests of the device's power: what is forgotten without it, and what stays.
#include "tests/sim/stepped_device.h"

namespace {

class PowerTest : public SteppedDeviceTest {
protected:
    void set(std::string const& name, std::string const& word) { expect_done("set " + name + " " + word); }
    // The properties whose values differ from those of a device that has just started.
    std::string changed() {
        sim::Device fresh(std::make_unique<sim::MemoryFileSystem>());
        auto const now = device_.access();
        auto const before = fresh.access();
        std::string names;
        for (auto const& [name, property] : now->properties.all()) {
            bool const same =
                sim::value_text(property.get()) == sim::value_text(before->properties.all().at(name).get());
            names += same ? "" : name + "\n";
        }
        return names;
    }
};

TEST_F(PowerTest, TheDeviceHasPowerAtTheStart) {
    EXPECT_EQ(value("power"), "true");
    expect_done("power off");
    EXPECT_EQ(value("power"), "false");
    expect_done("power on");
    EXPECT_EQ(value("power"), "true");
    expect_done("power cycle");
    EXPECT_EQ(value("power"), "true");
}

TEST_F(PowerTest, WhatIsSoAlreadyIsRefused) {
    EXPECT_EQ(run("power on").text, "the device has power already");
    expect_done("power off");
    EXPECT_EQ(run("power off").text, "the device has no power");
    EXPECT_EQ(run("power cycle").text, "the device has no power");
    EXPECT_EQ(run("power up").text, "usage: power 24v | poe | power off | on | cycle");
}

TEST_F(PowerTest, WhatProgramsSetIsForgotten) {
    for (char const* const line :
         {"set system.state 6", "set rtu.imager_type 1", "set rtu.prohibited_time 5", "set rtu.exposure.time 5000",
          "set rtu.exposure.offset 7", "set rtu.trigger.rate 20", "trigger 3", "set imx296.gain 100",
          "set illumination.brightness.total 14", "set illumination.segments 3", "set illumination.led.red true",
          "set illumination.write_protection false", "set autofocus.doe.mode 1", "set autofocus.maintenance true",
          "set ranging.resolution 64", "set ranging.frequency 10", "set ranging.power 0"}) {
        ASSERT_TRUE(run(line).ok) << line << ": " << run(line).text;
    }
    {
        auto const device = device_.access();
        hal::dio_pin_config_t config;
        config.func = hal::dio_pin_config_t::pin_func::input;
        EXPECT_EQ(device->rtu.set_pin_config(2, config), 0);
        EXPECT_EQ(device->rtu.set_light_bar({100, 1, 2, 3}), 0);
        EXPECT_EQ(device->imx296.set_roi_offset(8, 8), 0);
        EXPECT_EQ(device->system.trigger_heartbeat(device.now()), 0);
    }
    EXPECT_NE(changed(), "");
    expect_done("power cycle");
    EXPECT_EQ(changed(), "");
}

TEST_F(PowerTest, WhatTheModulesKeepStays) {
    set("illumination.limit.dc", "7");
    set("illumination.limit.ot_off", "70");
    set("illumination.guards.pvd", "false");
    set("imx296.colour", "1");
    set("rtu.serial_number", "5");
    set("autofocus.device_type", "R47XXXX2");
    set("autofocus.table.filled", "false");
    std::string const kept = changed();
    expect_done("power cycle");
    EXPECT_EQ(changed(), kept);
    EXPECT_EQ(value("imx296.colour"), "1");
}

TEST_F(PowerTest, WhatSurroundsTheDeviceStays) {
    expect_done("power poe");
    expect_done("drive 2 high");
    expect_done("scene plane 500");
    expect_done("tilt 0 20 0");
    expect_done("button down");
    expect_done("node remove /dev/imx567");
    EXPECT_TRUE(run("fault add rtu_t::get_exposure status 1").ok);
    std::string const kept = changed();
    expect_done("power cycle");
    EXPECT_EQ(changed(), kept);
    EXPECT_EQ(run("fault list").text, "1  rtu_t::get_exposure status 1  fired 0\n");
    EXPECT_EQ(value("dio.2.terminal"), "open") << "an output again, on a wire that is still high";
}

TEST_F(PowerTest, WithoutPowerNothingHappens) {
    {
        auto const device = device_.access();
        device->rtu.set_continuous(true);
    }
    expect_done("power off");
    expect_done("trigger 3");
    expect_done("step 10s");
    EXPECT_EQ(value("imx296.frames"), "0");
    expect_done("power on");
    EXPECT_EQ(value("rtu.trigger.count"), "0") << "nobody counted those";
    expect_done("trigger 1");
    EXPECT_EQ(value("imx296.frames"), "1");
}

TEST_F(PowerTest, TheLightGoesAndItsHeatStays) {
    set("illumination.brightness.total", "14");
    expect_done("step 100s");
    double const hot = std::stod(value("illumination.temperature.internal"));
    EXPECT_GT(hot, 60.0);
    expect_done("power off");
    EXPECT_EQ(value("illumination.lit"), "false");
    EXPECT_EQ(std::stod(value("illumination.temperature.internal")), hot);
    expect_done("step 60s");
    EXPECT_LT(std::stod(value("illumination.temperature.internal")), hot) << "it cools all the same";
}

TEST_F(PowerTest, TheMotorStopsAndThenLooksForItsLimit) {
    set("autofocus.target", "1100");
    expect_done("step 500ms");
    expect_done("power off");
    expect_done("step 10s");
    EXPECT_EQ(value("autofocus.position"), "600");
    expect_done("power on");
    expect_done("step 250ms");
    EXPECT_EQ(value("autofocus.position"), "350");
    expect_done("step 1s");
    EXPECT_EQ(value("autofocus.position"), "100");
}

TEST_F(PowerTest, TheHubIsInItsBootLoader) {
    {
        auto const device = device_.access();
        EXPECT_EQ(device->hub.boot(sim::make_firmware_image({sim::HubVariant::bhi260ap, 1})), 0);
        EXPECT_EQ(device->hub.activate(37, 100, 0, device.now()), 0);
    }
    expect_done("step 1s");
    EXPECT_EQ(value("hub.samples"), "100");
    expect_done("power off");
    expect_done("step 1s");
    expect_done("power on");
    expect_done("step 1s");
    EXPECT_EQ(value("hub.samples"), "100");
    EXPECT_EQ(value("hub.running"), "false");
}

}  // namespace
