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

std::string interrupt_of(SensorHub& hub) {
    std::string report;
    EXPECT_EQ(hub.report_interrupt(report), 0);
    return report;
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

TEST_F(SensorHubTest, BootWithoutAnImageForgetsTheVerifyError) {
    expect_refused(hub.boot("no image"), EBADMSG);
    expect_refused(hub.boot(std::nullopt), ENOENT);
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

TEST_F(SensorHubTest, ImagesThatAreDamagedOnTheWayStartNothing) {
    hub.set_damages_images(true);
    expect_refused(hub.boot(kImage), EBADMSG);
    EXPECT_FALSE(hub.running());
    expect_refused(hub.boot(""), EBADMSG);
    hub.report_firmware(report);
    EXPECT_TRUE(holds(report, "0xD0")) << report;
    hub.set_damages_images(false);
    EXPECT_EQ(hub.boot(kImage), 0);
    hub.report_firmware(report);
    EXPECT_TRUE(holds(report, "0xB0")) << report;
}

TEST_F(SensorHubTest, UploadOfADamagedImageEndsTheFirmwareThatRan) {
    hub.activate(37, 10, 1, 0s);
    std::string damaged = kImage;
    damaged.back() = static_cast<char>(damaged.back() ^ 1);
    expect_refused(hub.upload(damaged), EBADMSG);
    EXPECT_FALSE(hub.running());
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

TEST_F(SensorHubTest, CallbacksStayUntilTheLastObjectRemovesThem) {
    EXPECT_FALSE(hub.callbacks_installed());
    EXPECT_EQ(hub.install_callbacks(), 0);
    EXPECT_EQ(hub.install_callbacks(), 0);
    hub.boot(kImage);
    hub.remove_callbacks();
    EXPECT_TRUE(hub.callbacks_installed());
    hub.remove_callbacks();
    EXPECT_FALSE(hub.callbacks_installed());
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
    EXPECT_EQ(report,
              "Sensor hub firmware\n"
              "  product id          0x89\n"
              "  image               none\n"
              "  ROM version         5166\n"
              "  kernel version      0\n"
              "  user version        0\n"
              "  boot status         0x90\n"
              "                      host interface ready: yes\n"
              "                      firmware verified: no\n"
              "                      firmware verify error: no\n"
              "                      idle: yes\n");
    EXPECT_EQ(hub.report_interrupt(report), 0);
    EXPECT_TRUE(holds(report, "0x81")) << report;
}

TEST_F(SensorHubTest, RatesOutsideOfTheLimitsAreRefusedAndTheOldOneStays) {
    EXPECT_EQ(hub.activate(37, 10, 1, 0s), 0);
    for (float const rate :
         {-1.0F, 400.5F, std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()}) {
        expect_refused(hub.activate(37, rate, 1, 0s), EINVAL);
    }
    EXPECT_EQ(hub.next_delivery(), 81ms);
    EXPECT_EQ(hub.activate(37, 0.01F, 1, 0s), 0);
    EXPECT_EQ(hub.next_delivery(), 641ms);
    EXPECT_EQ(hub.activate(37, 400, 0, 0s), 0);
    EXPECT_EQ(hub.next_delivery(), 2500us);
}

TEST_F(SensorHubTest, ARateBecomesTheNextThatTheSensorHas) {
    auto const in_force = [this](unsigned int id, float asked) {
        EXPECT_EQ(hub.activate(id, asked, 1, 0s), 0) << asked;
        double const rate = hub.active_sensors().front().rate;
        hub.activate(id, 0, 0, 0s);
        return rate;
    };
    EXPECT_EQ(in_force(37, 0.001F), 1.5625);
    EXPECT_EQ(in_force(37, 1), 1.5625);
    EXPECT_EQ(in_force(37, 1.5625F), 1.5625);
    EXPECT_EQ(in_force(37, 1.6F), 3.125);
    EXPECT_EQ(in_force(37, 5), 6.25);
    EXPECT_EQ(in_force(37, 10), 12.5);
    EXPECT_EQ(in_force(37, 200.5F), 400);
    EXPECT_EQ(in_force(37, 400), 400);
    EXPECT_EQ(in_force(1, 1), 12.5);
    EXPECT_EQ(in_force(10, 1), 25);
    EXPECT_EQ(in_force(77, 0.1F), 1);
}

TEST_F(SensorHubTest, EachKindOfSensorHasItsOwnLimits) {
    for (auto const& sensor : sim::virtual_sensors()) {
        double const most = sensor.trigger == sim::Trigger::period ? 400 : 1;
        EXPECT_EQ(sensor.max_rate, most) << sensor.name;
        expect_refused(hub.activate(sensor.id, static_cast<float>(most + 0.5), 1, 0s), EINVAL);
        EXPECT_EQ(hub.activate(sensor.id, static_cast<float>(most), 0xFFFFFF, 0s), 0);
    }
    EXPECT_EQ(hub.active_sensors().size(), 33U);
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
    hub.activate(37, 6.25F, 1, 1s);
    EXPECT_EQ(hub.next_delivery(), 1161ms);
    EXPECT_TRUE(hub.take_samples(1160ms).empty());
    EXPECT_EQ(times(hub.take_samples(1161ms)), (std::vector<long>{1160}));
    EXPECT_EQ(times(hub.take_samples(1801ms)), (std::vector<long>{1320, 1480, 1640, 1800}));
    EXPECT_TRUE(hub.take_samples(1801ms).empty());
    EXPECT_EQ(hub.samples(), 5U);
}

TEST_F(SensorHubTest, SamplesKeepTheirRateForHours) {
    hub.activate(37, 3.125F, 0, 0s);
    EXPECT_EQ(hub.take_samples(10000s).size(), 31250U);
    EXPECT_EQ(hub.next_delivery(), 10000320ms);
}

TEST_F(SensorHubTest, SamplesWithinTheLatencyComeTogether) {
    hub.activate(37, 12.5F, 250, 0s);
    EXPECT_EQ(hub.next_delivery(), 330ms);
    EXPECT_EQ(times(hub.take_samples(330ms)), (std::vector<long>{80, 160, 240, 320}));
    EXPECT_EQ(hub.next_delivery(), 650ms);
}

TEST_F(SensorHubTest, FullFifoIsDeliveredBeforeTheLatencyIsOver) {
    hub.activate(37, 400, 60000, 0s);
    EXPECT_EQ(hub.next_delivery(), 640ms);
    EXPECT_EQ(hub.take_samples(640ms).size(), 256U);
}

TEST_F(SensorHubTest, NoStepIsReportedOfADeviceThatTurns) {
    hub.activate(50, 1, 0, 0s);
    hub.activate(37, 100, 0, 0s);
    hub.tilt({0, 0, 90}, 1s, 0s);
    for (auto const& sample : hub.take_samples(2s)) {
        EXPECT_EQ(sample.sensor_id, 37);
    }
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

// Passed over in one for a while, they leave the hub as if each had been taken.
TEST_F(SensorHubTest, SamplesThatNobodyWantsAreCountedAsIfTheyWereTaken) {
    struct Sensor {
        float rate;
        unsigned int latency_ms;
    };
    for (auto const& [rate, latency_ms] :
         {Sensor{400, 0}, Sensor{400, 1}, Sensor{333.3F, 7}, Sensor{400, 60000}, Sensor{3, 250}, Sensor{1, 5000},
          Sensor{12.5F, 79}, Sensor{12.5F, 80}, Sensor{12.5F, 85}}) {
        SensorHub other = hub;
        SensorHub::Sample last{};
        for (SensorHub* const each : {&hub, &other}) {
            each->activate(37, rate, latency_ms, 1234us);
            each->activate(31, 1.5625F, 100, 0s);
            each->activate(38, 7, 100, 5ms);
            each->activate(50, 1, 0, 0s);
            each->activate(77, 1, 0, 0s);
        }
        hub.tilt({0, 0, 90}, 2s, 0s);  // which takes some that are not delivered yet
        other.tilt({0, 0, 90}, 2s, 0s);
        for (auto const now : {2s + 0us, 2s + 1us, 2s + 300us, 3s + 1234us, 60s + 0us, 61s + 640000us, 200s + 7us}) {
            hub.pass_samples(now);
            for (auto const& sample : other.take_samples(now)) {
                last = sample;
            }
            EXPECT_EQ(hub.samples(), other.samples()) << rate << " Hz, " << latency_ms << " ms at " << now.count();
            EXPECT_EQ(hub.next_delivery(), other.next_delivery());
            EXPECT_EQ(interrupt_of(hub), interrupt_of(other))
                << rate << " Hz, " << latency_ms << " ms at " << now.count();
        }
        EXPECT_GT(last.taken, 100s);
        EXPECT_EQ(times(hub.take_samples(300s)), times(other.take_samples(300s)));
    }
}

TEST_F(SensorHubTest, UnwantedSamplesAreNotCountedBeforeTheyCome) {
    hub.activate(37, 12.5F, 10, 1s);
    for (auto const now : {1s + 0ms, 1s + 5ms, 1s + 89ms}) {
        hub.pass_samples(now);
        EXPECT_EQ(hub.samples(), 0U) << now.count();
    }
    hub.pass_samples(1s + 90ms);
    EXPECT_EQ(hub.samples(), 1U);
}

TEST_F(SensorHubTest, RateZeroSwitchesTheSensorOff) {
    hub.activate(37, 10, 1, 0s);
    EXPECT_EQ(hub.activate(37, 0, 1, 0s), 0);
    EXPECT_EQ(hub.next_delivery(), std::nullopt);
    EXPECT_TRUE(hub.take_samples(10s).empty());
}

TEST_F(SensorHubTest, SensorsAtDifferentRatesComeInTheOrderOfDelivery) {
    hub.activate(37, 12.5F, 0, 0s);
    hub.activate(38, 6.25F, 30, 0s);
    std::string order;
    for (auto const& sample : hub.take_samples(400ms)) {
        order += sample.sensor_id == 37 ? 'a' : 'b';
        EXPECT_EQ(sample.kind, hal::cb_struct_te::quaternion_s16);
    }
    EXPECT_EQ(order, "aabaaba");
}

TEST_F(SensorHubTest, NoSampleComesAlongBeforeItsLatencyIsOver) {
    hub.activate(37, 12.5F, 0, 0s);
    hub.activate(38, 6.25F, 100, 0s);
    std::string order;
    for (auto const& sample : hub.take_samples(400ms)) {
        order += sample.sensor_id == 37 ? 'a' : 'b';
    }
    EXPECT_EQ(order, "aaabaa");
}

TEST_F(SensorHubTest, SensorsWithoutAnOrientationCarryNoQuaternion) {
    hub.activate(4, 12.5F, 0, 0s);
    auto const samples = hub.take_samples(80ms);
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
    hub.activate(37, 12.5F, 50, 0s);
    EXPECT_TRUE(hub.tilt({0, 0, 90}, 120ms, 0s));
    auto const before = hub.take_samples(130ms);
    ASSERT_EQ(before.size(), 1U);
    EXPECT_LT(sim::angle_between(sim::rotation_of(before[0].quaternion), sim::Rotation{}), 1);
    auto const after = hub.take_samples(210ms);
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

// The seconds at which a sensor of events reports while the device lies, tilts and lies again.
std::vector<long> seconds_of(unsigned int id, std::vector<std::pair<sim::Time, sim::Angles>> const& tilts) {
    SensorHub hub;
    hub.boot(kImage);
    EXPECT_EQ(hub.activate(id, 1, 0, 0s), 0);
    for (auto const& [when, angles] : tilts) {
        EXPECT_TRUE(hub.tilt(angles, when, 0s));
    }
    std::vector<long> seconds;
    for (auto const& sample : hub.take_samples(60s)) {
        EXPECT_EQ(sample.sensor_id, id);
        EXPECT_EQ(sample.kind, hal::cb_struct_te::none);
        seconds.push_back(std::chrono::duration_cast<std::chrono::seconds>(sample.taken).count());
    }
    return seconds;
}

using Seconds = std::vector<long>;

TEST(MotionSensorTest, MotionIsReportedWithinASecond) {
    EXPECT_EQ(seconds_of(77, {{2500ms, {0, 20, 0}}}), Seconds{3});
    EXPECT_EQ(seconds_of(77, {{2500ms, {20, 0, 0}}, {7s, {}}}), (Seconds{3, 8}));
    EXPECT_EQ(seconds_of(77, {{2500ms, {0, 1.9, 0}}}), Seconds{});
    EXPECT_EQ(seconds_of(77, {{2500ms, {0, 2.1, 0}}}), Seconds{3});
    EXPECT_EQ(seconds_of(77, {{2500ms, {0, 1.5, 0}}, {5500ms, {0, 3, 0}}}), Seconds{6}) << "adds up";
}

TEST_F(SensorHubTest, ASlowTurnIsReportedAgainAndAgain) {
    EXPECT_EQ(hub.activate(77, 1, 0, 0s), 0);
    EXPECT_TRUE(hub.tilt({0, 0, 12}, 0s, 12s));
    EXPECT_NEAR(static_cast<double>(hub.take_samples(60s).size()), 5.5, 1);
}

TEST(MotionSensorTest, SignificantMotionIsALargeTurn) {
    EXPECT_EQ(seconds_of(55, {{2500ms, {0, 14, 0}}}), Seconds{});
    EXPECT_EQ(seconds_of(55, {{2500ms, {0, 0, 16}}}), Seconds{3});
    EXPECT_EQ(seconds_of(55, {{2500ms, {90, 0, 0}}}), Seconds{3});
}

TEST(MotionSensorTest, TiltDetectorHeedsTheVerticalAlone) {
    EXPECT_EQ(seconds_of(48, {{2500ms, {90, 0, 0}}}), Seconds{});
    EXPECT_EQ(seconds_of(48, {{2500ms, {0, 34, 0}}}), Seconds{});
    EXPECT_EQ(seconds_of(48, {{2500ms, {0, 36, 0}}}), Seconds{3});
    EXPECT_EQ(seconds_of(48, {{2500ms, {170, 0, -36}}}), Seconds{3});
}

TEST(MotionSensorTest, DeviceOrientationIsReportedWithTheLowerEdge) {
    for (unsigned int const id : {69U, 70U}) {
        EXPECT_EQ(seconds_of(id, {{2500ms, {0, 0, 29}}}), Seconds{});
        EXPECT_EQ(seconds_of(id, {{1500ms, {0, 0, 31}}, {3500ms, {0, 0, 80}}, {5500ms, {}}, {7500ms, {0, 0, 60}}}),
                  Seconds{2});
        EXPECT_EQ(
            seconds_of(id, {{1500ms, {0, 60, 0}}, {3500ms, {0, 0, 60}}, {5500ms, {0, 0, -60}}, {7500ms, {0, -60, 0}}}),
            (Seconds{2, 4, 6, 8}));
    }
}

TEST(MotionSensorTest, StationaryIsReportedAfterFiveSecondsOfRest) {
    EXPECT_EQ(seconds_of(75, {}), Seconds{5});
    EXPECT_EQ(seconds_of(75, {{1500ms, {0, 20, 0}}}), Seconds{7});
    EXPECT_EQ(seconds_of(75, {{10500ms, {0, 20, 0}}}), (Seconds{5, 16}));
    EXPECT_EQ(seconds_of(75, {{10500ms, {0, 1, 0}}}), Seconds{5});
}

TEST(MotionSensorTest, GesturesAndStepsAreNotMadeByATilt) {
    for (unsigned int const id : {50U, 52U, 53U, 57U, 59U, 61U, 63U, 67U, 94U}) {
        EXPECT_EQ(seconds_of(id, {{2500ms, {0, 80, 0}}}), Seconds{}) << id;
    }
}

TEST_F(SensorHubTest, AnEventWaitsForItsLatency) {
    hub.activate(77, 1, 1500, 0s);
    EXPECT_EQ(hub.next_delivery(), 2500ms) << "if there is one at the first look";
    hub.tilt({0, 20, 0}, 100ms, 0s);
    EXPECT_TRUE(hub.take_samples(2499ms).empty());
    EXPECT_EQ(times(hub.take_samples(2500ms)), (std::vector<long>{1000}));
    EXPECT_EQ(hub.next_delivery(), 4500ms);
}

TEST_F(SensorHubTest, HeadingRunsAwayFromWhenTheSensorsWereSwitchedOn) {
    auto const yaw = [this](sim::Time now) {
        hal::quaternion_s16_t sample{};
        EXPECT_EQ(hub.measure(37, now, sample), 0);
        return sim::angles_of(sim::rotation_of(sample)).yaw;
    };
    EXPECT_EQ(hub.set_noise(0), 0);
    hub.set_drift(6);
    hub.activate(4, 10, 1, 0s);
    hub.activate(37, 10, 1, 100s);
    EXPECT_NEAR(yaw(100s), 0, 0.01);
    EXPECT_NEAR(yaw(130s), 3, 0.01);
    hub.activate(37, 25, 1, 130s);
    EXPECT_NEAR(yaw(130s), 3, 0.01) << "another rate is no new start";
    hub.activate(38, 10, 1, 130s);
    hub.activate(37, 10, 1, 130s);
    EXPECT_NEAR(yaw(160s), 6, 0.01) << "goes on while one of them is on";
    hub.activate(38, 0, 1, 160s);
    hub.activate(37, 0, 1, 160s);
    hub.activate(37, 10, 1, 160s);
    EXPECT_NEAR(yaw(170s), 1, 0.01);
    expect_refused(hub.set_drift(-0.1), EINVAL);
    expect_refused(hub.set_drift(10.1), EINVAL);
    EXPECT_EQ(hub.set_drift(10), 0);
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

TEST_F(SensorHubTest, ReportsAreWholeTables) {
    hub.report_firmware(report);
    EXPECT_EQ(report,
              "Sensor hub firmware\n"
              "  product id          0x89\n"
              "  image               BHI260AP\n"
              "  ROM version         5166\n"
              "  kernel version      5991\n"
              "  user version        5991\n"
              "  boot status         0xB0\n"
              "                      host interface ready: yes\n"
              "                      firmware verified: yes\n"
              "                      firmware verify error: no\n"
              "                      idle: yes\n");
    hub.report_virtual_sensor(37, report);
    EXPECT_EQ(report,
              "Virtual sensor 37: Game rotation vector\n"
              "  type                37\n"
              "  driver id           37\n"
              "  driver version      1\n"
              "  power               0\n"
              "  maximum range       1\n"
              "  resolution          16\n"
              "  maximum rate        400 Hz\n"
              "  fifo reserved       0\n"
              "  fifo maximum        256\n"
              "  event size          11\n"
              "  minimum rate        1.5625 Hz\n");
    hub.activate(10, 20, 30, 0s);
    hub.report_firmware(report);
    EXPECT_TRUE(holds(report, "0x30\n")) << report;
    EXPECT_TRUE(holds(report, "idle: no\n")) << report;
    hub.report_configuration(10, report);
    EXPECT_EQ(report,
              "Configuration of virtual sensor 10: Gyroscope passthrough\n"
              "  sample rate         25 Hz\n"
              "  latency             30 ms\n"
              "  sensitivity         0\n"
              "  range               2000\n");
    hub.report_physical_sensor(1, report);
    EXPECT_EQ(report,
              "Physical sensor 1: Accelerometer\n"
              "  maximum range       16\n"
              "  resolution          16\n"
              "  maximum rate        400 Hz\n");
    hub.report_interrupt(report);
    EXPECT_EQ(report,
              "Interrupt status\n"
              "  register 0x2D       0x81\n"
              "  asserted            yes\n"
              "  wake-up FIFO        no\n"
              "  non-wake-up FIFO    no\n"
              "  status FIFO         no\n"
              "  debug               no\n"
              "  reset or fault      yes\n");
    hub.report_interrupt_control(report);
    EXPECT_EQ(report,
              "Interrupt control\n"
              "  register 0x07       0x0C\n"
              "                      wake-up FIFO on\n"
              "                      non-wake-up FIFO on\n"
              "                      status FIFO off\n"
              "                      debug off\n"
              "                      fault on\n"
              "                      active high\n"
              "                      level\n"
              "                      push-pull\n");
    SensorHub().report_interrupt_control(report);
    EXPECT_TRUE(holds(report, "0x00")) << report;
    hub.report_virtual_sensors(report);
    EXPECT_EQ(report.find("Virtual sensors\n"
                          "   id  name                                    min Hz    max Hz\n"
                          "    1  Accelerometer passthrough                 12.5       400\n"
                          "    3  Accelerometer uncalibrated              1.5625       400\n"),
              0U);
    hub.report_physical_sensors(report);
    EXPECT_EQ(report,
              "Physical sensors\n   id  name\n    1  Accelerometer\n    3  Gyroscope\n   32  Step counter\n"
              "   33  Step detector\n   34  Significant motion\n");
}

TEST_F(SensorHubTest, UploadTimeHasItsRange) {
    EXPECT_EQ(hub.upload_time(), 200ms);
    EXPECT_EQ(hub.set_upload_time(60000), 0);
    expect_refused(hub.set_upload_time(60001), EINVAL);
    EXPECT_EQ(hub.upload_time(), 60s);
}

TEST_F(SensorHubTest, ConfigurationFollowsTheActivation) {
    EXPECT_EQ(hub.report_configuration(37, report), 0);
    EXPECT_TRUE(holds(report, " 0 Hz\n")) << report;
    EXPECT_TRUE(holds(report, " 0 ms\n")) << report;
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
    hub.boot(kImage);
    hub.report_interrupt(report);
    EXPECT_TRUE(holds(report, "0x81")) << report;
}

TEST_F(SensorHubTest, InterruptStatusTellsTheFifosThatWaitToBeRead) {
    hub.report_interrupt(report);
    auto const status_after = [this](unsigned int id, float rate, unsigned int latency_ms, sim::Duration length) {
        hub.activate(id, rate, latency_ms, 0s);
        hub.take_samples(length);
        hub.activate(id, 0, 0, 0s);
        hub.report_interrupt(report);
        return report.substr(report.find("0x", report.find("0x2D") + 4), 4);
    };
    EXPECT_EQ(status_after(37, 400, 0, 10ms), "0x09") << "at once";
    EXPECT_TRUE(holds(report, "non-wake-up FIFO    yes")) << report;
    EXPECT_TRUE(holds(report, "  wake-up FIFO        no")) << report;
    EXPECT_EQ(status_after(37, 400, 5, 10ms), "0x11") << "by the latency";
    EXPECT_EQ(status_after(37, 400, 60000, 700ms), "0x19") << "full";
    EXPECT_EQ(status_after(37, 400, 60000, 600ms), "0x00") << "not yet to be read";
    EXPECT_EQ(status_after(38, 400, 0, 10ms), "0x03");
    EXPECT_TRUE(holds(report, "  wake-up FIFO        yes")) << report;
    EXPECT_EQ(status_after(38, 400, 5, 10ms), "0x05");
    EXPECT_EQ(status_after(75, 1, 0, 5s), "0x09");
    hub.activate(37, 400, 0, 0s);
    hub.activate(38, 400, 5, 0s);
    hub.take_samples(100ms);
    hub.report_interrupt(report);
    EXPECT_TRUE(holds(report, "0x0D")) << report;
    hub.take_samples(200ms);
    hub.read_interrupt();
    hub.report_interrupt(report);
    EXPECT_TRUE(holds(report, "0x00")) << "the host has read it";
    hub.take_samples(300ms);
    hub.boot(kImage);
    hub.report_interrupt(report);
    EXPECT_TRUE(holds(report, "0x81")) << report;
}

TEST_F(SensorHubTest, TheLastToSpeakOfAFifoIsHeard) {
    interrupt_of(hub);
    hub.activate(4, 12.5F, 80, 0s);
    hub.activate(37, 12.5F, 0, 0s);
    hub.take_samples(160ms);
    EXPECT_TRUE(holds(interrupt_of(hub), "0x09")) << "of two at the same time, the one with the higher id";
    hub.activate(37, 0, 0, 160ms);
    hub.take_samples(320ms);
    EXPECT_TRUE(holds(interrupt_of(hub), "0x11"));
}

TEST_F(SensorHubTest, TheLastToSpeakOfAFifoIsHeardWhereNobodyWantsTheSamples) {
    interrupt_of(hub);
    hub.activate(4, 400, 0, 0s);
    hub.activate(7, 6.25F, 10, 0s);
    hub.activate(37, 6.25F, 10, 0s);
    hub.activate(38, 12.5F, 0, 0s);
    hub.pass_samples(200ms);
    EXPECT_TRUE(holds(interrupt_of(hub), "0x0D")) << "at 170 ms the wake-up FIFO, at 200 ms the other one";
}

TEST_F(SensorHubTest, FullFifoIsToldWhereNobodyWantsTheSamples) {
    interrupt_of(hub);
    hub.activate(37, 400, 60000, 0s);
    hub.pass_samples(700ms);
    EXPECT_TRUE(holds(interrupt_of(hub), "0x19"));
}

TEST_F(SensorHubTest, InterruptControlTellsEveryBit) {
    EXPECT_EQ(hub.report_interrupt_control(report), 0);
    for (char const* part : {"0x0C", " wake-up FIFO on", "status FIFO off", "debug off", "active high", "level"}) {
        EXPECT_TRUE(holds(report, part)) << report;
    }
}

}  // namespace
