// Limits and settings of the image sensors.
#include "sim/models/image_sensor.h"

#include <gtest/gtest.h>

#include "sim/control/value_words.h"
#include "sim/device/describe.h"

namespace {

using sim::ImageSensor;

unsigned int gain_of(ImageSensor const& sensor) {
    unsigned int gain = 0;
    EXPECT_EQ(sensor.get_gain(gain), 0);
    return gain;
}

std::pair<unsigned int, unsigned int> offset_of(ImageSensor const& sensor) {
    std::pair<unsigned int, unsigned int> offset;
    EXPECT_EQ(sensor.get_roi_offset(offset.first, offset.second), 0);
    return offset;
}

void check_facts(sim::SensorFacts const& facts, std::string const& name, std::pair<unsigned int, unsigned int> array,
                 unsigned int grid, std::array<unsigned int, 3> const& exposures) {
    EXPECT_EQ(facts.name, name);
    EXPECT_EQ(facts.node, "/dev/" + name);
    EXPECT_EQ(std::make_pair(facts.width, facts.height), array);
    EXPECT_EQ(facts.roi_grid, grid);
    EXPECT_EQ(facts.max_gain, 480U);
    EXPECT_EQ((std::array{facts.exposures.min_us, facts.exposures.max_us, facts.exposures.max_fps}), exposures);
    EXPECT_EQ(sim::find_image_sensor(facts.type), &facts);
}

TEST(ImageSensorTest, TableHoldsThePublishedFigures) {
    check_facts(sim::imx296_facts(), "imx296", {1456, 1088}, 4, {30, 15'500'000, 60});
    check_facts(sim::imx567_facts(), "imx567", {2472, 2064}, 8, {1, 100'000'000, 96});
    EXPECT_EQ(sim::find_image_sensor(hal::imx_te::none), nullptr);
    EXPECT_EQ(sim::kLeastFps, 1U);
    EXPECT_EQ(sim::kExposureStep, 1U);
    EXPECT_EQ(sim::image_sensors().front(), &sim::imx296_facts()) << "it counts where both are fitted";
    EXPECT_EQ(sim::image_sensors().back(), &sim::imx567_facts());
}

TEST(ImageSensorTest, WithThePowerAllGoesButTheColourType) {
    ImageSensor sensor(sim::imx296_facts());
    ASSERT_EQ(sensor.set_variant(1), 0);
    ASSERT_EQ(sensor.set_gain(5), 0);
    ASSERT_EQ(sensor.set_scan_mode(hal::roi_te::binning), 0);
    ASSERT_EQ(sensor.set_roi_offset(4, 8), 0);
    sensor.take_frames(3);
    EXPECT_EQ(std::make_pair(sensor.roi_x(), sensor.roi_y()), std::make_pair(4U, 8U));
    unsigned long frames = 0;
    EXPECT_EQ(sensor.get_frames(frames), 0);
    EXPECT_EQ(frames, 3U);
    sensor.lose_power();
    EXPECT_EQ(sensor.variant(), 1U);
    EXPECT_EQ(sensor.gain(), 0U);
    EXPECT_EQ(sensor.scan_mode(), hal::roi_te::normal);
    EXPECT_EQ(offset_of(sensor), std::make_pair(0U, 0U));
    EXPECT_EQ(sensor.frames(), 0U);
    EXPECT_EQ(ImageSensor(sim::imx567_facts()).variant(), 0U) << "monochrome at first";
    EXPECT_EQ(ImageSensor(sim::imx567_facts()).gain(), 0U);
}

TEST(ImageSensorTest, GainGoesUpToItsLimit) {
    ImageSensor sensor(sim::imx296_facts());
    EXPECT_EQ(sensor.set_gain(480), 0);
    EXPECT_EQ(gain_of(sensor), 480U);
    EXPECT_EQ(sensor.set_gain(0), 0);
    EXPECT_EQ(gain_of(sensor), 0U);
}

TEST(ImageSensorTest, RefusedGainKeepsTheOldOne) {
    ImageSensor sensor(sim::imx567_facts());
    ASSERT_EQ(sensor.set_gain(120), 0);
    EXPECT_EQ(sensor.set_gain(481), -1);
    EXPECT_EQ(sensor.set_gain(0xFFFFFFFFU), -1);
    EXPECT_EQ(gain_of(sensor), 120U);
}

TEST(ImageSensorTest, ScanModesAreThree) {
    ImageSensor sensor(sim::imx296_facts());
    for (int mode : {2, 1, 0}) {
        EXPECT_EQ(sensor.set_scan_mode(static_cast<hal::roi_te>(mode)), 0);
        hal::roi_te read{};
        EXPECT_EQ(sensor.get_scan_mode(read), 0);
        EXPECT_EQ(static_cast<int>(read), mode);
    }
    EXPECT_EQ(sensor.set_scan_mode(static_cast<hal::roi_te>(3)), -1);
    EXPECT_EQ(sensor.set_scan_mode(static_cast<hal::roi_te>(-1)), -1);
}

struct Offset {
    unsigned int x;
    unsigned int y;
    bool accepted;
};

void check_offsets(sim::SensorFacts const& facts, std::initializer_list<Offset> offsets) {
    for (Offset const& offset : offsets) {
        SCOPED_TRACE(std::to_string(offset.x) + "," + std::to_string(offset.y));
        ImageSensor sensor(facts);
        EXPECT_EQ(sensor.set_roi_offset(offset.x, offset.y), offset.accepted ? 0 : -1);
        EXPECT_EQ(offset_of(sensor), offset.accepted ? std::make_pair(offset.x, offset.y) : std::make_pair(0U, 0U));
    }
}

TEST(ImageSensorTest, RegionOfImx296BeginsAtMultiplesOfFourInsideTheArray) {
    check_offsets(sim::imx296_facts(), {{20, 20, true},
                                        {4, 0, true},
                                        {2, 0, false},
                                        {0, 21, false},
                                        {1452, 1084, true},
                                        {1456, 0, false},
                                        {0, 1088, false},
                                        {0xFFFFFFFC, 0, false}});
}

TEST(ImageSensorTest, RegionOfImx567BeginsAtMultiplesOfEightInsideTheArray) {
    check_offsets(sim::imx567_facts(),
                  {{24, 16, true}, {20, 20, false}, {4, 0, false}, {2464, 2056, true}, {2472, 0, false}});
}

TEST(ImageSensorTest, FramesAreCounted) {
    ImageSensor sensor(sim::imx296_facts());
    sensor.take_frames(1);
    sensor.take_frames(1);
    EXPECT_EQ(sensor.frames(), 2U);
}

TEST(ImageSensorTest, GainAndVariantAreProperties) {
    ImageSensor sensor(sim::imx296_facts());
    sim::Properties properties;
    sim::describe(properties, sensor);
    EXPECT_EQ(sim::set_property(properties, "imx296.colour", "1"), "");
    unsigned int variant = 0;
    EXPECT_EQ(sensor.get_variant(variant), 0);
    EXPECT_EQ(variant, 1U);
    EXPECT_EQ(sim::set_property(properties, "imx296.colour", "2"),
              "imx296.colour: 2 is not one of 0 monochrome, 1 colour");
    EXPECT_EQ(sensor.variant(), 1U);
    EXPECT_EQ(sim::set_property(properties, "imx296.gain", "300"), "");
    EXPECT_NE(sim::set_property(properties, "imx296.gain", "481"), "");
    EXPECT_EQ(gain_of(sensor), 300U);
}

}  // namespace
