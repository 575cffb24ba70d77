// The directory of a running device: its sockets and its files, and how others find them.
#include "sim/control/device_directory.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "sim/core/unix_socket.h"

namespace sim {

namespace {

constexpr mode_t kPrivateDirectory = 0700;
constexpr mode_t kPrivateFile = 0600;

// Entries of /dev that are the host's: empty files on which a sandbox puts the host's own.
constexpr char const* kHostNodes[] = {"null", "zero", "full", "random", "urandom", "tty"};
constexpr char const* kHostDirectories[] = {"pts", "shm"};
constexpr std::pair<char const*, char const*> kLinks[] = {
    {"fd", "/proc/self/fd"},       {"stdin", "/proc/self/fd/0"}, {"stdout", "/proc/self/fd/1"},
    {"stderr", "/proc/self/fd/2"}, {"ptmx", "pts/ptmx"},
};

std::string lock_file(std::string const& directory) {
    return directory + "/lock";
}

Error system_error(std::string const& what) {
    return what + ": " + std::strerror(errno);
}

Error make_private(std::string const& directory) {
    if (::mkdir(directory.c_str(), kPrivateDirectory) != 0 && errno != EEXIST) {
        return system_error("cannot make " + directory);
    }
    return check_private(directory);
}

struct flock whole_file() {
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

// Whether a device runs in the directory: it holds the lock. Asks for the lock's holder without taking it, so that a
// device that is just starting meets nobody.
bool is_running(std::string const& directory) {
    Descriptor const file(::open(lock_file(directory).c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    struct flock lock = whole_file();
    return file && ::fcntl(file.get(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

void make_file(std::string const& path) {
    Descriptor const made(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, kPrivateFile));
}

// What there is beside the device's own files.
void make_surroundings(std::string const& root) {
    std::error_code ignored;
    for (char const* const name : {"/dev", "/sys/class/gpio", "/opt/kelvora"}) {
        std::filesystem::create_directories(root + name, ignored);
    }
    for (char const* const name : kHostNodes) {
        make_file(root + "/dev/" + name);
    }
    for (char const* const name : kHostDirectories) {
        std::filesystem::create_directory(root + "/dev/" + name, ignored);
    }
    for (auto const& [name, target] : kLinks) {
        std::filesystem::create_symlink(target, root + "/dev/" + name, ignored);
    }
    make_file(root + "/sys/class/gpio/export");
    make_file(root + "/sys/class/gpio/unexport");
}

}  // namespace

std::string calls_socket(std::string const& directory) {
    return directory + "/calls";
}

std::string control_socket(std::string const& directory) {
    return directory + "/control";
}

std::string device_files_root(std::string const& directory) {
    return directory + "/files";
}

std::string user_directory() {
    char const* const runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && *runtime == '/' && check_private(runtime).empty() && ::access(runtime, W_OK) == 0) {
        return std::string(runtime) + "/r47-sim";
    }
    return "/tmp/r47-sim-" + std::to_string(::geteuid());
}

Error check_private(std::string const& directory) {
    struct stat status {};
    if (::lstat(directory.c_str(), &status) != 0) {
        return system_error("no directory " + directory);
    }
    if (!S_ISDIR(status.st_mode)) {
        return directory + " is not a directory";
    }
    if (status.st_uid != ::geteuid() || (status.st_mode & 077U) != 0) {
        return directory + " must belong to this user, and nobody else may enter it (mode 0700)";
    }
    return {};
}

std::string directory_of_device(std::string const& name) {
    return name.find('/') != std::string::npos ? name : user_directory() + "/" + name;
}

DeviceDirectory::~DeviceDirectory() {
    remove();
}

void DeviceDirectory::remove() const {
    if (lock_) {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
}

Error DeviceDirectory::make(std::string const& name) {
    std::error_code failed;
    path_ = std::filesystem::absolute(directory_of_device(name), failed).lexically_normal().string();
    if (calls_socket(path_).size() > longest_socket_path() || control_socket(path_).size() > longest_socket_path()) {
        return path_ + " is too long for the sockets of a device: at most " +
               std::to_string(longest_socket_path() - control_socket("").size()) + " characters";
    }
    if (name.find('/') == std::string::npos) {
        Error error = make_private(user_directory());
        if (!error.empty()) {
            return error;
        }
    }
    Error error = make_private(path_);
    if (!error.empty()) {
        return error;
    }
    Descriptor lock(::open(lock_file(path_).c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kPrivateFile));
    if (!lock) {
        return system_error("cannot make " + lock_file(path_));
    }
    struct flock whole = whole_file();
    if (::fcntl(lock.get(), F_OFD_SETLK, &whole) != 0) {
        return "a device runs in " + path_ + " already";
    }
    std::filesystem::remove_all(device_files_root(path_), failed);
    make_surroundings(device_files_root(path_));
    lock_ = std::move(lock);
    return {};
}

std::vector<FoundDevice> find_devices() {
    std::vector<FoundDevice> found;
    std::string const user = user_directory();
    DIR* const entries = check_private(user).empty() ? ::opendir(user.c_str()) : nullptr;
    if (entries == nullptr) {
        return found;
    }
    while (dirent const* const entry = ::readdir(entries)) {
        std::string const name = entry->d_name;
        std::string const directory = user + "/" + name;
        struct stat status {};
        if (name.front() != '.' && is_running(directory) && ::stat(lock_file(directory).c_str(), &status) == 0) {
            auto const age = std::chrono::system_clock::now() - std::chrono::system_clock::from_time_t(status.st_mtime);
            found.push_back({name, directory, std::chrono::duration_cast<std::chrono::seconds>(age)});
        }
    }
    ::closedir(entries);
    std::sort(found.begin(), found.end(), [](auto const& a, auto const& b) { return a.name < b.name; });
    return found;
}

Error find_device(std::string const& name, std::string& directory,
                  std::function<std::string(FoundDevice const& device)> const& describe) {
    char const* const around = std::getenv("R47_SIM_DEVICE");
    if (!name.empty()) {
        directory = directory_of_device(name);
        // Who owns the directory around it could put another in its place at any time.
        bool const is_below = directory != name && ::access(directory.c_str(), F_OK) == 0;
        Error const error = is_below ? check_private(user_directory()) : Error();
        return error.empty() ? check_private(directory) : error;
    }
    if (around != nullptr) {
        directory = around;
        return check_private(directory);
    }
    auto const devices = find_devices();
    if (devices.size() == 1) {
        directory = devices.front().directory;
        return {};
    }
    if (devices.empty()) {
        bool const roots = ::geteuid() != 0 && ::access("/tmp/r47-sim-0", F_OK) == 0;
        return roots ? "no device of this user is running; for one of root's, use sudo" : "no device is running";
    }
    std::string list;
    for (FoundDevice const& device : devices) {
        list += (list.empty() ? "" : ", ") + (describe ? describe(device) : device.name);
    }
    return "several devices are running, choose one with --device: " + list;
}

}  // namespace sim
