// Tests of the directories of devices, and of the search for them.
#include "sim/control/device_directory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <map>
#include <memory>

#include "sim/core/unix_socket.h"
#include "tests/sim/temporary_directory.h"

namespace {

namespace fs = std::filesystem;
using sim::DeviceDirectory;
using sim::Error;

constexpr uid_t kNobody = 65534;

// Everything below a directory, with what stat tells of it but the time of the last look.
std::map<std::string, std::string> everything_in(std::string const& directory) {
    std::map<std::string, std::string> all;
    for (fs::directory_entry const& entry : fs::recursive_directory_iterator(directory)) {
        struct stat status {};
        ::lstat(entry.path().c_str(), &status);
        all[entry.path()] = std::to_string(status.st_ino) + " " + std::to_string(status.st_mode) + " " +
                            std::to_string(status.st_size) + " " + std::to_string(status.st_mtim.tv_sec) + "." +
                            std::to_string(status.st_mtim.tv_nsec);
    }
    return all;
}

std::vector<std::string> found() {
    std::vector<std::string> names;
    for (sim::FoundDevice const& device : sim::find_devices()) {
        names.push_back(device.name);
    }
    return names;
}

class DeviceDirectoryTest : public testing::Test {
protected:
    DeviceDirectoryTest() {
        ::setenv("XDG_RUNTIME_DIR", own_.path().c_str(), 1);
        ::unsetenv("R47_SIM_DEVICE");
    }

    // Where the devices are whose user has no directory of his alone.
    static std::string shared_place() { return "/tmp/r47-sim-" + std::to_string(::geteuid()); }

    TemporaryDirectory own_;
    std::string const devices_ = own_.path() + "/r47-sim";
};

TEST_F(DeviceDirectoryTest, DevicesAreInTheUsersRuntimeDirectory) {
    EXPECT_EQ(sim::user_directory(), devices_);
    EXPECT_EQ(sim::directory_of_device("bench"), devices_ + "/bench");
    EXPECT_EQ(sim::directory_of_device("./bench"), "./bench");
}

TEST_F(DeviceDirectoryTest, ARuntimeDirectoryThatOthersMayEnterIsNotUsed) {
    for (mode_t const mode : {0701U, 0710U, 0755U, 0777U}) {
        ::chmod(own_.path().c_str(), mode);
        EXPECT_EQ(sim::user_directory(), shared_place()) << mode;
    }
}

TEST_F(DeviceDirectoryTest, WhatIsNoDirectoryOfTheUsersIsNotUsed) {
    fs::create_directory(own_.path() + "/real");
    ::chmod((own_.path() + "/real").c_str(), 0700);
    fs::create_symlink(own_.path() + "/real", own_.path() + "/link");
    std::ofstream(own_.path() + "/file") << "";
    for (std::string const& value : {std::string(), std::string("relative"), std::string("/nowhere"),
                                     own_.path() + "/link", own_.path() + "/file"}) {
        ::setenv("XDG_RUNTIME_DIR", value.c_str(), 1);
        EXPECT_EQ(sim::user_directory(), shared_place()) << value;
    }
    ::unsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(sim::user_directory(), shared_place());
}

TEST_F(DeviceDirectoryTest, ADirectoryOfSomebodyElseIsNotTrusted) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can give a directory away";
    }
    ASSERT_EQ(::chown(own_.path().c_str(), kNobody, kNobody), 0);
    EXPECT_EQ(sim::user_directory(), shared_place());
    EXPECT_EQ(sim::check_private(own_.path()),
              own_.path() + " must belong to this user, and nobody else may enter it (mode 0700)");
    DeviceDirectory directory;
    EXPECT_EQ(directory.make(own_.path() + "/"),
              own_.path() + "/ must belong to this user, and nobody else may enter it (mode 0700)");
}

TEST_F(DeviceDirectoryTest, ADirectoryIsPrivateAndGoesWithItsDevice) {
    {
        DeviceDirectory directory;
        ASSERT_EQ(directory.make("bench"), "");
        EXPECT_EQ(directory.path(), devices_ + "/bench");
        for (std::string const& path : {devices_, directory.path()}) {
            struct stat status {};
            ASSERT_EQ(::stat(path.c_str(), &status), 0);
            EXPECT_EQ(status.st_mode & 0777U, 0700U) << path;
        }
        EXPECT_TRUE(fs::exists(sim::device_files_root(directory.path()) + "/dev/null"));
    }
    EXPECT_TRUE(fs::is_empty(devices_));
}

TEST_F(DeviceDirectoryTest, ADirectoryIsRefusedWhileADeviceRunsInIt) {
    DeviceDirectory first;
    ASSERT_EQ(first.make("bench"), "");
    {
        DeviceDirectory second;
        EXPECT_EQ(second.make("bench"), "a device runs in " + devices_ + "/bench already");
    }
    EXPECT_EQ(found(), std::vector<std::string>{"bench"}) << "the other's end does not touch it";
}

TEST_F(DeviceDirectoryTest, WhatIsNotPrivateIsRefused) {
    std::string const path = own_.path() + "/bench";
    fs::create_directory(path);
    ::chmod(path.c_str(), 0755);
    EXPECT_EQ(DeviceDirectory().make(path),
              path + " must belong to this user, and nobody else may enter it (mode 0700)");
    fs::create_symlink(path, own_.path() + "/link");
    ::chmod(path.c_str(), 0700);
    EXPECT_EQ(DeviceDirectory().make(own_.path() + "/link"), own_.path() + "/link is not a directory");
    std::ofstream(own_.path() + "/file") << "";
    EXPECT_EQ(DeviceDirectory().make(own_.path() + "/file"), own_.path() + "/file is not a directory");
    EXPECT_EQ(DeviceDirectory().make("/nowhere/bench"), "cannot make /nowhere/bench: No such file or directory");
    EXPECT_TRUE(fs::is_empty(path));
}

TEST_F(DeviceDirectoryTest, ThePathLeavesRoomForTheSockets) {
    std::size_t const room = sim::longest_socket_path() - sim::control_socket("").size();
    std::string const longest = own_.path() + "/" + std::string(room - own_.path().size() - 1, 'x');
    EXPECT_EQ(DeviceDirectory().make(longest), "");
    EXPECT_EQ(DeviceDirectory().make(longest + "x"),
              longest + "x is too long for the sockets of a device: at most " + std::to_string(room) + " characters");
    EXPECT_FALSE(fs::exists(longest + "x"));
}

TEST_F(DeviceDirectoryTest, DevicesThatRunAreFoundByName) {
    DeviceDirectory second;
    DeviceDirectory first;
    ASSERT_EQ(second.make("second"), "");
    ASSERT_EQ(first.make("first"), "");
    auto const devices = sim::find_devices();
    ASSERT_EQ(devices.size(), 2U);
    EXPECT_EQ(devices[0].name, "first");
    EXPECT_EQ(devices[0].directory, devices_ + "/first");
    EXPECT_GE(devices[0].age.count(), 0);
    EXPECT_EQ(devices[1].name, "second");
}

TEST_F(DeviceDirectoryTest, NothingElseIsTakenForADevice) {
    DeviceDirectory device;
    ASSERT_EQ(device.make("bench"), "");
    fs::create_directory(devices_ + "/empty");
    fs::create_directory(devices_ + "/ended");
    std::ofstream(devices_ + "/ended/lock") << "";
    std::ofstream(devices_ + "/file") << "";
    fs::create_directory(devices_ + "/link");
    fs::create_symlink(devices_ + "/bench/lock", devices_ + "/link/lock");
    EXPECT_EQ(found(), std::vector<std::string>{"bench"});
    ::chmod(devices_.c_str(), 0755);
    EXPECT_EQ(found(), std::vector<std::string>{}) << "what others may enter is not looked at";
}

TEST_F(DeviceDirectoryTest, TheSearchChangesNothing) {
    DeviceDirectory device;
    ASSERT_EQ(device.make("bench"), "");
    fs::create_directory(devices_ + "/ended");
    std::ofstream(devices_ + "/ended/lock") << "";
    Error error;
    { sim::Descriptor const gone = sim::listen_on(devices_ + "/ended/control", error); }
    auto const before = everything_in(own_.path());
    found();
    EXPECT_EQ(everything_in(own_.path()), before);
}

TEST_F(DeviceDirectoryTest, TheSearchIsInNobodysWay) {
    fs::create_directories(devices_ + "/bench");
    fs::permissions(devices_, fs::perms(0700));
    fs::permissions(devices_ + "/bench", fs::perms(0700));
    std::ofstream(devices_ + "/bench/lock") << "";  // of a device that was killed
    std::promise<void> end;
    auto const searching = std::async(std::launch::async, [&, ended = end.get_future()] {
        while (ended.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
            found();
        }
    });
    Error error;
    for (int i = 0; i < 200 && error.empty(); ++i) {
        error = DeviceDirectory().make("bench");
    }
    end.set_value();
    EXPECT_EQ(error, "");
}

TEST_F(DeviceDirectoryTest, ADeviceInADirectoryThatOthersMayEnterIsNotTrusted) {
    DeviceDirectory device;
    ASSERT_EQ(device.make("bench"), "");
    ::chmod(devices_.c_str(), 0770);
    std::string directory;
    EXPECT_EQ(sim::find_device("bench", directory),
              devices_ + " must belong to this user, and nobody else may enter it (mode 0700)");
    EXPECT_EQ(sim::find_device("", directory), "no device is running");
}

TEST_F(DeviceDirectoryTest, ADeviceIsChosen) {
    std::string directory;
    EXPECT_EQ(sim::find_device("", directory), "no device is running");
    EXPECT_EQ(sim::find_device("bench", directory), "no directory " + devices_ + "/bench: No such file or directory");
    DeviceDirectory first;
    ASSERT_EQ(first.make("first"), "");
    EXPECT_EQ(sim::find_device("", directory), "");
    EXPECT_EQ(directory, devices_ + "/first");
    DeviceDirectory second;
    ASSERT_EQ(second.make("second"), "");
    EXPECT_EQ(sim::find_device("", directory), "several devices are running, choose one with --device: first, second");
    EXPECT_EQ(sim::find_device("second", directory), "");
    EXPECT_EQ(directory, devices_ + "/second");
    ::setenv("R47_SIM_DEVICE", first.path().c_str(), 1);
    EXPECT_EQ(sim::find_device("", directory), "");
    EXPECT_EQ(directory, devices_ + "/first") << "the one around this program";
    ::chmod(first.path().c_str(), 0750);
    EXPECT_NE(sim::find_device("", directory).find("mode 0700"), std::string::npos);
}

}  // namespace
