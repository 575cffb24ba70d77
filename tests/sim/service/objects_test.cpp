// Tests of the objects that programs have on the device: who still tells them what, once they have gone.
#include "sim/service/objects.h"

#include <gtest/gtest.h>

#include "sim/service/program.h"

namespace {

using namespace std::chrono_literals;
using sim::Text;

// The test keeps each object after the program has given it up: what still knows it then would know one that is gone.
class ObjectsTest : public testing::Test {
protected:
    template <typename Object, typename... Argument>
    std::shared_ptr<Object> make(Argument&&... arguments) {
        auto object = std::make_shared<Object>(*access_, program_, arguments...);
        object->set_number(++access_->last_object);
        program_.add(object);
        return object;
    }
    std::shared_ptr<sim::GyroObject> make_gyro() {
        return make<sim::GyroObject>(Text("/dev/i2c-2"), Text("/sys/class/gpio/gpio481/value"));
    }

    sim::Device device_{std::make_unique<sim::MemoryFileSystem>()};
    sim::Program program_{device_, 1, "test.1", 1};
    sim::Device::Access access_ = device_.access();
};

TEST_F(ObjectsTest, ADelegateThatGoesIsUnsubscribed) {
    auto const gyro = make_gyro();
    auto const delegate = make<sim::DelegateObject>(*gyro, 37, true);
    auto const other = make<sim::DelegateObject>(*gyro, 37, true);
    EXPECT_TRUE(gyro->has(*delegate));
    program_.remove(*delegate);
    EXPECT_FALSE(gyro->has(*delegate));
    EXPECT_TRUE(gyro->has(*other));
}

TEST_F(ObjectsTest, AnAlarmThatGoesIsUnsubscribed) {
    auto const gyro = make_gyro();
    auto const alarm = make<sim::AlarmObject>(*gyro, std::uint16_t{37});
    EXPECT_TRUE(gyro->has(*alarm));
    program_.remove(*alarm);
    EXPECT_FALSE(gyro->has(*alarm));
}

TEST_F(ObjectsTest, AGyroThatGoesIsUnsubscribedAndForgetsItsListeners) {
    auto const gyro = make_gyro();
    auto const alarm = make<sim::AlarmObject>(*gyro, std::uint16_t{37});
    auto const other = make_gyro();
    EXPECT_EQ(access_->samples.listeners(), 2U);
    program_.remove(*gyro);
    EXPECT_EQ(access_->samples.listeners(), 1U);
    EXPECT_FALSE(gyro->has(*alarm));
    program_.remove(*other);
    EXPECT_EQ(access_->samples.listeners(), 0U);
}

TEST_F(ObjectsTest, AButtonThatGoesIsUnsubscribed) {
    auto const button = make<sim::ButtonObject>(Text("/dev/gpiochip1"), 82L, sim::Duration(2ms));
    EXPECT_EQ(access_->presses.listeners(), 1U);
    program_.remove(*button);
    EXPECT_EQ(access_->presses.listeners(), 0U);
}

TEST_F(ObjectsTest, AProgramThatEndsUnsubscribesAll) {
    auto const gyro = make_gyro();
    auto const alarm = make<sim::AlarmObject>(*gyro, std::uint16_t{37});
    auto const button = make<sim::ButtonObject>(Text("/dev/gpiochip1"), 82L, sim::Duration(2ms));
    program_.release_objects();
    EXPECT_FALSE(gyro->has(*alarm));
    EXPECT_EQ(access_->samples.listeners(), 0U);
    EXPECT_EQ(access_->presses.listeners(), 0U);
}

}  // namespace
