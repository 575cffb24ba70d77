// The six pins: logic, functions, delays and refusals.
#include "sim/models/digital_io.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using sim::DigitalIo;
using sim::Time;
using config_t = hal::dio_pin_config_t;
using func_t = config_t::pin_func;
using type_t = config_t::pin_type;

// An input is active while its wire is high.
config_t with_func(func_t func) {
    config_t config;
    config.type = type_t::pnp;
    config.func = func;
    return config;
}

bool value_of(DigitalIo const& pins, unsigned char pin) {
    bool value = false;
    EXPECT_EQ(pins.get_value(pin, value), 0);
    return value;
}

// Carries out what is due until `now`; how many triggers that made.
unsigned int run_until(DigitalIo& pins, Time now) {
    unsigned int triggers = 0;
    while (pins.next_change() && *pins.next_change() <= now) {
        triggers += pins.change();
    }
    return triggers;
}

TEST(DigitalIoTest, PinsAboveFiveAreRefused) {
    DigitalIo pins;
    bool value = true;
    config_t config;
    for (unsigned char pin : {std::uint8_t{6}, std::uint8_t{255}}) {
        EXPECT_EQ(pins.set_config(pin, config), -1);
        EXPECT_EQ(pins.get_config(pin, config), -1);
        EXPECT_EQ(pins.set_value(pin, true, Time(0)), -1);
        EXPECT_EQ(pins.get_value(pin, value), -1);
    }
    EXPECT_TRUE(value);
}

TEST(DigitalIoTest, RecordIsTakenAsAWhole) {
    DigitalIo pins;
    config_t config;
    config.type = type_t::push_pull;
    config.func = func_t::quadrature_input_b;
    config.config = config_t::pin_config::normally_closed;
    config.invert = true;
    config.on_delay_active = true;
    config.on_delay_time = 1;
    config.off_delay_time = 2;
    config.pulse_time = 3;
    ASSERT_EQ(pins.set_config(5, config), 0);
    config_t read;
    ASSERT_EQ(pins.get_config(5, read), 0);
    EXPECT_EQ(read.type, config.type);
    EXPECT_EQ(read.func, config.func);
    EXPECT_EQ(read.config, config.config);
    EXPECT_TRUE(read.invert && read.on_delay_active);
    EXPECT_FALSE(read.off_delay_active || read.pulse_active);
    EXPECT_EQ(read.on_delay_time, 1);
    EXPECT_EQ(read.off_delay_time, 2);
    EXPECT_EQ(read.pulse_time, 3);
}

TEST(DigitalIoTest, RefusedRecordKeepsTheOldOne) {
    DigitalIo pins;
    ASSERT_EQ(pins.set_config(0, with_func(func_t::input)), 0);
    config_t bad[9];
    bad[0].type = static_cast<type_t>(3);
    bad[1].func = static_cast<func_t>(6);
    bad[2].func = static_cast<func_t>(-1);
    bad[3].on_delay_time = -1;
    bad[4].off_delay_time = -1;
    bad[5].pulse_time = -1;
    bad[6].config = static_cast<config_t::pin_config>(2);
    bad[7].config = static_cast<config_t::pin_config>(-1);
    bad[8].type = static_cast<type_t>(-1);
    for (config_t const& config : bad) {
        EXPECT_EQ(pins.set_config(0, config), -1);
    }
    config_t read;
    ASSERT_EQ(pins.get_config(0, read), 0);
    EXPECT_EQ(read.func, func_t::input);
}

struct Logic {
    bool closed;
    bool inverted;
    bool turned;
};
constexpr Logic kLogics[] = {{false, false, false}, {true, false, true}, {false, true, true}, {true, true, false}};

TEST(DigitalIoTest, ContactLogicAndInversionTurnBothDirectionsRound) {
    for (Logic const& logic : kLogics) {
        for (func_t func : {func_t::output, func_t::input, func_t::illumination_output}) {
            SCOPED_TRACE(testing::Message() << logic.closed << logic.inverted << static_cast<int>(func));
            DigitalIo pins;
            config_t config = with_func(func);
            config.config = static_cast<config_t::pin_config>(logic.closed);
            config.invert = logic.inverted;
            ASSERT_EQ(pins.set_config(1, config), 0);
            for (bool on : {false, true}) {
                pins.drive(1, on, Time(0));
                pins.set_exposing(on, Time(0));
                EXPECT_EQ(pins.set_value(1, on, Time(0)), func == func_t::output ? 0 : -1);
                EXPECT_EQ(value_of(pins, 1), on != logic.turned);
            }
        }
    }
}

TEST(DigitalIoTest, WireOfAnOutputHasNoEffect) {
    DigitalIo pins;
    pins.drive(0, true, Time(0));
    EXPECT_FALSE(value_of(pins, 0));
    ASSERT_EQ(pins.set_config(0, with_func(func_t::input)), 0);
    EXPECT_TRUE(value_of(pins, 0));
}

TEST(DigitalIoTest, AllValuesAreBitsByPin) {
    DigitalIo pins;
    ASSERT_EQ(pins.set_value(0, true, Time(0)), 0);
    ASSERT_EQ(pins.set_value(5, true, Time(0)), 0);
    EXPECT_EQ(pins.values().to_ulong(), 33U);
}

TEST(DigitalIoTest, WithoutPowerEveryPinReadsFalseAndTriggersNothing) {
    DigitalIo pins;
    ASSERT_EQ(pins.set_value(0, true, Time(0)), 0);
    ASSERT_EQ(pins.set_config(1, with_func(func_t::trigger_input)), 0);
    pins.set_powered(false);
    EXPECT_EQ(pins.drive(1, true, Time(0)), 0U);
    EXPECT_TRUE(pins.values().none());
    EXPECT_FALSE(value_of(pins, 0));
    pins.set_powered(true);
    EXPECT_EQ(pins.values().to_ulong(), 3U);
}

// One pin that follows its wire as an input, what is set as an output.
class SignalTest : public testing::TestWithParam<func_t> {
protected:
    void signal(bool on, Time now) {
        if (GetParam() == func_t::input) {
            pins_.drive(2, on, now);
        } else {
            ASSERT_EQ(pins_.set_value(2, on, now), 0);
        }
    }

    bool value_at(Time now) {
        run_until(pins_, now);
        return value_of(pins_, 2);
    }

    DigitalIo pins_;
    config_t config_ = with_func(GetParam());
};

INSTANTIATE_TEST_SUITE_P(DigitalIo, SignalTest, testing::Values(func_t::input, func_t::output),
                         [](auto const& func) { return func.param == func_t::input ? "Input" : "Output"; });

TEST_P(SignalTest, PulseIsOnForItsTime) {
    config_.on_delay_time = 20;
    config_.off_delay_time = 30;
    config_.pulse_active = true;
    config_.pulse_time = 50;
    ASSERT_EQ(pins_.set_config(2, config_), 0);
    signal(true, Time(0));
    EXPECT_TRUE(value_at(Time(0)));
    signal(false, Time(10ms));
    EXPECT_TRUE(value_at(Time(49ms)));
    EXPECT_FALSE(value_at(Time(50ms)));
}

TEST_P(SignalTest, DelaysTakeEffect) {
    config_.on_delay_active = true;
    config_.on_delay_time = 20;
    config_.off_delay_active = true;
    config_.off_delay_time = 30;
    ASSERT_EQ(pins_.set_config(2, config_), 0);
    signal(true, Time(0));
    EXPECT_FALSE(value_at(Time(19ms)));
    EXPECT_TRUE(value_at(Time(20ms)));
    signal(false, Time(40ms));
    EXPECT_TRUE(value_at(Time(69ms)));
    EXPECT_FALSE(value_at(Time(70ms)));
}

TEST(DigitalIoTest, TimesThatAreNotActiveHaveNoEffect) {
    DigitalIo pins;
    config_t config;
    config.on_delay_time = config.off_delay_time = config.pulse_time = 100;
    ASSERT_EQ(pins.set_config(0, config), 0);
    ASSERT_EQ(pins.set_value(0, true, Time(0)), 0);
    EXPECT_TRUE(value_of(pins, 0));
    EXPECT_FALSE(pins.next_change());
}

TEST(DigitalIoTest, TriggerInputTriggersWhenItBecomesActive) {
    DigitalIo pins;
    config_t config = with_func(func_t::trigger_input);
    ASSERT_EQ(pins.set_config(2, config), 0);
    EXPECT_EQ(pins.drive(2, true, Time(0)), 1U);
    EXPECT_EQ(pins.drive(2, true, Time(1)), 0U);
    EXPECT_EQ(pins.drive(2, false, Time(2)), 0U);
    config.invert = true;
    ASSERT_EQ(pins.set_config(2, config), 0);
    EXPECT_EQ(pins.drive(2, true, Time(3)), 0U);
    EXPECT_EQ(pins.drive(2, false, Time(4)), 1U);
}

TEST(DigitalIoTest, DelayedTriggerInputTriggersAfterItsDelay) {
    DigitalIo pins;
    config_t config = with_func(func_t::trigger_input);
    config.on_delay_active = true;
    config.on_delay_time = 5;
    ASSERT_EQ(pins.set_config(2, config), 0);
    EXPECT_EQ(pins.drive(2, true, Time(0)), 0U);
    EXPECT_EQ(run_until(pins, Time(4999)), 0U);
    EXPECT_EQ(run_until(pins, Time(5ms)), 1U);
}

TEST(DigitalIoTest, PlainInputTriggersNothing) {
    DigitalIo pins;
    ASSERT_EQ(pins.set_config(2, with_func(func_t::input)), 0);
    EXPECT_EQ(pins.drive(2, true, Time(0)), 0U);
}

TEST(DigitalIoTest, EncoderCountsEveryEdgeInItsDirection) {
    DigitalIo pins;
    ASSERT_EQ(pins.set_config(4, with_func(func_t::quadrature_input_a)), 0);
    ASSERT_EQ(pins.set_config(5, with_func(func_t::quadrature_input_b)), 0);
    for (auto const& [pin, high] : {std::pair(4, true), {5, true}, {4, false}, {5, false}, {4, true}}) {
        pins.drive(static_cast<unsigned char>(pin), high, Time(0));
    }
    EXPECT_EQ(pins.encoder_position(), 5);
    for (auto const& [pin, high] : {std::pair(4, false), {5, true}, {4, true}}) {
        pins.drive(static_cast<unsigned char>(pin), high, Time(0));
    }
    EXPECT_EQ(pins.encoder_position(), 2);
}

TEST(DigitalIoTest, EncoderCountsNothingOfTheTimeWithoutPower) {
    DigitalIo pins;
    ASSERT_EQ(pins.set_config(4, with_func(func_t::quadrature_input_a)), 0);
    ASSERT_EQ(pins.set_config(5, with_func(func_t::quadrature_input_b)), 0);
    pins.set_powered(false);
    pins.drive(4, true, Time(0));
    pins.set_powered(true);
    ASSERT_EQ(pins.set_value(0, true, Time(0)), 0);
    EXPECT_EQ(pins.encoder_position(), 0);
    pins.drive(5, true, Time(0));
    EXPECT_EQ(pins.encoder_position(), 1);
}

TEST(DigitalIoTest, TypeDecidesHowAnOutputDrivesItsTerminal) {
    struct {
        type_t type;
        DigitalIo::Terminal off;
        DigitalIo::Terminal on;
    } const cases[] = {{type_t::npn, DigitalIo::Terminal::open, DigitalIo::Terminal::low},
                       {type_t::pnp, DigitalIo::Terminal::open, DigitalIo::Terminal::high},
                       {type_t::push_pull, DigitalIo::Terminal::low, DigitalIo::Terminal::high}};
    for (auto const& expected : cases) {
        DigitalIo pins;
        config_t config;
        config.type = expected.type;
        ASSERT_EQ(pins.set_config(3, config), 0);
        EXPECT_EQ(pins.terminal(3), expected.off);
        ASSERT_EQ(pins.set_value(3, true, Time(0)), 0);
        EXPECT_EQ(pins.terminal(3), expected.on);
        pins.set_powered(false);
        EXPECT_EQ(pins.terminal(3), DigitalIo::Terminal::open);
    }
}

TEST(DigitalIoTest, TypeDecidesWhichLevelOfAWireIsActive) {
    struct {
        type_t type;
        bool low;
        bool high;
    } const cases[] = {{type_t::npn, true, false}, {type_t::pnp, false, true}, {type_t::push_pull, false, true}};
    for (auto const& expected : cases) {
        SCOPED_TRACE(static_cast<int>(expected.type));
        DigitalIo pins;
        config_t config = with_func(func_t::input);
        config.type = expected.type;
        ASSERT_EQ(pins.set_config(3, config), 0);
        EXPECT_FALSE(value_of(pins, 3)) << "nobody drives it";
        EXPECT_EQ(pins.terminal(3), DigitalIo::Terminal::open);
        pins.drive(3, false, Time(0));
        EXPECT_EQ(value_of(pins, 3), expected.low);
        EXPECT_EQ(pins.terminal(3), DigitalIo::Terminal::low);
        pins.drive(3, true, Time(0));
        EXPECT_EQ(value_of(pins, 3), expected.high);
        EXPECT_EQ(pins.terminal(3), DigitalIo::Terminal::high);
        pins.drive(3, std::nullopt, Time(0));
        EXPECT_FALSE(value_of(pins, 3));
        EXPECT_EQ(pins.terminal(3), DigitalIo::Terminal::open);
    }
}

TEST(DigitalIoTest, EncoderTakesTheWiresOfItsNewPinsAsTheyAre) {
    DigitalIo pins;
    pins.drive(4, true, Time(0));
    ASSERT_EQ(pins.set_config(4, with_func(func_t::quadrature_input_a)), 0);
    ASSERT_EQ(pins.set_config(5, with_func(func_t::quadrature_input_b)), 0);
    EXPECT_EQ(pins.encoder_position(), 0);
    pins.drive(5, true, Time(0));
    EXPECT_EQ(pins.encoder_position(), 1);
}

TEST(DigitalIoTest, FirstOfSeveralPinsWithOneEncoderFunctionCounts) {
    DigitalIo pins;
    for (unsigned char pin : {std::uint8_t{1}, std::uint8_t{4}}) {
        ASSERT_EQ(pins.set_config(pin, with_func(func_t::quadrature_input_a)), 0);
    }
    pins.drive(4, true, Time(0));
    EXPECT_EQ(pins.encoder_position(), 0);
    pins.drive(1, true, Time(0));
    EXPECT_EQ(pins.encoder_position(), 1);
}

TEST(DigitalIoTest, WithoutPowerNoTimerRuns) {
    DigitalIo pins;
    config_t config = with_func(func_t::trigger_input);
    config.on_delay_active = true;
    config.on_delay_time = 20;
    ASSERT_EQ(pins.set_config(2, config), 0);
    pins.drive(2, true, Time(0));
    pins.set_powered(false);
    EXPECT_FALSE(pins.next_change());
    pins.drive(2, false, Time(1ms));
    pins.drive(2, true, Time(2ms));
    EXPECT_FALSE(pins.next_change());
    pins.set_powered(true);
    EXPECT_FALSE(pins.next_change());
    EXPECT_TRUE(value_of(pins, 2)) << "as if it had been there for ever";
}

TEST(DigitalIoTest, PulseIsOverWithThePower) {
    DigitalIo pins;
    config_t config;
    config.pulse_active = true;
    config.pulse_time = 50;
    ASSERT_EQ(pins.set_config(0, config), 0);
    ASSERT_EQ(pins.set_value(0, true, Time(0)), 0);
    EXPECT_TRUE(value_of(pins, 0));
    pins.set_powered(false);
    pins.set_powered(true);
    EXPECT_FALSE(value_of(pins, 0));
    EXPECT_FALSE(pins.next_change());
}

TEST(DigitalIoTest, PowerThatIsThereAlreadyDisturbsNoTimer) {
    DigitalIo pins;
    config_t config = with_func(func_t::input);
    config.on_delay_active = true;
    config.on_delay_time = 20;
    ASSERT_EQ(pins.set_config(2, config), 0);
    pins.drive(2, true, Time(0));
    pins.set_powered(true);
    EXPECT_EQ(pins.next_change(), Time(20ms));
}

TEST(DigitalIoTest, OutputsComeBackWithThePowerAsTheyWereToldMeanwhile) {
    DigitalIo pins;
    ASSERT_EQ(pins.set_config(1, with_func(func_t::illumination_output)), 0);
    pins.set_powered(false);
    ASSERT_EQ(pins.set_value(0, true, Time(0)), 0);
    pins.set_exposing(true, Time(0));
    pins.set_powered(true);
    EXPECT_EQ(pins.values().to_ulong(), 3U);
}

TEST(DigitalIoTest, WithTheDevicesPowerAllGoesButSupplyAndWires) {
    DigitalIo pins;
    ASSERT_EQ(pins.set_config(1, with_func(func_t::input)), 0);
    ASSERT_EQ(pins.set_value(0, true, Time(0)), 0);
    pins.drive(0, true, Time(0));
    pins.drive(1, true, Time(0));
    pins.drive(5, false, Time(0));
    pins.set_powered(false);
    pins.lose_power();
    EXPECT_FALSE(pins.powered());
    pins.set_powered(true);
    EXPECT_TRUE(pins.values().none());
    EXPECT_EQ(pins.config(1).func, func_t::output);
    for (auto const& [pin, high] : {std::pair(0, true), {1, true}, {5, false}}) {
        auto const number = static_cast<unsigned char>(pin);
        ASSERT_EQ(pins.set_config(number, with_func(func_t::input)), 0);
        EXPECT_EQ(value_of(pins, number), high);
        EXPECT_EQ(pins.terminal(number), high ? DigitalIo::Terminal::high : DigitalIo::Terminal::low);
    }
}

TEST(DigitalIoTest, IlluminationOutputIsOffAtFirst) {
    DigitalIo pins;
    ASSERT_EQ(pins.set_config(1, with_func(func_t::illumination_output)), 0);
    EXPECT_FALSE(value_of(pins, 1));
}

// An input on pin 2 and one on pin 3, which become active so much after their wires.
DigitalIo with_delayed_inputs() {
    DigitalIo pins;
    config_t config = with_func(func_t::input);
    config.on_delay_active = true;
    for (unsigned char pin : {std::uint8_t{2}, std::uint8_t{3}}) {
        config.on_delay_time = pin == 2 ? 30 : 20;
        EXPECT_EQ(pins.set_config(pin, config), 0);
    }
    return pins;
}

TEST(DigitalIoTest, PinsChangeInTheOrderOfTheirTimes) {
    DigitalIo pins = with_delayed_inputs();
    pins.drive(2, true, Time(0));
    pins.drive(3, true, Time(0));
    EXPECT_EQ(pins.next_change(), Time(20ms));
    pins.change();
    EXPECT_EQ(pins.values().to_ulong(), 8U);
    EXPECT_EQ(pins.next_change(), Time(30ms));
}

TEST(DigitalIoTest, RepeatsWhereEveryPinDoes) {
    DigitalIo one = with_delayed_inputs();
    DigitalIo later = one;
    EXPECT_TRUE(later.repeats(one, 100ms));
    one.drive(3, true, Time(0));
    later.drive(3, true, Time(100ms));
    EXPECT_TRUE(later.repeats(one, 100ms));
    EXPECT_FALSE(later.repeats(one, 99ms));
    DigitalIo exposing = later;
    exposing.set_exposing(true, Time(100ms));
    EXPECT_FALSE(exposing.repeats(one, 100ms));
}

TEST(DigitalIoTest, AnEncoderThatHasMovedIsNoRepetition) {
    DigitalIo one;
    ASSERT_EQ(one.set_config(4, with_func(func_t::quadrature_input_a)), 0);
    ASSERT_EQ(one.set_config(5, with_func(func_t::quadrature_input_b)), 0);
    DigitalIo later = one;
    for (auto const& [pin, high] : {std::pair(4, true), {5, true}, {4, false}, {5, false}}) {
        later.drive(static_cast<unsigned char>(pin), high, Time(0));
    }
    EXPECT_EQ(later.encoder_position(), 4);
    EXPECT_FALSE(later.repeats(one, 0s));
}

TEST(DigitalIoTest, WhatIsDueCanBePostponed) {
    DigitalIo pins = with_delayed_inputs();
    pins.drive(2, true, Time(0));
    pins.postpone(1s);
    EXPECT_EQ(pins.next_change(), Time(1030ms));
}

}  // namespace
