// How much processor 400 samples a second take, of the device and the program that gets them together: against two bare
// processes that wake each other as often.
#include <atomic>
#include <fstream>
#include <thread>

#include "bench/bench.h"
#include "hal/gyro.h"
#include "hal/gyro_delegate.h"
#include "sim/calls/connection.h"
#include "sim/models/firmware_image.h"

namespace {

using Seconds = std::chrono::duration<double>;

constexpr int kRate = 400;
constexpr Seconds kSlice(5);
constexpr unsigned int kSensor = 37;

// The share of a processor that this process and another use while `act` runs, in percent.
template <typename Act>
double share_of(pid_t other, Act act) {
    auto const used = [other] { return bench::processor_time(::getpid()) + bench::processor_time(other); };
    double const before = used();
    double const length = bench::time_of(act);
    return (used() - before) / length * 100;
}

double bare_share() {
    bench::BareAnswerer bare(bench::size_on_socket(message_of(sim::MessageKind::event, sim::Event{})),
                             bench::size_on_socket(message_of(sim::MessageKind::done, sim::Done{})));
    return share_of(bare.pid(), [&bare] {
        auto const start = std::chrono::steady_clock::now();
        for (int i = 1; i <= kRate * kSlice.count(); ++i) {
            std::this_thread::sleep_until(start + std::chrono::microseconds(1'000'000LL * i / kRate));
            bare.ask();
        }
    });
}

class Listening {
public:
    explicit Listening(std::string const& image)
        : gyro_("/dev/i2c-2", 2, image.c_str(), "/sys/class/gpio/gpio481/value", 200) {
        if (gyro_.boot() != 0 || gyro_.install_callbacks() != 0) {
            std::fprintf(stderr, "the sensor hub does not boot\n");
            std::exit(1);
        }
    }

    // The callback records of the gyro_t are looked at for each sample, too.
    void serve_records() { gyro_.irq_callback_hold(false); }

    double share(pid_t device) {
        int const before = samples_;
        gyro_.activate_vsensor(kSensor, kRate, 0);
        double const share = share_of(device, [] { std::this_thread::sleep_for(kSlice); });
        gyro_.activate_vsensor(kSensor, 0, 0);
        if (samples_ - before < kRate * kSlice.count() * 0.9) {
            std::fprintf(stderr, "only %d samples came\n", samples_ - before);
            std::exit(1);
        }
        return share;
    }

private:
    hal::gyro_t gyro_;
    std::atomic<int> samples_{0};
    hal::gyro_delegate_t delegate_{gyro_, kSensor, [this](unsigned char, hal::cb_struct_te, void*) { ++samples_; }};
};

void compare(char const* who, Listening& listening, pid_t device, Seconds length) {
    std::vector<double> bare_shares;
    std::vector<double> shares;
    for (Seconds passed(0); passed < length; passed += kSlice) {
        bare_shares.push_back(bare_share());
        shares.push_back(listening.share(device));
    }
    double const bare = bench::median(bare_shares);
    double const share = bench::median(shares);
    std::printf("%d samples a second to %s: %.2f %% of a processor, bare: %.2f %%, ratio %.2f (goal: below 2 %%)\n",
                kRate, who, share, bare, share / bare);
    std::fflush(stdout);
}

}  // namespace

// The process of the device, a file for an image of the hub's, and the seconds of each part.
int main(int argc, char* argv[]) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: bench_samples PID FILE SECONDS\n");
        return 2;
    }
    auto const device = static_cast<pid_t>(std::atoi(argv[1]));
    std::ofstream(argv[2], std::ios::binary) << sim::make_firmware_image({sim::HubVariant::bhi260ap, 1});
    Seconds const length(std::atof(argv[3]));
    Listening listening(argv[2]);
    compare("a delegate", listening, device, length);
    listening.serve_records();
    compare("a delegate and the records of its gyro_t", listening, device, length);
}
