// How long a call through the device takes: against a bare request and answer, and from eight threads against one.
#include <thread>

#include "bench/bench.h"
#include "hal/rtu.h"
#include "sim/calls/connection.h"

namespace {

constexpr int kRounds = 400;
constexpr int kCallsOfRound = 50;
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

void compare_with_bare(hal::rtu_t& rtu) {
    using Operation = sim::operations::rtu_t::get_exposure;
    bench::BareAnswerer bare(
        bench::size_on_socket(message_of(sim::MessageKind::call, sim::Call{Operation::kId, 1, 1})),
        bench::size_on_socket(message_of(sim::MessageKind::reply, sim::CallReply{}, Operation::Results{})));
    std::vector<double> bare_times;
    std::vector<double> call_times;
    for (int round = 0; round < kRounds; ++round) {
        for (int i = 0; i < kCallsOfRound; ++i) {
            bare_times.push_back(bench::time_of([&] { bare.ask(); }));
            call_times.push_back(bench::time_of([&] { call(rtu); }));
        }
    }
    double const bare_time = bench::median(bare_times);
    double const call_time = bench::median(call_times);
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
