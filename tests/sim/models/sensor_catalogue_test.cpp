// The sensor hub's sensors: the whole table, as it is published.
#include "sim/models/sensor_catalogue.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sim/core/numbers.h"

namespace {

using sim::Trigger;
using sim::VirtualSensor;

std::string row_of(VirtualSensor const& sensor) {
    std::string row = std::to_string(sensor.id) + " " + std::string(sensor.name) + ":";
    row += " " + sim::number_text(sensor.min_rate) + "-" + sim::number_text(sensor.max_rate) + " Hz";
    for (unsigned int const figure : {sensor.max_range, sensor.resolution, sensor.event_size}) {
        row += " " + std::to_string(figure);
    }
    return row + (sensor.orientation ? " orientation" : "");
}

TEST(SensorCatalogueTest, HasTheVirtualSensorsOfAHubWithoutMagnetometer) {
    std::vector<std::string> rows;
    for (VirtualSensor const& sensor : sim::virtual_sensors()) {
        rows.push_back(row_of(sensor));
    }
    EXPECT_EQ(rows, (std::vector<std::string>{"1 Accelerometer passthrough: 12.5-400 Hz 16 16 7",
                                              "3 Accelerometer uncalibrated: 1.5625-400 Hz 16 16 7",
                                              "4 Accelerometer corrected: 1.5625-400 Hz 16 16 7",
                                              "5 Accelerometer offset: 1.5625-400 Hz 16 16 7",
                                              "6 Accelerometer corrected wake up: 1.5625-400 Hz 16 16 7",
                                              "7 Accelerometer uncalibrated wake up: 1.5625-400 Hz 16 16 7",
                                              "10 Gyroscope passthrough: 25-400 Hz 2000 16 7",
                                              "12 Gyroscope uncalibrated: 1.5625-400 Hz 2000 16 7",
                                              "13 Gyroscope corrected: 1.5625-400 Hz 2000 16 7",
                                              "14 Gyroscope offset: 1.5625-400 Hz 2000 16 7",
                                              "15 Gyroscope corrected wake up: 1.5625-400 Hz 2000 16 7",
                                              "16 Gyroscope uncalibrated wake up: 1.5625-400 Hz 2000 16 7",
                                              "28 Gravity vector: 1.5625-400 Hz 16 16 7",
                                              "29 Gravity vector wake up: 1.5625-400 Hz 16 16 7",
                                              "31 Linear acceleration: 1.5625-400 Hz 16 16 7",
                                              "32 Linear acceleration wake up: 1.5625-400 Hz 16 16 7",
                                              "37 Game rotation vector: 1.5625-400 Hz 1 16 11 orientation",
                                              "38 Game rotation vector wake up: 1.5625-400 Hz 1 16 11 orientation",
                                              "48 Tilt detector: 1-1 Hz 0 1 1",
                                              "50 Step detector: 1-1 Hz 0 1 1",
                                              "52 Step counter: 1-1 Hz 0 1 5",
                                              "53 Step counter wake up: 1-1 Hz 0 1 5",
                                              "55 Significant motion: 1-1 Hz 0 1 1",
                                              "57 Wake gesture: 1-1 Hz 0 1 1",
                                              "59 Glance gesture: 1-1 Hz 0 1 1",
                                              "61 Pickup gesture: 1-1 Hz 0 1 1",
                                              "63 Activity recognition: 1-1 Hz 0 1 3",
                                              "67 Wrist tilt: 1-1 Hz 0 1 1",
                                              "69 Device orientation: 1-1 Hz 0 1 2",
                                              "70 Device orientation wake up: 1-1 Hz 0 1 2",
                                              "75 Stationary detect: 1-1 Hz 0 1 1",
                                              "77 Motion detect: 1-1 Hz 0 1 1",
                                              "94 Step detector wake up: 1-1 Hz 0 1 1"}));
}

TEST(SensorCatalogueTest, KnowsTheSensorsThatWakeTheHost) {
    std::vector<unsigned int> ids;
    for (VirtualSensor const& sensor : sim::virtual_sensors()) {
        if (sensor.wake_up) {
            ids.push_back(sensor.id);
        }
    }
    EXPECT_EQ(ids, (std::vector<unsigned int>{6, 7, 15, 16, 29, 32, 38, 48, 53, 55, 57, 59, 61, 63, 67, 70, 94}));
}

TEST(SensorCatalogueTest, SensorsOfEventsHaveTheirAngle) {
    auto const expect = [](long long id, Trigger trigger, double angle) {
        VirtualSensor const* const sensor = sim::find_virtual_sensor(id);
        ASSERT_NE(sensor, nullptr);
        EXPECT_EQ(sensor->trigger, trigger) << id;
        EXPECT_EQ(sensor->angle, angle) << id;
    };
    expect(48, Trigger::tilt, 35);
    expect(55, Trigger::turn, 15);
    expect(69, Trigger::edge, 30);
    expect(70, Trigger::edge, 30);
    expect(75, Trigger::rest, 2);
    expect(77, Trigger::turn, 2);
    expect(37, Trigger::period, 0);
    expect(50, Trigger::never, 0);
    expect(1, Trigger::period, 0);
    expect(10, Trigger::period, 0);
}

TEST(SensorCatalogueTest, HasThePhysicalSensors) {
    std::string rows;
    for (sim::PhysicalSensor const& sensor : sim::physical_sensors()) {
        rows += std::to_string(sensor.id) + " " + std::string(sensor.name) + " " + sim::number_text(sensor.max_rate) +
                " " + std::to_string(sensor.max_range) + " " + std::to_string(sensor.resolution) + "\n";
    }
    EXPECT_EQ(rows,
              "1 Accelerometer 400 16 16\n"
              "3 Gyroscope 400 2000 16\n"
              "32 Step counter 1 0 32\n"
              "33 Step detector 1 0 1\n"
              "34 Significant motion 1 0 1\n");
}

TEST(SensorCatalogueTest, FindsByIdAlone) {
    EXPECT_EQ(sim::find_virtual_sensor(38)->name, "Game rotation vector wake up");
    EXPECT_EQ(sim::find_physical_sensor(3)->name, "Gyroscope");
    for (long long const id : {-1LL, 0LL, 2LL, 95LL, (1LL << 32) + 37}) {
        EXPECT_EQ(sim::find_virtual_sensor(id), nullptr) << id;
        EXPECT_EQ(sim::find_physical_sensor(id), nullptr) << id;
    }
}

TEST(SensorCatalogueTest, SupportedRateIsTheNextOfTheSensorsOwn) {
    VirtualSensor const& rotation = *sim::find_virtual_sensor(37);
    EXPECT_EQ(sim::supported_rate(rotation, 0.1), 1.5625);
    EXPECT_EQ(sim::supported_rate(rotation, 3.125), 3.125);
    EXPECT_EQ(sim::supported_rate(rotation, 3.126), 6.25);
    EXPECT_EQ(sim::supported_rate(rotation, 400), 400);
    EXPECT_EQ(sim::supported_rate(rotation, 400.1), std::nullopt);
    EXPECT_EQ(sim::supported_rate(*sim::find_virtual_sensor(77), 0.5), 1);
    EXPECT_EQ(sim::supported_rate(*sim::find_virtual_sensor(77), 1.5), std::nullopt);
}

}  // namespace
