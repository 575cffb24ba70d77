// The sensor hub: boot, virtual sensors, samples and reports.
#include "sim/models/sensor_hub.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "sim/device/describe.h"

#include "sim/models/sensor_catalogue.h"

namespace {

using namespace std::chrono_literals;
using sim::SensorHub;

std::string const kImage = sim::make_firmware_image({sim::HubVariant::bhi260ap, 5991});

class SensorHubTest : public testing::Test {
protected:
    SensorHubTest() { hub.boot(kImage); }

    SensorHub hub;
    std::string report;
};

void expect_refused(int status, int error) {
    EXPECT_EQ(status, -1);
    EXPECT_EQ(errno, error);
}

bool holds(std::string const& text, std::string const& part) {
    return text.find(part) != std::string::npos;
}

// The times at which samples were taken, in milliseconds.
std::vector<long> times(std::vector<SensorHub::Sample> const& samples) {
    std::vector<long> list;
    for (auto const& sample : samples) {
        list.push_back(std::chrono::duration_cast<std::chrono::milliseconds>(sample.taken).count());
    }
    return list;
}

TEST_F(SensorHubTest, BootsBothVariants) {
    EXPECT_EQ(hub.boot(sim::make_firmware_image({sim::HubVariant::bhi260ab, 6000})), 0);
    EXPECT_EQ(hub.report_firmware(report), 0);
    EXPECT_TRUE(holds(report, "BHI260AB")) << report;
    EXPECT_TRUE(holds(report, "6000")) << report;
    EXPECT_EQ(hub.boot(kImage), 0);
    hub.report_firmware(report);
    EXPECT_TRUE(holds(report, "BHI260AP")) << report;
}

TEST_F(SensorHubTest, BootWithoutAnImageLeavesTheHubInItsBootLoader) {
    expect_refused(hub.boot(std::nullopt), ENOENT);
    EXPECT_FALSE(hub.running());
    hub.report_firmware(report);
    EXPECT_TRUE(holds(report, "0x90")) << report;
}

TEST_F(SensorHubTest, BootWithADamagedImageSetsTheVerifyError) {
    std::string damaged = kImage;
    damaged.back() = static_cast<char>(damaged.back() ^ 1);
    expect_refused(hub.boot(damaged), EBADMSG);
    EXPECT_FALSE(hub.running());
    hub.report_firmware(report);
    EXPECT_TRUE(holds(report, "firmware verify error: yes")) << report;
}

TEST_F(SensorHubTest, BootSwitchesAllSensorsOff) {
    hub.activate(37, 10, 1, 0s);
    hub.boot(kImage);
    EXPECT_EQ(hub.next_delivery(), std::nullopt);
}

TEST_F(SensorHubTest, UploadOfWhatIsNoImageLeavesTheHubRunning) {
    hub.activate(37, 10, 1, 0s);
    expect_refused(hub.upload(std::nullopt), ENOENT);
    expect_refused(hub.upload("none"), EBADMSG);
    EXPECT_TRUE(hub.next_delivery().has_value());
    EXPECT_EQ(hub.upload(sim::make_firmware_image({sim::HubVariant::bhi260ab, 7})), 0);
    EXPECT_EQ(hub.next_delivery(), std::nullopt);
    EXPECT_TRUE(hub.running());
}

TEST(SensorHubAtRestTest, NothingWorksBeforeTheFirstBoot) {
    SensorHub hub;
    std::string report;
    expect_refused(hub.activate(37, 10, 1, 0s), EIO);
    expect_refused(hub.install_callbacks(), EIO);
    auto const expect_no_report = [&](int status) {
        expect_refused(status, EIO);
        EXPECT_EQ(report, "The sensor hub runs no firmware\n");
        report.clear();
    };
    expect_no_report(hub.report_virtual_sensors(report));
    expect_no_report(hub.report_virtual_sensor(37, report));
    expect_no_report(hub.report_configuration(37, report));
    expect_no_report(hub.report_physical_sensors(report));
    expect_no_report(hub.report_physical_sensor(1, report));
    EXPECT_EQ(hub.report_firmware(report), 0);
    EXPECT_TRUE(holds(report, "none")) << report;
}

TEST_F(SensorHubTest, RatesOutsideOfTheLimitsAreRefusedAndTheOldOneStays) {
    EXPECT_EQ(hub.activate(37, 10, 1, 0s), 0);
    for (float const rate : {0.5F, -1.0F, 400.5F, std::numeric_limits<float>::quiet_NaN()}) {
        expect_refused(hub.activate(37, rate, 1, 0s), EINVAL);
    }
    EXPECT_EQ(hub.next_delivery(), 101ms);
    EXPECT_EQ(hub.activate(37, 1, 1, 0s), 0);
    EXPECT_EQ(hub.next_delivery(), 1001ms);
    EXPECT_EQ(hub.activate(37, 400, 0, 0s), 0);
    EXPECT_EQ(hub.next_delivery(), 2500us);
}

TEST_F(SensorHubTest, EachKindOfSensorHasItsOwnLimits) {
    expect_refused(hub.activate(1, 12, 1, 0s), EINVAL);
    EXPECT_EQ(hub.activate(1, 12.5F, 1, 0s), 0);
    expect_refused(hub.activate(10, 24, 1, 0s), EINVAL);
    EXPECT_EQ(hub.activate(10, 25, 1, 0s), 0);
    expect_refused(hub.activate(48, 2, 1, 0s), EINVAL);
    EXPECT_EQ(hub.activate(48, 1, 1, 0s), 0);
}

TEST_F(SensorHubTest, SensorsThatAreOnAreShown) {
    sim::Properties properties;
    sim::describe(properties, hub, [] { return sim::Time(0); });
    auto const shown = [&] { return sim::value_text(properties.all().at("hub.sensors").get()); };
    EXPECT_EQ(shown(), "none");
    hub.activate(37, 50, 100, 0s);
    hub.activate(10, 25, 0, 0s);
    EXPECT_EQ(shown(), "10 at 25 Hz 0 ms, 37 at 50 Hz 100 ms");
}

TEST_F(SensorHubTest, SensorsThatAreNotPresentAreRefused) {
    for (unsigned int const id : {0U, 2U, 8U, 36U, 39U, 95U, 293U, 4000000000U}) {
        expect_refused(hub.activate(id, 10, 1, 0s), EINVAL);
    }
    expect_refused(hub.activate(37, 10, 0x1000000, 0s), EINVAL);
}

TEST_F(SensorHubTest, SamplesComeAtTheirRate) {
    hub.activate(37, 5, 1, 1s);
    EXPECT_EQ(hub.next_delivery(), 1201ms);
    EXPECT_TRUE(hub.take_samples(1200ms).empty());
    EXPECT_EQ(times(hub.take_samples(1201ms)), (std::vector<long>{1200}));
    EXPECT_EQ(times(hub.take_samples(2001ms)), (std::vector<long>{1400, 1600, 1800, 2000}));
    EXPECT_TRUE(hub.take_samples(2001ms).empty());
}

TEST_F(SensorHubTest, OddRatesDoNotDrift) {
    hub.activate(37, 3, 0, 0s);
    EXPECT_EQ(hub.take_samples(1000s).size(), 3000U);
    EXPECT_EQ(hub.next_delivery(), 1000333333us);
}

TEST_F(SensorHubTest, SamplesWithinTheLatencyComeTogether) {
    hub.activate(37, 10, 250, 0s);
    EXPECT_EQ(hub.next_delivery(), 350ms);
    EXPECT_EQ(times(hub.take_samples(350ms)), (std::vector<long>{100, 200, 300}));
    EXPECT_EQ(hub.next_delivery(), 650ms);
}

TEST_F(SensorHubTest, FullFifoIsDeliveredBeforeTheLatencyIsOver) {
    hub.activate(37, 400, 60000, 0s);
    EXPECT_EQ(hub.next_delivery(), 640ms);
    EXPECT_EQ(hub.take_samples(640ms).size(), 256U);
}

TEST_F(SensorHubTest, LateReaderGetsEverySampleOnce) {
    hub.activate(37, 400, 1, 0s);
    std::size_t samples = 0;
    for (auto now = 0ms; now <= 10s; now += 37ms) {
        samples += hub.take_samples(now).size();
    }
    samples += hub.take_samples(10001ms).size();
    EXPECT_EQ(samples, 4000U);
}

TEST_F(SensorHubTest, RateZeroSwitchesTheSensorOff) {
    hub.activate(37, 10, 1, 0s);
    EXPECT_EQ(hub.activate(37, 0, 1, 0s), 0);
    EXPECT_EQ(hub.next_delivery(), std::nullopt);
    EXPECT_TRUE(hub.take_samples(10s).empty());
}

TEST_F(SensorHubTest, SensorsAtDifferentRatesComeInTheOrderOfDelivery) {
    hub.activate(37, 10, 0, 0s);
    hub.activate(38, 4, 0, 0s);
    std::string order;
    for (auto const& sample : hub.take_samples(500ms)) {
        order += sample.sensor_id == 37 ? 'a' : 'b';
        EXPECT_EQ(sample.kind, hal::cb_struct_te::quaternion_s16);
    }
    EXPECT_EQ(order, "aabaaab");
}

TEST_F(SensorHubTest, SensorsWithoutAnOrientationCarryNoQuaternion) {
    hub.activate(4, 10, 0, 0s);
    auto const samples = hub.take_samples(100ms);
    ASSERT_EQ(samples.size(), 1U);
    EXPECT_EQ(samples[0].sensor_id, 4);
    EXPECT_EQ(samples[0].kind, hal::cb_struct_te::none);
}

TEST_F(SensorHubTest, EventSensorsHaveNoSamplesAtRest) {
    hub.activate(50, 1, 0, 0s);
    EXPECT_EQ(hub.next_delivery(), std::nullopt);
    EXPECT_TRUE(hub.take_samples(100s).empty());
}

TEST_F(SensorHubTest, SampleTakenBeforeATiltHasTheOldOrientation) {
    hub.activate(37, 10, 50, 0s);
    EXPECT_TRUE(hub.tilt({0, 0, 90}, 120ms, 0s));
    auto const before = hub.take_samples(150ms);
    ASSERT_EQ(before.size(), 1U);
    EXPECT_LT(sim::angle_between(sim::rotation_of(before[0].quaternion), sim::Rotation{}), 1);
    auto const after = hub.take_samples(250ms);
    ASSERT_EQ(after.size(), 1U);
    EXPECT_GT(sim::angle_between(sim::rotation_of(after[0].quaternion), sim::Rotation{}), 89);
}

TEST_F(SensorHubTest, OrientationIsMeasuredWhileItsSensorIsOn) {
    hal::quaternion_s16_t sample{};
    expect_refused(hub.measure(37, 0s, sample), EIO);
    hub.activate(37, 1, 1, 0s);
    hub.tilt({0, 30, 0}, 0s, 0s);
    EXPECT_EQ(hub.measure(37, 1s, sample), 0);
    EXPECT_NEAR(sim::angle_between(sim::rotation_of(sample), sim::Rotation{}), 30, 0.5);
    hub.activate(4, 1, 1, 0s);
    expect_refused(hub.measure(4, 0s, sample), EIO);
}

TEST_F(SensorHubTest, ListsAllSensors) {
    EXPECT_EQ(hub.report_virtual_sensors(report), 0);
    for (auto const& sensor : sim::virtual_sensors()) {
        EXPECT_FALSE(sensor.name.empty());
        EXPECT_TRUE(holds(report, std::string(sensor.name))) << sensor.name;
    }
    EXPECT_EQ(hub.report_physical_sensors(report), 0);
    EXPECT_TRUE(holds(report, "    3  Gyroscope")) << report;
}

TEST_F(SensorHubTest, ReportsOneSensor) {
    EXPECT_EQ(hub.report_virtual_sensor(37, report), 0);
    for (char const* part : {"Virtual sensor 37: Game rotation vector\n", "400 Hz\n", "1.5625 Hz\n", "event size"}) {
        EXPECT_TRUE(holds(report, part)) << report;
    }
    EXPECT_EQ(hub.report_physical_sensor(1, report), 0);
    EXPECT_TRUE(holds(report, "Physical sensor 1: Accelerometer\n")) << report;
}

TEST_F(SensorHubTest, ConfigurationFollowsTheActivation) {
    EXPECT_EQ(hub.report_configuration(37, report), 0);
    EXPECT_TRUE(holds(report, " 0 Hz\n")) << report;
    hub.activate(37, 12.5F, 30, 0s);
    hub.report_configuration(37, report);
    EXPECT_TRUE(holds(report, "12.5 Hz\n")) << report;
    EXPECT_TRUE(holds(report, "30 ms\n")) << report;
}

TEST_F(SensorHubTest, ReportOfASensorThatIsNotPresentSaysSo) {
    expect_refused(hub.report_virtual_sensor(0, report), EINVAL);
    EXPECT_EQ(report, "Virtual sensor 0 is not present\n");
    expect_refused(hub.report_configuration(-5, report), EINVAL);
    EXPECT_EQ(report, "Virtual sensor -5 is not present\n");
    expect_refused(hub.report_physical_sensor(2, report), EINVAL);
    EXPECT_EQ(report, "Physical sensor 2 is not present\n");
}

TEST_F(SensorHubTest, InterruptStatusTellsTheResetOnce) {
    EXPECT_EQ(hub.report_interrupt(report), 0);
    EXPECT_TRUE(holds(report, "0x81")) << report;
    EXPECT_EQ(hub.report_interrupt(report), 0);
    EXPECT_TRUE(holds(report, "0x00")) << report;
}

TEST_F(SensorHubTest, InterruptControlTellsEveryBit) {
    EXPECT_EQ(hub.report_interrupt_control(report), 0);
    for (char const* part : {"0x0C", " wake-up FIFO on", "status FIFO off", "debug off", "active high", "level"}) {
        EXPECT_TRUE(holds(report, part)) << report;
    }
}

}  // namespace
