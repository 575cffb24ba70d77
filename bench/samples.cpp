// How much processor 400 samples a second take, of the device and the program that gets them together, a program of its
// own or the console that prints them: against two bare processes that wake each other as often.
#include <atomic>
#include <fstream>
#include <thread>

#include "bench/bench.h"
#include "bench/program.h"
#include "hal/gyro.h"
#include "hal/gyro_delegate.h"
#include "sim/calls/connection.h"
#include "sim/models/firmware_image.h"

namespace {

using Seconds = std::chrono::duration<double>;

constexpr int kRate = 400;
constexpr Seconds kSlice(5);
constexpr unsigned int kSensor = 37;
constexpr char const* kGoal = " (goal: below 2 %)";

// The share of a processor that two processes use together while `act` runs, in percent.
template <typename Act>
double share_of(pid_t one, pid_t other, Act act) {
    auto const used = [&] { return bench::processor_time(one) + bench::processor_time(other); };
    double const before = used();
    double const length = bench::time_of(act);
    return (used() - before) / length * 100;
}

double bare_share() {
    bench::BareAnswerer bare(bench::size_on_socket(message_of(sim::MessageKind::event, sim::Event{})),
                             bench::size_on_socket(message_of(sim::MessageKind::done, sim::Done{})));
    return share_of(::getpid(), bare.pid(), [&bare] {
        auto const start = std::chrono::steady_clock::now();
        for (int i = 1; i <= kRate * kSlice.count(); ++i) {
            std::this_thread::sleep_until(start + std::chrono::microseconds(1'000'000LL * i / kRate));
            bare.ask();
        }
    });
}

void require_samples(int count) {
    if (count < kRate * kSlice.count() * 0.9) {
        std::fprintf(stderr, "only %d samples came\n", count);
        std::exit(1);
    }
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
        double const share = share_of(::getpid(), device, [] { std::this_thread::sleep_for(kSlice); });
        gyro_.activate_vsensor(kSensor, 0, 0);
        require_samples(samples_ - before);
        return share;
    }

private:
    hal::gyro_t gyro_;
    std::atomic<int> samples_{0};
    hal::gyro_delegate_t delegate_{gyro_, kSensor, [this](unsigned char, hal::cb_struct_te, void*) { ++samples_; }};
};

// The process of this name among those that this one has started, and they.
pid_t descendant(pid_t pid, std::string const& name) {
    std::string const directory = "/proc/" + std::to_string(pid);
    std::string its_name;
    std::getline(std::ifstream(directory + "/comm"), its_name);
    if (its_name == name) {
        return pid;
    }
    std::ifstream children(directory + "/task/" + std::to_string(pid) + "/children");
    for (pid_t child; children >> child;) {
        if (pid_t const found = descendant(child, name); found != 0) {
            return found;
        }
    }
    return 0;
}

// A console in its menu that shows the orientation, started by r47-sim in the device that is measured. Another program
// sets the hub's rate: the menu's own is low.
class Showing {
public:
    Showing(std::string const& start, std::string const& image)
        : hub_("/dev/i2c-2", 2, image.c_str(), "/sys/class/gpio/gpio481/value", 200),
          starter_({"sh", "-c", "exec " + start}) {
        starter_.type("h\n");
        starter_.wait_for("toggle run");
        reader_ = std::thread([this] { read(); });
        console_ = descendant(starter_.pid(), "r47-console");
    }
    Showing(Showing const&) = delete;
    Showing& operator=(Showing const&) = delete;
    ~Showing() {
        starter_.type("x\nx\n");
        reader_.join();
        starter_.wait();
    }

    double share(pid_t device) {
        hub_.activate_vsensor(kSensor, kRate, 0);
        int const before = lines_;
        double const share = share_of(console_, device, [] { std::this_thread::sleep_for(kSlice); });
        require_samples(lines_ - before);
        hub_.activate_vsensor(kSensor, 0, 0);
        return share;
    }

private:
    // Counts the lines that are printed, up to the console's end.
    void read() {
        for (std::string text; !(text = starter_.read()).empty();) {
            lines_ += static_cast<int>(std::count(text.begin(), text.end(), '\n'));
        }
    }

    hal::gyro_t hub_;
    bench::Program starter_;
    pid_t console_ = 0;
    std::atomic<int> lines_{0};
    std::thread reader_;
};

template <typename Listener>
void compare(char const* who, char const* goal, Listener& listening, pid_t device, Seconds length) {
    std::vector<double> bare_shares;
    std::vector<double> shares;
    for (Seconds passed(0); passed < length; passed += kSlice) {
        bare_shares.push_back(bare_share());
        shares.push_back(listening.share(device));
    }
    double const bare = bench::median(bare_shares);
    double const share = bench::median(shares);
    std::printf("%d samples a second to %s: %.2f %% of a processor, bare: %.2f %%, ratio %.2f%s\n", kRate, who, share,
                bare, share / bare, goal);
    std::fflush(stdout);
}

}  // namespace

// The process of the device, a file for an image of the hub's, the seconds of each part, and the command that starts
// the console in the device.
int main(int argc, char* argv[]) {
    if (argc != 5) {
        std::fprintf(stderr, "usage: bench_samples PID FILE SECONDS COMMAND\n");
        return 2;
    }
    auto const device = static_cast<pid_t>(std::atoi(argv[1]));
    std::ofstream(argv[2], std::ios::binary) << sim::make_firmware_image({sim::HubVariant::bhi260ap, 1});
    Seconds const length(std::atof(argv[3]));
    {
        Listening listening(argv[2]);
        compare("a delegate", kGoal, listening, device, length);
        listening.serve_records();
        compare("a delegate and the records of its gyro_t", kGoal, listening, device, length);
    }
    Showing showing(argv[4], argv[2]);
    compare("the console, which prints them", "", showing, device, length);
}
