// Tests of status, revision and serial number of the modules.
#include "sim/models/module_info.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <vector>

#include "sim/control/value_words.h"
#include "sim/device/describe.h"

namespace {

using sim::Module;
using sim::ModuleInfo;

// Major, minor, patch, build, year, week.
std::vector<int> revision_of(Module module) {
    hal::revision_t revision{};
    EXPECT_EQ(ModuleInfo().get_revision(module, revision), 0);
    return {revision.major, revision.minor, revision.patch, revision.num, revision.year, revision.week};
}

TEST(ModuleInfoTest, EveryModuleHasItsRevision) {
    EXPECT_EQ(revision_of(Module::rtu), (std::vector{1, 6, 0, 2, 22, 14}));
    EXPECT_EQ(revision_of(Module::illumination), (std::vector{2, 3, 1, 1, 22, 9}));
    EXPECT_EQ(revision_of(Module::autofocus), (std::vector{1, 2, 0, 4, 21, 47}));
    EXPECT_EQ(revision_of(Module::gyro), (std::vector{1, 0, 3, 1, 22, 11}));
    EXPECT_EQ(revision_of(Module::imx296), (std::vector{1, 4, 0, 1, 22, 6}));
    EXPECT_EQ(revision_of(Module::imx567), (std::vector{1, 1, 0, 3, 22, 20}));
}

TEST(ModuleInfoTest, NoTwoModulesTellTheSame) {
    ModuleInfo const info;
    std::set<unsigned int> serial_numbers;
    std::set<std::vector<std::uint16_t>> revisions;
    for (std::size_t module = 0; module < sim::kModules; ++module) {
        auto const& [status, revision, serial_number] = info.of(static_cast<Module>(module));
        EXPECT_EQ(status, 0) << "nothing is wrong";
        serial_numbers.insert(serial_number);
        revisions.insert({revision.major, revision.minor, revision.patch, revision.num, revision.year, revision.week});
    }
    EXPECT_EQ(serial_numbers.size(), sim::kModules);
    EXPECT_EQ(revisions.size(), sim::kModules);
}

TEST(ModuleInfoTest, ASerialNumberTellsTheWeekOfABoardAndTheTypeOfASensor) {
    ModuleInfo const info;
    EXPECT_EQ(info.of(Module::rtu).serial_number, 221401U);
    EXPECT_EQ(info.of(Module::illumination).serial_number, 220901U);
    EXPECT_EQ(info.of(Module::autofocus).serial_number, 214701U);
    EXPECT_EQ(info.of(Module::gyro).serial_number, 221101U);
    EXPECT_EQ(info.of(Module::imx296).serial_number, 296001U);
    EXPECT_EQ(info.of(Module::imx567).serial_number, 567001U);
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
