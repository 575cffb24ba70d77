// An address of its own for a test that cannot have a network of its own. Preloaded into the test and all that it
// starts (own_network.sh): who binds to or connects with 127.0.0.1, or binds to any address, gets the one in
// R47_LOOPBACK.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace {

// The address to use instead of `address`, if it is to be replaced.
bool replace(sockaddr const* address, socklen_t size, sockaddr_in& own) {
    char const* const text = std::getenv("R47_LOOPBACK");
    if (text == nullptr || address == nullptr || address->sa_family != AF_INET || size < sizeof own) {
        return false;
    }
    std::memcpy(&own, address, sizeof own);
    in_addr_t const asked = ntohl(own.sin_addr.s_addr);
    return (asked == INADDR_LOOPBACK || asked == INADDR_ANY) && ::inet_pton(AF_INET, text, &own.sin_addr) == 1;
}

int call(long number, int fd, sockaddr const* address, socklen_t size) {
    sockaddr_in own{};
    if (replace(address, size, own)) {
        return static_cast<int>(::syscall(number, fd, &own, sizeof own));
    }
    return static_cast<int>(::syscall(number, fd, address, size));
}

}  // namespace

extern "C" int bind(int fd, sockaddr const* address, socklen_t size) noexcept {
    return call(SYS_bind, fd, address, size);
}

extern "C" int connect(int fd, sockaddr const* address, socklen_t size) {
    return call(SYS_connect, fd, address, size);
}
