// The directory of a running device: its sockets and its files, and how others find them.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "sim/core/descriptor.h"
#include "sim/core/error.h"

namespace sim {

// Paths below the directory of a device.
std::string calls_socket(std::string const& directory);
std::string control_socket(std::string const& directory);
// The root of the files that programs see as the device's: dev/, sys/, opt/.
std::string device_files_root(std::string const& directory);

// Where the devices of this user are that were given no directory: a directory of his alone, r47-sim below
// $XDG_RUNTIME_DIR or else /tmp/r47-sim-UID.
std::string user_directory();
// What another user could have put there, or could read, is not trusted: an error then.
Error check_private(std::string const& directory);

// "NAME", below the user's directory, or a path, which has a slash.
std::string directory_of_device(std::string const& name);

// A device's own directory. It goes with the object, if the device was ever there.
class DeviceDirectory {
public:
    DeviceDirectory() = default;
    DeviceDirectory(DeviceDirectory&&) = default;
    DeviceDirectory& operator=(DeviceDirectory&&) = delete;
    ~DeviceDirectory();

    // Makes the directory, or takes that of a device that runs no more; refused where one runs, where others than this
    // user have access, and where the path is too long for its sockets.
    Error make(std::string const& name);

    std::string const& path() const { return path_; }
    // At once, where the process ends without destroying anything.
    void remove() const;

private:
    std::string path_;
    Descriptor lock_;  // held for as long as the device runs
};

struct FoundDevice {
    std::string name;
    std::string directory;
    std::chrono::seconds age;
};

// The devices in the user's directory that run. Looks only, and changes nothing.
std::vector<FoundDevice> find_devices();
// The device of the name; where it is empty, the one around this program (R47_SIM_DEVICE), or the only one there is.
// Where there are several, the error lists them as `describe` does; without it, by their names.
Error find_device(std::string const& name, std::string& directory,
                  std::function<std::string(FoundDevice const& device)> const& describe = {});

}  // namespace sim
