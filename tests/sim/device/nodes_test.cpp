// Tests of the device's files.
#include "sim/device/nodes.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

#include "sim/models/firmware_image.h"
#include "tests/sim/temporary_directory.h"

namespace {

using hal::imx_te;
using sim::MemoryFileSystem;
using sim::Nodes;

char const* const kRtu = "/dev/r47-rtu-driver";
char const* const kFirmware = "/opt/kelvora/libhal/fw/kelvora-260AP_1.6.fw";

TEST(NodesTest, AWholeDeviceHasAllItsFiles) {
    Nodes const nodes(std::make_unique<MemoryFileSystem>());
    EXPECT_EQ(sim::device_files().size(), 11U);
    for (auto const& file : sim::device_files()) {
        EXPECT_TRUE(nodes.present(file.path)) << file.path;
    }
    EXPECT_FALSE(nodes.present("/dev/other"));
    EXPECT_FALSE(nodes.present(""));
}

TEST(NodesTest, RemovedFilesAreMissingUntilTheyAreRestored) {
    Nodes nodes(std::make_unique<MemoryFileSystem>());
    EXPECT_EQ(nodes.remove(kRtu), "");
    EXPECT_FALSE(nodes.present(kRtu));
    EXPECT_EQ(nodes.list().substr(0, 29), "missing  /dev/r47-rtu-driver\n");
    EXPECT_EQ(nodes.remove(kRtu), "/dev/r47-rtu-driver is missing already");
    EXPECT_EQ(nodes.restore(kRtu), "");
    EXPECT_TRUE(nodes.present(kRtu));
    EXPECT_EQ(nodes.restore(kRtu), "/dev/r47-rtu-driver is there already");
}

TEST(NodesTest, ADeviceMayLackFilesFromTheStart) {
    Nodes nodes(std::make_unique<MemoryFileSystem>(std::vector<std::string>{kRtu}));
    EXPECT_FALSE(nodes.present(kRtu));
    EXPECT_EQ(nodes.restore(kRtu), "");
    EXPECT_TRUE(nodes.present(kRtu));
}

TEST(NodesTest, OnlyFilesOfTheDeviceAreTouched) {
    Nodes nodes(std::make_unique<MemoryFileSystem>());
    EXPECT_EQ(nodes.remove("/etc/passwd"), "/etc/passwd is no file of the device");
    EXPECT_EQ(nodes.restore("/dev/../etc/passwd"), "/dev/../etc/passwd is no file of the device");
}

TEST(NodesTest, TheFittedSensorIsTheOneWithANode) {
    Nodes nodes(std::make_unique<MemoryFileSystem>());
    EXPECT_EQ(nodes.fitted_sensor(), imx_te::imx296);
    nodes.remove("/dev/imx296");
    EXPECT_EQ(nodes.fitted_sensor(), imx_te::imx567);
    nodes.remove("/dev/imx567");
    EXPECT_EQ(nodes.fitted_sensor(), imx_te::none);
}

class HostNodesTest : public testing::Test {
protected:
    std::string below(std::string const& path) const { return root_.path() + path; }

    TemporaryDirectory root_;
    Nodes nodes_{std::make_unique<sim::HostFileSystem>(root_.path())};
};

TEST_F(HostNodesTest, AllFilesAreMadeBelowTheRootButThoseThatAreToBeMissing) {
    EXPECT_EQ(nodes_.restore_all({kFirmware}), "");
    for (auto const& file : sim::device_files()) {
        EXPECT_EQ(nodes_.present(file.path), file.path != kFirmware) << file.path;
        EXPECT_EQ(::access(below(file.path).c_str(), F_OK) == 0, file.path != kFirmware) << file.path;
    }
    EXPECT_EQ(nodes_.restore_all({}), "") << "what is there stays";
    EXPECT_TRUE(nodes_.present(kFirmware));
}

TEST_F(HostNodesTest, RemovesAndRestoresTheFilesAsTheUsersOwn) {
    EXPECT_EQ(nodes_.restore(kRtu), "");
    struct stat status {};
    ASSERT_EQ(::stat(below(kRtu).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    EXPECT_EQ(nodes_.remove(kRtu), "");
    EXPECT_NE(::access(below(kRtu).c_str(), F_OK), 0);
}

TEST_F(HostNodesTest, AFileThatSomebodyElseRemovesIsMissing) {
    EXPECT_EQ(nodes_.restore(kRtu), "");
    ASSERT_EQ(::unlink(below(kRtu).c_str()), 0);
    EXPECT_FALSE(nodes_.present(kRtu));
}

TEST_F(HostNodesTest, ARestoredFirmwareFileIsAWholeImage) {
    EXPECT_EQ(nodes_.restore(kFirmware), "");
    std::ifstream file(below(kFirmware));
    std::string const bytes(std::istreambuf_iterator<char>(file), {});
    auto const image = sim::read_firmware_image(bytes);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->variant, sim::HubVariant::bhi260ap);
    EXPECT_EQ(image->version, 5991);
}

TEST_F(HostNodesTest, AFailureOfTheFileSystemIsToldWithItsReason) {
    std::ofstream(below("/sys")) << "no directory";
    EXPECT_EQ(nodes_.restore("/sys/class/gpio/gpio481/value"),
              "cannot restore /sys/class/gpio/gpio481/value: Not a directory");
    EXPECT_EQ(nodes_.restore_all({}), "cannot restore /sys/class/gpio/gpio481/value: Not a directory");
}

}  // namespace
