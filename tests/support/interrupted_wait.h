// A signal in the midst of a system call, of a kind that lets no call go on by itself.
#pragma once

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <fstream>
#include <future>
#include <string>
#include <thread>

// The state of a thread of this process, as the kernel tells it: 'S' while it waits.
inline char state_of(pid_t thread) {
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string line;
    std::getline(file, line);
    std::size_t const name_end = line.rfind(')');
    return name_end != std::string::npos && name_end + 2 < line.size() ? line[name_end + 2] : '\0';
}

// Runs a call on a thread of its own. Once it waits, a signal interrupts it, and then `end_it` ends it.
template <typename Call, typename End>
void interrupt_while_it_waits(Call call, End end_it) {
    static std::atomic<int> signals_seen;
    signals_seen = 0;
    struct sigaction interrupting {};  // without SA_RESTART
    interrupting.sa_handler = [](int) { ++signals_seen; };
    struct sigaction before {};
    ::sigaction(SIGUSR1, &interrupting, &before);
    std::promise<pid_t> calling;
    std::thread caller([&] {
        calling.set_value(::gettid());
        call();
    });
    pid_t const thread = calling.get_future().get();
    while (state_of(thread) != 'S') {
        std::this_thread::yield();
    }
    ::pthread_kill(caller.native_handle(), SIGUSR1);
    while (signals_seen == 0) {
        std::this_thread::yield();
    }
    end_it();
    caller.join();
    ::sigaction(SIGUSR1, &before, nullptr);
}
