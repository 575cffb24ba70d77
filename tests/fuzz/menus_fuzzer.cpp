// Fuzzer of the menus: any keys and numbers, against a library that answers anything.
//
// Input: the first line is the entry (kEntries), the mode (begin_mode) and, for the entry 'w', the console's command
// word. What follows is "typed|sent by the client|answers of the library": see typed_input.h and second_library.h.
//
// Not reached here: the thread of a connected client, whose exit could not be survived (its menus run on this thread,
// in socket mode), and so the local menu. Socket mode that the console starts itself finds its port taken.
#include <dlfcn.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

#include "app/console_io.h"
#include "app/console_main.h"
#include "app/device_check.h"
#include "app/device_type.h"
#include "app/no_answer.h"
#include "app/system_state.h"
#include "app/terminal_input.h"
#include "hal/illumination.h"
#include "hal/types.h"
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
#include "tests/fuzz/typed_input.h"
#include "tests/second_library/second_library.h"
#include "tests/support/menus.h"
#include "tests/support/require.h"

namespace {

constexpr auto kWaitAtEnd = std::chrono::milliseconds(20);
constexpr int kMostWaitsAtEnd = 2;  // the first leaves a component menu; then the main menu is shown without end

unsigned char take_answer() {
    second_library::settle();
    return second_library::taken<unsigned char>();
}

// How a run of the console ends.
enum End { returned, exited, shown_without_end };

// No destructors between the two: what a run needs stands here, so that it can be left by a jump.
struct Run {
    std::jmp_buf start;
    bool in_console = false;
    bool is_root = true;
    int waits_at_end = 0;
    std::string typed;
    std::string sent;
    std::string word;
    std::size_t objects_before = 0;  // those in static storage
};

Run run;

// Commands that no menu reaches.
void run_unbound_commands() {
    hal::illumination_t illumination("/dev/r47-illumination-driver", 2);
    p_illumination = &illumination;
    get_segments();
    run_command(set_segments);
    get_brightness();
    run_command(set_brightness);
    hal::revision_t revision{};
    get_version_rtu(revision);
    test_rtu_delegate();
    hal::button_t button("/dev/gpiochip1", get_button_irq_line(), true, 2000);
    testbutton_init(button);
    hal::rtu_t rtu("/dev/r47-rtu-driver", 2);
    lender<hal::rtu_t> const lent_rtu(rtu);
    set_lightbar_actions(lent_rtu);
    button.irq_callback_hold(false);
    for (auto* const action : {testButtonp1, testButtonp2, testButtonp3, testButtonp4, testButtonp5, testButtonRelease1,
                               testButtonRelease2, testButtonRelease3, testButtonRelease4, testButtonRelease5}) {
        action();
    }
    check_devices();
}

struct Entry {
    char letter;
    void (*enter)();
};

// A menu by its key at the main menu, the others by letters that no menu has.
Entry const kEntries[] = {
    {'m', [] { console_main(1, nullptr); }},
    {'w',
     [] {
         char program[] = "r47-console";
         char* arguments[] = {program, run.word.data(), nullptr};
         console_main(2, arguments);
     }},
    {menus::kDio.key, [] { test_dio(); }},
    {menus::kRtu.key, [] { test_rtu(); }},
    {menus::kIllumination.key, [] { test_illumination(); }},
    {menus::kImx296.key, [] { test_imx(static_cast<int>(hal::imx_te::imx296)); }},
    {menus::kImx567.key, [] { test_imx(static_cast<int>(hal::imx_te::imx567)); }},
    {menus::kAutofocus.key, [] { test_autofocus(); }},
    {menus::kCamera.key, [] { test_camera(); }},
    {menus::kSystem.key, [] { test_system(); }},
    {menus::kGyro.key, [] { test_gyro(); }},
    {menus::kAlarm.key, [] { test_gyro_alarm(); }},
    {menus::kDelegate.key, [] { test_gyro_delegate(); }},
    {menus::kDelegateAndAlarm.key, [] { test_gyro_delegate_and_alarm(); }},
    {menus::kButton.key, [] { test_button(); }},
    {menus::kTof.key, [] { test_tof(); }},
    {'o', [] { test_alarm_old(); }},
    {'u', run_unbound_commands},
};

// The end of kEntries where no entry has the letter.
Entry const* find_entry(char letter) {
    return std::find_if(std::begin(kEntries), std::end(kEntries),
                        [&](Entry const& candidate) { return candidate.letter == letter; });
}

// The main menu for any other letter.
void enter(char letter) {
    auto const* const entry = find_entry(letter);
    try {
        (entry != std::end(kEntries) ? *entry : kEntries[0]).enter();
    } catch (std::runtime_error const& error) {
        require_equal(std::string(error.what()), std::string("Bind failed"), "what ends the process");
    }
}

End run_console(char letter) {
    auto const end = static_cast<End>(setjmp(run.start));
    if (end == returned) {
        run.in_console = true;
        enter(letter);
    }
    second_library::settle();
    run.in_console = false;
    return end;
}

[[noreturn]] void leave(End end) {
    second_library::settle();
    std::longjmp(run.start, end);
}

void on_sleep(std::chrono::nanoseconds length) {
    bool const at_end = length == kWaitAtEnd && typed_input::all_played();
    // In socket mode the end of the client ends the main menu.
    if (run.in_console && !bsock && at_end && ++run.waits_at_end == kMostWaitsAtEnd) {
        leave(shown_without_end);
    }
}

// 't' pipe, 'T' terminal; 's' socket mode, 'S' the same with the connection watched, as socket mode does, 'U' that at a
// terminal.
class Mode {
public:
    explicit Mode(char mode) {
        typed_input::play(run.typed, mode == 'T' || mode == 'U');
        bsock = mode == 's' || mode == 'S' || mode == 'U';
        if (!bsock) {
            return;
        }
        int pair[2];
        require(::socketpair(AF_UNIX, SOCK_STREAM, 0, pair) == 0, "a pair of sockets");
        client_ = std::make_unique<socket_tcp>(pair[0]);
        p_client_socket = client_.get();
        ssize_t const sent = ::write(pair[1], run.sent.data(), run.sent.size());
        require_equal(static_cast<std::size_t>(sent), run.sent.size(), "bytes sent by the client");
        ::close(pair[1]);
        watch_connection(mode == 's' ? -1 : pair[0]);
    }

    // Nothing of what was typed is left for the next run.
    ~Mode() {
        watch_connection(-1);
        bsock = false;
        p_client_socket = nullptr;
        send_string.clear();
        typed_input::play("", false);
        typed_input::sleeps();
        for (char option = '\0'; typed_input::sleeps() == 0;) {
            read_option(option);
        }
        release_terminal();
    }

    Mode(Mode const&) = delete;
    Mode& operator=(Mode const&) = delete;

private:
    std::unique_ptr<socket_tcp> client_;
};

// Takes what stands before the separator from the text.
std::string cut(std::string& text, char separator) {
    std::size_t const at = std::min(text.find(separator), text.size());
    std::string part = text.substr(0, at);
    text.erase(0, at + 1);
    return part;
}

}  // namespace

// What the console does to the process and to the machine.
extern "C" {

void __real_exit(int status) __attribute__((noreturn));
int __real_bind(int descriptor, sockaddr const* address, socklen_t size);
ssize_t __real_send(int descriptor, void const* data, std::size_t size, int flags);

[[noreturn]] void __wrap_exit(int status) {
    if (!run.in_console) {
        __real_exit(status);
    }
    require_equal(status, run.is_root ? 0 : -1, "exit status");
    leave(exited);
}

uid_t __wrap_getuid() {
    run.is_root = !run.in_console || take_answer() != 255;
    return run.is_root ? 0 : 1000;
}

int __wrap_system(char const*) {
    return take_answer();
}

int __wrap_bind(int descriptor, sockaddr const* address, socklen_t size) {
    if (!run.in_console) {
        return __real_bind(descriptor, address, size);
    }
    errno = EADDRINUSE;
    return -1;
}

// The client takes everything at once.
ssize_t __wrap_send(int descriptor, void const* data, std::size_t size, int flags) {
    return run.in_console ? static_cast<ssize_t>(size) : __real_send(descriptor, data, size, flags);
}

void __wrap_perror(char const*) {}

// The streams of the C++ library open their files with it: each node of the device is there or not, as the answers say.
FILE* fopen64(char const* path, char const* mode) {
    static auto* const real = reinterpret_cast<FILE* (*)(char const*, char const*)>(::dlsym(RTLD_NEXT, "fopen64"));
    if (!run.in_console) {
        return real(path, mode);
    }
    if (take_answer() % 2 != 0) {
        errno = ENOENT;
        return nullptr;
    }
    return real("/dev/null", mode);
}

}  // extern "C"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    require(std::freopen("/dev/null", "w", stdout) != nullptr, "standard output to nowhere");
    for (menus::Menu const& menu : menus::every_menu()) {
        require(menu.key == '\0' || find_entry(menu.key) != std::end(kEntries), "every menu of the table has an entry");
    }
    typed_input::use();
    typed_input::on_sleep = on_sleep;
    typed_input::play("x", false);
    second_library::begin("");
    test_dio();  // builds the object that it keeps
    run.objects_before = second_library::living();
    require_equal(run.objects_before, std::size_t{2}, "objects that are never destroyed");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string rest(reinterpret_cast<char const*>(data), size);
    std::string const head = cut(rest, '\n');
    run.typed = cut(rest, '|');
    run.sent = cut(rest, '|');
    run.word = head.substr(std::min<std::size_t>(head.size(), 2));
    run.is_root = true;
    run.waits_at_end = 0;
    second_library::begin(rest);
    Mode const mode(head.size() > 1 ? head[1] : 't');
    if (run_console(head.empty() ? 'm' : head[0]) == exited) {
        second_library::abandon(run.objects_before);
    }
    require_equal(second_library::living(), run.objects_before, "objects left behind");
    return 0;
}
