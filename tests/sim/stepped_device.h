// A device of its own for the tests of the control grammar, its clock stepped by hand.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "sim/control/command.h"

class SteppedDeviceTest : public testing::Test {
protected:
    sim::Reply run(std::string const& line) { return sim::device_commands().run({device_}, line); }

    void expect_done(std::string const& line) {
        sim::Reply const reply = run(line);
        EXPECT_TRUE(reply.ok) << line << ": " << reply.text;
        EXPECT_EQ(reply.text, "");
    }

    // The value of one property.
    std::string value(std::string const& name) {
        return sim::value_text(device_.access()->properties.all().at(name).get());
    }

    sim::Device device_{std::make_unique<sim::MemoryFileSystem>()};
};
