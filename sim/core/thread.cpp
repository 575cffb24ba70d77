// Starts threads that leave the signals to the program.
#include "sim/core/thread.h"

#include <pthread.h>
#include <signal.h>

#include <utility>

namespace sim {

std::thread start_thread_without_signals(char const* name, std::function<void()> body) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    std::thread thread;
    try {
        thread = std::thread(std::move(body));
    } catch (...) {
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
        throw;
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    pthread_setname_np(thread.native_handle(), name);
    return thread;
}

}  // namespace sim
