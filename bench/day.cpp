// How long a day takes that is stepped over with the real-time unit at 1 kHz and the sensor hub at 400 Hz, of which
// nobody wants to hear: against a step over next to nothing.
#include <fstream>

#include "bench/bench.h"
#include "hal/camera.h"
#include "hal/gyro.h"
#include "hal/rtu.h"
#include "sim/models/firmware_image.h"

namespace {

constexpr int kRounds = 5;

double time_of_step(std::string const& sim, std::string const& length) {
    return bench::time_of([&] {
        if (std::system((sim + " step " + length).c_str()) != 0) {
            std::exit(1);
        }
    });
}

void must(int status) {
    if (status != 0) {
        std::fprintf(stderr, "a call failed\n");
        std::exit(1);
    }
}

}  // namespace

// The tool with its options, and a file for an image of the hub's.
int main(int argc, char* argv[]) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: bench_day TOOL FILE\n");
        return 2;
    }
    std::ofstream(argv[2], std::ios::binary) << sim::make_firmware_image({sim::HubVariant::bhi260ap, 1});
    hal::rtu_t rtu("/dev/r47-rtu-driver", 2);
    hal::camera_t const camera(hal::imx_te::imx567, "/dev/imx567", "/dev/r47-rtu-driver", 2);
    hal::gyro_t gyro("/dev/i2c-2", 2, argv[2], "/sys/class/gpio/gpio481/value", 200);
    must(rtu.set_aquisition_fps(1000));
    must(rtu.set_trigger_mode(true));
    must(camera.start_acquisition());
    must(gyro.boot());
    gyro.irq_callback_hold(true);  // held, it does not read the hub
    must(gyro.activate_vsensor(37, 400, 1));
    std::vector<double> nothing;
    std::vector<double> days;
    for (int round = 0; round < kRounds; ++round) {
        nothing.push_back(time_of_step(argv[1], "1us"));
        days.push_back(time_of_step(argv[1], "86400s"));
    }
    double const day = bench::median(days);
    std::printf("step 86400s: %.3f s, step 1us: %.3f s, ratio %.1f (goal: below 2 s)\n", day, bench::median(nothing),
                day / bench::median(nothing));
}
