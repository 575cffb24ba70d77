// How long a call through the device takes: against a bare request and answer, and from eight threads against one.
#include <thread>

#include "bench/bench.h"
#include "hal/rtu.h"
#include "sim/calls/connection.h"

namespace {

// As in client.cpp the fastest round's median counts: which processors the system gives to the two ends makes more of a
// difference than all else, and stays so while they talk.
constexpr int kRounds = 100;
constexpr int kCallsOfRound = 200;
constexpr int kThreadRounds = 15;
constexpr int kPending = 1000;
constexpr int kThreads = 8;

void call(hal::rtu_t& rtu) {
    unsigned int exposure = 0;
    if (rtu.get_exposure(exposure) != 0 || exposure != 10000) {
        std::fprintf(stderr, "a call was not answered\n");
        std::exit(1);
    }
}

template <typename Act>
double median_time(Act act) {
    std::vector<double> times;
    for (int i = 0; i < kCallsOfRound; ++i) {
        times.push_back(bench::time_of(act));
    }
    return bench::median(times);
}

void compare_with_bare(hal::rtu_t& rtu) {
    using Operation = sim::operations::rtu_t::get_exposure;
    double bare_time = 1;
    double call_time = 1;
    for (int round = 0; round < kRounds; ++round) {
        bench::BareAnswerer bare(
            bench::size_on_socket(message_of(sim::MessageKind::call, sim::Call{Operation::kId, 1, 1})),
            bench::size_on_socket(message_of(sim::MessageKind::reply, sim::CallReply{}, Operation::Results{})));
        bare_time = std::min(bare_time, median_time([&] { bare.ask(); }));
        call_time = std::min(call_time, median_time([&] { call(rtu); }));
    }
    std::printf("call: %.1f us, bare request and answer: %.1f us, ratio %.2f (goal: at most 2)\n", call_time * 1e6,
                bare_time * 1e6, call_time / bare_time);
}

double time_of_pending(hal::rtu_t& rtu, int threads) {
    return bench::time_of([&] {
        std::vector<std::thread> callers;
        for (int thread = 0; thread < threads; ++thread) {
            callers.emplace_back([&rtu, threads] {
                for (int i = 0; i < kPending / threads; ++i) {
                    call(rtu);
                }
            });
        }
        for (std::thread& caller : callers) {
            caller.join();
        }
    });
}

void compare_threads(hal::rtu_t& rtu) {
    std::vector<double> one;
    std::vector<double> eight;
    for (int round = 0; round < kThreadRounds; ++round) {
        one.push_back(time_of_pending(rtu, 1) / kPending);
        eight.push_back(time_of_pending(rtu, kThreads) / kPending);
    }
    std::printf("%d calls from %d threads, all answered: %.1f us a call, from one: %.1f us, ratio %.2f\n", kPending,
                kThreads, bench::median(eight) * 1e6, bench::median(one) * 1e6,
                bench::median(eight) / bench::median(one));
}

}  // namespace

int main() {
    hal::rtu_t rtu("/dev/r47-rtu-driver", 2);
    compare_with_bare(rtu);
    compare_threads(rtu);
}
