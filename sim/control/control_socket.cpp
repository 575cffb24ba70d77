// Where the control sockets of running devices are, and how to reach one.
#include "sim/control/control_socket.h"

#include <dirent.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "sim/core/descriptor.h"

namespace sim {

namespace {

constexpr int kBacklog = 16;
constexpr mode_t kPrivateDirectory = 0700;
constexpr mode_t kPrivateSocket = 0600;

// False with errno ENAMETOOLONG when the path does not fit into an address.
bool make_address(std::string const& path, sockaddr_un& address) {
    address = {};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        return false;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return true;
}

int open_socket() {
    return move_out_of_the_way(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
}

bool is_socket(std::string const& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode);
}

bool is_live(std::string const& path) {
    int const fd = connect_to(path);
    if (fd >= 0) {
        ::close(fd);
    }
    return fd >= 0;
}

Error socket_error(std::string const& path) {
    return "cannot serve " + path + ": " + std::strerror(errno);
}

}  // namespace

std::string default_socket_directory() {
    char const* const runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && *runtime == '/' && ::access(runtime, W_OK) == 0) {
        return std::string(runtime) + "/r47-sim";
    }
    return "/tmp/r47-sim-" + std::to_string(::getuid());
}

Error prepare_socket_directory(std::string const& directory) {
    if (::mkdir(directory.c_str(), kPrivateDirectory) != 0 && errno != EEXIST) {
        return "cannot make " + directory + ": " + std::strerror(errno);
    }
    struct stat status {};
    if (::lstat(directory.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        return directory + " is not a directory";
    }
    if (status.st_uid != ::geteuid() || (status.st_mode & 077U) != 0) {
        return directory + " must belong to this user, and nobody else may enter it (mode 0700)";
    }
    return {};
}

std::string directory_of(std::string const& path) {
    std::size_t const slash = path.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

int listen_on(std::string const& path, Error& error) {
    error = prepare_socket_directory(directory_of(path));
    sockaddr_un address{};
    if (!error.empty()) {
        return -1;
    }
    if (!make_address(path, address)) {
        error = socket_error(path);
        return -1;
    }
    if (is_socket(path)) {
        if (is_live(path)) {
            error = path + " is served by another device";
            return -1;
        }
        ::unlink(path.c_str());
    }
    int const fd = open_socket();
    auto const* const any_address = reinterpret_cast<sockaddr const*>(&address);
    if (fd < 0 || ::bind(fd, any_address, sizeof address) != 0 || ::chmod(path.c_str(), kPrivateSocket) != 0 ||
        ::listen(fd, kBacklog) != 0) {
        error = socket_error(path);
        ::close(fd);
        return -1;
    }
    return fd;
}

int connect_to(std::string const& path) {
    sockaddr_un address{};
    if (!make_address(path, address)) {
        return -1;
    }
    int const fd = open_socket();
    if (fd >= 0 && ::connect(fd, reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0) {
        int const error = errno;
        ::close(fd);
        errno = error;
        return -1;
    }
    return fd;
}

std::vector<std::string> live_sockets(std::string const& directory) {
    std::vector<std::string> live;
    DIR* const entries = ::opendir(directory.c_str());
    if (entries == nullptr) {
        return live;
    }
    while (dirent const* const entry = ::readdir(entries)) {
        std::string const path = directory + "/" + entry->d_name;
        if (!is_socket(path)) {
            continue;
        }
        if (is_live(path)) {
            live.push_back(path);
        } else if (errno == ECONNREFUSED) {
            ::unlink(path.c_str());
        }
    }
    ::closedir(entries);
    std::sort(live.begin(), live.end());
    return live;
}

}  // namespace sim
