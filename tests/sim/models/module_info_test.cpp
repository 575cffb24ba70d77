// Tests of status, revision and serial number of the modules.
#include "sim/models/module_info.h"

#include <gtest/gtest.h>

#include "sim/control/value_words.h"
#include "sim/device/describe.h"

namespace {

using sim::Module;
using sim::ModuleInfo;

TEST(ModuleInfoTest, TheRealTimeUnitHasItsRevision) {
    hal::revision_t revision{};
    EXPECT_EQ(ModuleInfo().get_revision(Module::rtu, revision), 0);
    EXPECT_EQ(revision.major, 1);
    EXPECT_EQ(revision.minor, 6);
    EXPECT_EQ(revision.patch, 0);
    EXPECT_EQ(revision.num, 2);
    EXPECT_EQ(revision.year, 22);
    EXPECT_EQ(revision.week, 14);
}

TEST(ModuleInfoTest, EveryFigureCanBeSet) {
    ModuleInfo info;
    sim::Properties properties;
    sim::describe(properties, info);
    EXPECT_EQ(properties.all().size(), 8 * sim::kModules);
    EXPECT_EQ(sim::set_property(properties, "imx567.status", "0x81"), "");
    EXPECT_EQ(sim::set_property(properties, "imx567.revision.week", "53"), "");
    EXPECT_EQ(sim::set_property(properties, "imx567.serial_number", "4294967295"), "");
    unsigned char status = 0;
    hal::revision_t revision{};
    unsigned int serial_number = 0;
    EXPECT_EQ(info.get_status(Module::imx567, status), 0);
    EXPECT_EQ(info.get_revision(Module::imx567, revision), 0);
    EXPECT_EQ(info.get_serial_number(Module::imx567, serial_number), 0);
    EXPECT_EQ(status, 0x81);
    EXPECT_EQ(revision.week, 53);
    EXPECT_EQ(serial_number, 4294967295U);
    EXPECT_EQ(info.get_status(Module::imx296, status), 0);
    EXPECT_EQ(status, 0) << "the other modules keep theirs";
}

}  // namespace
