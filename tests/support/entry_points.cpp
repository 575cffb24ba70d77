// Runs one function of the console that no menu reaches: r47-entry-points NAME
#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iostream>
#include <limits>
#include <memory>
#include <thread>

#include "app/console_io.h"
#include "app/console_main.h"
#include "app/device_type.h"
#include "app/module_information.h"
#include "app/no_answer.h"
#include "app/standard_output.h"
#include "app/system_state.h"
#include "app/terminal_input.h"
#include "app/value_prompts.h"
#include "hal/gyro.h"
#include "hal/gyro_alarm.h"
#include "hal/gyro_delegate.h"
#include "menus/imaging/camera.h"
#include "menus/imaging/dio.h"
#include "menus/imaging/image_sensor.h"
#include "menus/imaging/rtu.h"
#include "menus/light/autofocus.h"
#include "menus/light/illumination.h"
#include "menus/light/illumination_object.h"
#include "menus/motion/alarm_old.h"
#include "menus/motion/button.h"
#include "menus/motion/gyro.h"
#include "menus/motion/gyro_alarm.h"
#include "menus/motion/gyro_delegate.h"
#include "menus/ranging/tof.h"
#include "net/socket.h"
#include "net/socket_console.h"

namespace {

std::atomic<bool> waits_are_told{false};
std::function<void()> at_told_wait = [] {};

// Runs `function` with its waits printed in their place, and not waited for.
template <typename Function>
void tell_waits(Function function) {
    waits_are_told = true;
    function();
}

}  // namespace

// The linker gives the console this in place of the C library's.
extern "C" {

int __real_nanosleep(timespec const* length, timespec* left);

int __wrap_nanosleep(timespec const* length, timespec* left) {
    if (!waits_are_told) {
        return __real_nanosleep(length, left);
    }
    auto const waited = std::chrono::seconds(length->tv_sec) + std::chrono::nanoseconds(length->tv_nsec);
    std::cout << "waited " << std::chrono::duration_cast<std::chrono::milliseconds>(waited).count() << " ms"
              << std::endl;
    at_told_wait();
    return 0;
}

}  // extern "C"

namespace {

void print_result(int result) {
    std::cout << "returned " << result << std::endl;
}

// Every menu that returns and needs no argument, one after the other, and the result of each.
void menu_results() {
    int (*const menus[])() = {test_dio,
                              test_rtu,
                              test_illumination,
                              test_autofocus,
                              test_camera,
                              test_gyro,
                              test_gyro_alarm,
                              test_gyro_delegate,
                              test_button,
                              test_tof,
                              test_gyro_delegate_and_alarm,
                              test_alarm_old};
    for (auto* const menu : menus) {
        print_result(menu());
    }
}

void socket_mode_while_active() {
    bsock = true;
    print_result(test_socket());
}

// The entries of a directory of /proc that counts something of this process.
long count_of(char const* directory) {
    return std::distance(std::filesystem::directory_iterator(directory), std::filesystem::directory_iterator());
}

// The threads of this process; one that was joined may take a moment to go.
long count_threads(long expected) {
    long threads = count_of("/proc/self/task");
    for (int tries = 0; tries < 1000 && threads > expected; ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        threads = count_of("/proc/self/task");
    }
    return threads;
}

// Serves one client and 200 more, one socket mode after the other, and tells after each what is left of it.
void two_hundred_socket_modes() {
    long threads = std::numeric_limits<long>::max();
    for (int i = 0; i <= 200; ++i) {
        test_socket();
        threads = count_threads(threads);
        std::cout << "served " << i << " descriptors " << count_of("/proc/self/fd") << " threads " << threads
                  << std::endl;
    }
}

// Socket mode, and then the console with the standard input that its end closes.
void console_after_socket_mode() {
    int const input = ::dup(STDIN_FILENO);
    print_result(test_socket());
    ::dup2(input, STDIN_FILENO);
    console_main(1, nullptr);
}

// Prints what a full disk loses, then what has space again.
void output_that_recovers() {
    set_up_standard_output();
    int const output = ::dup(STDOUT_FILENO);
    int const full = ::open("/dev/full", O_WRONLY);
    ::dup2(full, STDOUT_FILENO);
    std::cout << "before" << std::endl;
    ::dup2(output, STDOUT_FILENO);
    std::cout << "after" << std::endl;
}

// The legacy tilt alarm test, with the other sensor of its records activated too, which the test itself leaves alone.
void alarm_old_with_both_sensors() {
    static hal::gyro_t gyro("/dev/i2c-2", 2, g_gyro_firmware, "/sys/class/gpio/gpio481/value", 200);
    at_told_wait = [] { gyro.activate_vsensor(38, 1, 1); };  // behind the test's boot
    tell_waits(test_alarm_old);
}

void sensor_set_of_a_refusing_module() {
    sensor_set([](unsigned int&) { return 3; }, "gain");
}

void sensor_set_without_accessor() {
    try {
        sensor_set({}, "gain");
    } catch (std::bad_function_call const&) {
        std::cout << "no accessor" << std::endl;
    }
}

void sensor_set_of_an_accepting_module() {
    sensor_set(
        [](unsigned int& value) {
            std::cout << "written " << value << std::endl;
            return 0;
        },
        "gain");
}

void print_rtu_version(hal::revision_t& revision) {
    int const result = get_version_rtu(revision);
    std::cout << "returned " << result << ":";
    for (unsigned int const number :
         {revision.major, revision.minor, revision.patch, revision.num, revision.year, revision.week}) {
        std::cout << " " << number;
    }
    std::cout << std::endl;
}

// Twice, into one record.
void rtu_version() {
    hal::revision_t revision{};
    print_rtu_version(revision);
    print_rtu_version(revision);
}

void print_button_irq_line() {
    int const line = get_button_irq_line();
    std::cout << "\nline " << line << std::endl;
}

void print_device_state() {
    hal::system_t system("/dev/r47-rtu-driver", 2);
    print_result(get_device_status(system));
}

void print_device_type() {
    int const type = determine_device_type();
    std::cout << "\ntype " << type << std::endl;
}

void on_illumination(void (*command)()) {
    hal::illumination_t illumination("/dev/r47-illumination-driver", 2);
    p_illumination = &illumination;
    command();
}

// The commands of the illumination that no key calls, for the client that connects.
void serve_illumination_client() {
    server_tcp const server("0.0.0.0", 32360);
    socket_tcp client = server.accept();
    p_client_socket = &client;
    bsock = true;
    on_illumination([] {
        set_segments();
        get_segments();
        set_brightness();
        get_brightness();
    });
    kosstream_send();
}

// The press actions in their order, and the first once more when the real-time unit is gone.
void lightbar_actions() {
    {
        hal::rtu_t rtu("/dev/r47-rtu-driver", 2);
        lender<hal::rtu_t> const lent_rtu(rtu);
        set_lightbar_actions(lent_rtu);
        testButtonp1();
        testButtonp2();
        testButtonp3();
        testButtonp4();
    }
    testButtonp1();
}

// Gives the orientation printer samples that it takes and samples that it does not.
void orientation_printer() {
    constexpr auto kQuaternion = hal::cb_struct_te::quaternion_s16;
    hal::quaternion_s16_t upside_down{16384, 0, 0, 0, 0};
    for (unsigned const sensor_id : {37U, 38U, 36U, 39U}) {
        std::cout << sensor_id << ": ";
        print_orientation(static_cast<unsigned char>(sensor_id), kQuaternion, &upside_down);
        std::cout << (sensor_id == 37 || sensor_id == 38 ? "" : "\n");
    }
    std::cout << "no kind: ";
    print_orientation(37, hal::cb_struct_te::none, &upside_down);
    std::cout << "\nkind 2: ";
    print_orientation(37, static_cast<hal::cb_struct_te>(2), &upside_down);
    std::cout << "\nno data: ";
    print_orientation(37, kQuaternion, nullptr);
    std::cout << "\n";
}

// A delegate and an alarm at the hub's greatest rate; each key is one stage.
void samples_of_a_minute() {
    std::atomic<int> samples{0};
    std::atomic<int> transitions{0};
    auto const wait_for_key = [] {
        char key = kExitKey;
        read_option(key);
    };
    auto const print = [&](char const* stage) {
        std::cout << stage << ": samples " << samples << " transitions " << transitions << std::endl;
    };
    hal::gyro_t gyro("/dev/i2c-2", 2, g_gyro_firmware, "/sys/class/gpio/gpio481/value", 200);
    hal::gyro_alarm_t alarm(gyro, 37);
    alarm.on_position_reached = [&] { ++transitions; };
    alarm.on_position_left = [&] { ++transitions; };
    hal::gyro_delegate_t const delegate(gyro, 37, [&](unsigned char, hal::cb_struct_te, void*) { ++samples; });
    gyro.boot();
    gyro.irq_callback_hold(false);
    gyro.activate_vsensor(37, 400, 1);
    std::cout << "ready" << std::endl;
    wait_for_key();
    gyro.irq_callback_hold(true);
    print("held");
    wait_for_key();
    print("end");
}

struct EntryPoint {
    char const* name;
    void (*run)();
};

constexpr EntryPoint kEntryPoints[] = {
    {"alarm_old", [] { test_alarm_old(); }},
    {"alarm_old_with_both_sensors", alarm_old_with_both_sensors},
    {"alarm_old_waits", [] { tell_waits(test_alarm_old); }},
    {"button_irq_line", print_button_irq_line},
    {"console_after_socket_mode", console_after_socket_mode},
    {"console_waits", [] { tell_waits([] { console_main(1, nullptr); }); }},
    {"device_state", print_device_state},
    {"device_type", print_device_type},
    {"illumination_client", serve_illumination_client},
    {"illumination_get_brightness", [] { on_illumination(get_brightness); }},
    {"illumination_get_segments", [] { on_illumination(get_segments); }},
    {"illumination_set_brightness", [] { on_illumination(set_brightness); }},
    {"illumination_set_segments", [] { on_illumination(set_segments); }},
    {"image_sensor", [] { print_result(test_imx(1)); }},
    {"lightbar_actions", lightbar_actions},
    {"menu_results", [] { tell_waits(menu_results); }},
    {"nothing", [] {}},
    {"orientation_printer", orientation_printer},
    {"samples_of_a_minute", samples_of_a_minute},
    {"output_that_recovers", output_that_recovers},
    {"read_dio_config", read_dio_config},
    {"rtu_delegate", [] { print_result(test_rtu_delegate()); }},
    {"rtu_version", rtu_version},
    {"sensor_set_accepted", sensor_set_of_an_accepting_module},
    {"sensor_set_refused", sensor_set_of_a_refusing_module},
    {"sensor_set_without_accessor", sensor_set_without_accessor},
    {"socket_mode_while_active", socket_mode_while_active},
    {"system_state_waits", [] { tell_waits(test_system); }},
    {"two_hundred_socket_modes", two_hundred_socket_modes},
};

}  // namespace

int main(int argc, char** argv) {
    for (EntryPoint const& entry : kEntryPoints) {
        if (argc > 1 && std::strcmp(argv[1], entry.name) == 0) {
            run_command(entry.run);
            return 0;
        }
    }
    std::cerr << "usage: r47-entry-points NAME\n";
    return 2;
}
