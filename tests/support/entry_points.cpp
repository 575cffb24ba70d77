// Runs one function of the console that no menu reaches: r47-entry-points NAME
#include <cstring>
#include <filesystem>
#include <iostream>

#include "app/console_io.h"
#include "app/device_type.h"
#include "app/module_information.h"
#include "app/value_prompts.h"
#include "menus/imaging/dio.h"
#include "menus/imaging/rtu.h"
#include "menus/light/illumination.h"
#include "net/socket.h"
#include "net/socket_console.h"

namespace {

void socket_mode_while_active() {
    bsock = true;
    int const result = test_socket();
    std::cout << "returned " << result << std::endl;
}

// The entries of a directory of /proc that counts something of this process.
long count_of(char const* directory) {
    return std::distance(std::filesystem::directory_iterator(directory), std::filesystem::directory_iterator());
}

// Serves 200 clients, one socket mode after the other, and tells after each what is left of it.
void two_hundred_socket_modes() {
    for (int i = 1; i <= 200; ++i) {
        test_socket();
        std::cout << "served " << i << " descriptors " << count_of("/proc/self/fd") << " threads "
                  << count_of("/proc/self/task") << std::endl;
    }
}

void sensor_set_of_a_refusing_module() {
    sensor_set([](unsigned int&) { return 3; }, "gain");
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

struct EntryPoint {
    char const* name;
    void (*run)();
};

constexpr EntryPoint kEntryPoints[] = {
    {"button_irq_line", print_button_irq_line},
    {"device_type", print_device_type},
    {"illumination_client", serve_illumination_client},
    {"illumination_get_brightness", [] { on_illumination(get_brightness); }},
    {"illumination_get_segments", [] { on_illumination(get_segments); }},
    {"illumination_set_brightness", [] { on_illumination(set_brightness); }},
    {"illumination_set_segments", [] { on_illumination(set_segments); }},
    {"nothing", [] {}},
    {"read_dio_config", read_dio_config},
    {"rtu_delegate", [] { std::cout << "returned " << test_rtu_delegate() << std::endl; }},
    {"rtu_version", rtu_version},
    {"sensor_set_accepted", sensor_set_of_an_accepting_module},
    {"sensor_set_refused", sensor_set_of_a_refusing_module},
    {"socket_mode_while_active", socket_mode_while_active},
    {"two_hundred_socket_modes", two_hundred_socket_modes},
};

}  // namespace

int main(int argc, char** argv) {
    for (EntryPoint const& entry : kEntryPoints) {
        if (argc > 1 && std::strcmp(argv[1], entry.name) == 0) {
            entry.run();
            return 0;
        }
    }
    std::cerr << "usage: r47-entry-points NAME\n";
    return 2;
}
