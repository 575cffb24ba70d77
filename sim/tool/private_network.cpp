// A network of this process and all that it starts.
#include "sim/tool/private_network.h"

#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <string>

#include "sim/core/descriptor.h"

namespace sim {

namespace {

// In a user namespace of its own this process keeps its user and its group.
bool unshare_as_user() {
    std::string const user = std::to_string(::geteuid());
    std::string const group = std::to_string(::getegid());
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) {
        return false;
    }
    auto const write = [](char const* path, std::string const& text) {
        std::ofstream file(path);
        file << text << std::flush;
        return file.good();
    };
    return write("/proc/self/setgroups", "deny") && write("/proc/self/uid_map", user + " " + user + " 1") &&
           write("/proc/self/gid_map", group + " " + group + " 1");
}

bool raise_loopback() {
    Descriptor const socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    ifreq request{};
    std::strcpy(request.ifr_name, "lo");
    request.ifr_flags = IFF_UP;
    return socket && ::ioctl(socket.get(), SIOCSIFFLAGS, &request) == 0;
}

}  // namespace

Error enter_private_network() {
    if ((::unshare(CLONE_NEWNET) == 0 || unshare_as_user()) && raise_loopback()) {
        return {};
    }
    return std::string("this host allows no network namespaces: ") + std::strerror(errno);
}

}  // namespace sim
