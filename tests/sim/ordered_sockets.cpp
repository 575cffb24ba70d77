// Tells the thread sanitizer that what was written before a message was sent is seen by who received it: it knows that
// of one socket's two ends in a pair, not of those that were connected by their path. Linked into the tests that serve
// a device to the library in their own process; the device's own process is watched without.
#include <sanitizer/tsan_interface.h>
#include <sys/socket.h>

extern "C" {

ssize_t __real_send(int socket, void const* bytes, size_t size, int flags);
ssize_t __real_recv(int socket, void* bytes, size_t size, int flags);

static char order;

ssize_t __wrap_send(int socket, void const* bytes, size_t size, int flags) {
    __tsan_release(&order);
    return __real_send(socket, bytes, size, flags);
}

ssize_t __wrap_recv(int socket, void* bytes, size_t size, int flags) {
    ssize_t const count = __real_recv(socket, bytes, size, flags);
    __tsan_acquire(&order);
    return count;
}
}
