// Tells the thread sanitizer that what was written before a message was sent is seen by who received it: it knows that
// of one socket's two ends in a pair, not of those that were connected by their path. Linked into the tests that serve
// a device to the library in their own process; the device's own process is watched without. It takes memory for shared
// where its address is the same, too: so the two ends of one file get one address.
#include <sanitizer/tsan_interface.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <map>
#include <mutex>

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

void* __real_mmap(void* address, size_t size, int protection, int flags, int file, off_t offset);

// Such memory stays: it is small, and the process ends with its test.
void* __wrap_mmap(void* address, size_t size, int protection, int flags, int file, off_t offset) {
    static std::mutex mutex;
    static std::map<ino_t, void*> shared;
    struct stat status {};
    if ((flags & MAP_SHARED) == 0 || fstat(file, &status) != 0) {
        return __real_mmap(address, size, protection, flags, file, offset);
    }
    std::lock_guard<std::mutex> const lock(mutex);
    void*& memory = shared[status.st_ino];
    if (memory == nullptr) {
        memory = __real_mmap(address, size, protection, flags, file, offset);
    }
    return memory;
}

int __wrap_munmap(void*, size_t) {
    return 0;
}
}
