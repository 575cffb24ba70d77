// Starts the library's own threads.
#include "sim/core/thread.h"

#include <pthread.h>
#include <signal.h>

#include <utility>

namespace sim {

std::thread start_library_thread(char const* name, std::function<void()> body) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    std::thread thread(std::move(body));
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    pthread_setname_np(thread.native_handle(), name);
    return thread;
}

}  // namespace sim
