// Runs the console inside a virtual device of its own, types at it, and keeps what it prints and calls.
#include "tests/support/console_session.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <net/if.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utmp.h>

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace support {
namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned short kPort = 32360;
constexpr std::string_view kEndMark = "\\n";

[[noreturn]] void fail(std::string const& what) {
    throw std::runtime_error(what);
}

// How often the threads of a process have gone to sleep; nothing while one is awake.
std::optional<long> times_asleep(pid_t pid) {
    std::string const count = "voluntary_ctxt_switches:";
    long times = 0;
    for (auto const& thread : std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/task")) {
        std::ifstream status(thread.path() / "status");
        for (std::string line; std::getline(status, line);) {
            if (line.rfind("State:", 0) == 0 && line.find("(sleeping)") == std::string::npos) {
                return std::nullopt;
            }
            if (line.rfind(count, 0) == 0) {
                times += std::stol(line.substr(count.size()));
            }
        }
    }
    return times;
}

[[noreturn]] void fail_with_errno(std::string const& what) {
    fail(what + ": " + std::strerror(errno));
}

void close_descriptor(int& descriptor) {
    if (descriptor >= 0) {
        ::close(descriptor);
        descriptor = -1;
    }
}

std::string make_directory() {
    std::string path = (std::filesystem::temp_directory_path() / "r47-test-XXXXXX").string();
    if (::mkdtemp(path.data()) == nullptr) {
        fail_with_errno("mkdtemp");
    }
    return path;
}

// The words of an emulator's command line; none where there is no emulator.
std::vector<std::string> words_of(std::string const& list) {
    std::vector<std::string> words;
    std::istringstream stream(list);
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

// A process or one below it that is none of those which make the sandbox and stay as parents; -1: not there yet.
pid_t first_beside_starters(pid_t process) {
    std::string const directory = "/proc/" + std::to_string(process);
    std::ifstream words(directory + "/cmdline");  // the name is the emulator's where there is one
    bool is_there = false;
    bool starts = false;
    for (std::string word; std::getline(words, word, '\0'); is_there = true) {
        std::string const name = word.substr(word.rfind('/') + 1);
        starts = starts || name == "r47-sim" || name == "bwrap" || name == "proot";
    }
    if (!starts) {
        return is_there ? process : -1;
    }
    std::ifstream children(directory + "/task/" + std::to_string(process) + "/children");
    for (pid_t child = -1; children >> child;) {
        pid_t const found = first_beside_starters(child);
        if (found > 0) {
            return found;
        }
    }
    return -1;
}

int unix_connection(std::string const& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    int const descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
        return descriptor;
    }
    ::close(descriptor);
    return -1;
}

// As ::pipe, of a pipe that others can open.
int named_pipe(std::string const& path, int (&ends)[2]) {
    if (::mkfifo(path.c_str(), 0600) != 0) {
        return -1;
    }
    ends[0] = ::open(path.c_str(), O_RDONLY | O_NONBLOCK);
    ends[1] = ::open(path.c_str(), O_WRONLY);
    return ends[0] < 0 || ends[1] < 0 ? -1 : 0;
}

int tcp_connection() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(kPort);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int const descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
        int const at_once = 1;
        ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &at_once, sizeof at_once);
        return descriptor;
    }
    ::close(descriptor);
    return -1;
}

void wait_readable(int descriptor, std::string const& what) {
    pollfd waited{descriptor, POLLIN, 0};
    auto const limit = std::chrono::duration_cast<std::chrono::milliseconds>(kLimit).count();
    if (::poll(&waited, 1, static_cast<int>(limit)) <= 0) {
        fail("limit reached waiting for " + what);
    }
}

// Where a line of the journal begins at `at`, the place of its kind; npos otherwise. Its times are below 10 s.
std::size_t kind_of_line_at(std::string const& output, std::size_t at) {
    constexpr char const* kTimes = "0.000000 0.000000 ";
    constexpr char const* kDigits = "0123456789";
    for (std::size_t i = 0; kTimes[i] != 0; ++i, ++at) {
        bool const is_digit = at < output.size() && std::isdigit(static_cast<unsigned char>(output[at])) != 0;
        if (kTimes[i] == '0' ? !is_digit : at == output.size() || output[at] != kTimes[i]) {
            return std::string::npos;
        }
    }
    std::size_t const kind = output.find_first_not_of(kDigits, at) + 1;
    for (char const* const name : {"call ", "callback ", "command ", "program "}) {
        if (kind > at + 1 && output[kind - 1] == ' ' && output.compare(kind, std::strlen(name), name) == 0) {
            return kind;
        }
    }
    return std::string::npos;
}

}  // namespace

JournalLine parse_journal_line(std::string const& line) {
    JournalLine parsed;
    std::istringstream fields(line);
    std::string sequence;
    std::string object;
    fields >> parsed.start >> parsed.took >> sequence >> parsed.kind >> parsed.program >> parsed.thread >> object >>
        parsed.error >> parsed.rule >> std::ws;
    std::getline(fields, parsed.text);
    parsed.object = object == "-" ? 0 : std::stoi(object);
    return parsed;
}

int object_of(std::string const& line) {
    return parse_journal_line(line).object;
}

std::string call_of(std::string const& line) {
    JournalLine const parsed = parse_journal_line(line);
    return (parsed.kind == "callback" ? "callback " : "") + parsed.text;
}

std::string numbered_call_of(std::string const& line) {
    return std::to_string(object_of(line)) + " " + call_of(line);
}

std::string with_marked_calls(std::string const& output) {
    std::string marked;
    for (std::size_t at = 0; at < output.size();) {
        std::size_t const kind = kind_of_line_at(output, at);
        std::size_t const end = output.find('\n', kind);
        if (kind == std::string::npos || end == std::string::npos) {
            marked += output[at++];
            continue;
        }
        JournalLine const line = parse_journal_line(output.substr(at, end - at));
        if (line.kind == "call") {
            marked += "<" + line.text + ">";
        } else if (line.kind == "callback") {
            marked += "<callback " + line.text + ">";
        }
        at = end + 1;
    }
    return marked;
}

SessionOptions in_shell(std::string const& script) {
    SessionOptions options;
    options.script = script;
    return options;
}

ConsoleSession::ConsoleSession(SessionOptions const& options) : directory_(make_directory()) {
    std::ofstream scenario(directory_ + "/scenario");
    for (std::string const& line : options.scenario) {
        scenario << line << '\n';
    }
    scenario.close();
    start(command_line(options), options);
}

ConsoleSession::~ConsoleSession() {
    if (!reap(false)) {
        ::kill(pid_, SIGKILL);  // what it started dies with it
        reap(true);
    }
    for (int* descriptor : {&input_, &output_end_, &errors_end_, &control_}) {
        close_descriptor(*descriptor);
    }
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
}

std::vector<std::string> ConsoleSession::command_line(SessionOptions const& options) const {
    std::vector<std::string> const emulator = words_of(R47_EMULATOR);
    std::vector<std::string> line = words_of(R47_SIM_EMULATOR);
    if (options.outside) {
        line.clear();
    } else {
        line.insert(line.end(), {R47_SIM, "run", "--name", directory_ + "/device"});
        if (options.journal) {
            line.insert(line.end(), {"--journal", journal_path(options)});
        }
        line.insert(line.end(), {"--scenario", directory_ + "/scenario", "--clock"});
        std::istringstream clock(options.clock);
        for (std::string word; clock >> word;) {
            line.push_back(word);
        }
        for (std::string const& path : options.without) {
            line.insert(line.end(), {"--without", path});
        }
        line.push_back("--");
    }
    if (!options.script.empty()) {
        line.insert(line.end(), {"sh", "-c", options.script, "sh"});
    }
    line.insert(line.end(), options.wrapper.begin(), options.wrapper.end());
    line.insert(line.end(), emulator.begin(), emulator.end());
    if (options.entry_point.empty()) {
        line.push_back(R47_CONSOLE);
    } else {
        line.insert(line.end(), {R47_ENTRY_POINTS, options.entry_point});
    }
    line.insert(line.end(), options.arguments.begin(), options.arguments.end());
    return line;
}

// In one sequence the journal is the pipe that standard output is, which keeps the order of what both write.
std::string ConsoleSession::journal_path(SessionOptions const& options) const {
    return directory_ + (options.one_sequence ? "/sequence" : "/journal");
}

void ConsoleSession::start(std::vector<std::string> const& command_line, SessionOptions const& options) {
    bool const terminal = options.terminal;
    int input[2];
    int output[2];
    int errors[2];
    if (terminal) {
        if (::openpty(&input[1], &input[0], nullptr, nullptr, nullptr) != 0) {
            fail_with_errno("openpty");
        }
        output[0] = ::dup(input[1]);
        output[1] = ::dup(input[0]);
    } else if (::pipe(input) != 0 ||
               (options.one_sequence ? named_pipe(journal_path(options), output) : ::pipe(output)) != 0) {
        fail_with_errno("pipe");
    }
    if (::pipe(errors) != 0) {
        fail_with_errno("pipe");
    }
    for (int descriptor : {input[1], output[0], errors[0]}) {
        ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    }
    std::vector<char*> arguments;
    for (std::string const& word : command_line) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    pid_ = ::fork();
    if (pid_ == 0) {
        if (terminal) {
            ::login_tty(::dup(input[0]));
        } else {
            ::setpgid(0, 0);
            ::dup2(input[0], STDIN_FILENO);
            ::dup2(output[1], STDOUT_FILENO);
        }
        ::dup2(errors[1], STDERR_FILENO);
        for (int descriptor : {input[0], output[1], errors[1]}) {
            ::close(descriptor);
        }
        ::signal(SIGPIPE, SIG_DFL);
        (void)::chdir(directory_.c_str());
        ::execvp(arguments[0], arguments.data());
        ::_exit(127);
    }
    for (int descriptor : {input[0], output[1], errors[1]}) {
        ::close(descriptor);
    }
    input_ = input[1];
    output_end_ = output[0];
    errors_end_ = errors[0];
    ::signal(SIGPIPE, SIG_IGN);  // of this test process: a console that has gone is an answer, not a blow
}

void ConsoleSession::type(std::string_view text) {
    while (!text.empty()) {
        ssize_t const count = ::write(input_, text.data(), text.size());
        if (count < 0) {
            fail_with_errno("typing");
        }
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

void ConsoleSession::end_input() {
    close_descriptor(input_);
}

void ConsoleSession::close_output() {
    close_descriptor(output_end_);
}

void ConsoleSession::hang_up() {
    end_input();
    close_output();
}

bool ConsoleSession::take_output(std::chrono::milliseconds longest) {
    pollfd waited[] = {{output_end_, POLLIN, 0}, {errors_end_, POLLIN, 0}};
    ::poll(waited, 2, static_cast<int>(longest.count()));
    char buffer[1 << 16];
    auto const take = [&buffer](pollfd const& ready, int& end, std::string& text) {
        if (end >= 0 && ready.revents != 0) {
            ssize_t const count = ::read(end, buffer, sizeof buffer);
            if (count > 0) {
                text.append(buffer, static_cast<std::size_t>(count));
            } else if (count == 0 || errno != EINTR) {  // a pseudo-terminal ends with EIO
                close_descriptor(end);
            }
        }
    };
    take(waited[0], output_end_, output_);
    take(waited[1], errors_end_, errors_);
    return output_end_ >= 0 || errors_end_ >= 0;
}

void ConsoleSession::wait_for(std::string_view text) {
    auto const deadline = Clock::now() + kLimit;
    while (true) {
        std::size_t const at = output_.find(text, found_);
        if (at != std::string::npos) {
            found_ = at + text.size();
            return;
        }
        if (Clock::now() > deadline || !take_output(std::chrono::milliseconds(100))) {
            fail("no \"" + std::string(text) + "\" in the output after \"" + output_.substr(found_) +
                 "\"\nerrors: " + errors_);
        }
    }
}

bool ConsoleSession::reap(bool block) {
    if (pid_ < 0) {
        return true;
    }
    int status;
    if (::waitpid(pid_, &status, block ? 0 : WNOHANG) != pid_) {
        return false;
    }
    status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    pid_ = -1;
    return true;
}

bool ConsoleSession::has_exited() {
    return reap(false);
}

bool ConsoleSession::ends_within(std::chrono::milliseconds longest) {
    auto const deadline = Clock::now() + longest;
    while (!reap(false)) {
        if (Clock::now() > deadline) {
            return false;
        }
        if (!take_output(kRetry)) {
            std::this_thread::sleep_for(kRetry);
        }
    }
    return true;
}

int ConsoleSession::wait_for_exit() {
    auto const deadline = Clock::now() + kLimit;
    while (!reap(false)) {
        if (Clock::now() > deadline) {
            fail("still running; the output ends with \"" +
                 output_.substr(output_.size() - std::min<std::size_t>(output_.size(), 2000)) +
                 "\"\nerrors: " + errors_);
        }
        if (!take_output(std::chrono::milliseconds(5))) {
            std::this_thread::sleep_for(kRetry);
        }
    }
    while (take_output(std::chrono::milliseconds(100))) {
    }
    return status_;
}

std::vector<std::string> ConsoleSession::journal() const {
    std::vector<std::string> lines;
    std::ifstream file(directory_ + "/journal");
    // One without its end is just being written.
    for (std::string line; std::getline(file, line) && !file.eof();) {
        std::string const kind = parse_journal_line(line).kind;
        if (kind == "call" || kind == "callback") {
            lines.push_back(line);
        }
    }
    return lines;
}

Calls ConsoleSession::calls() const {
    Calls calls;
    std::vector<std::string> const lines = journal();
    for (std::string const& line : lines) {
        calls.push_back(call_of(line));
    }
    if (!calls.empty() && calls.front() == R"(rtu_t::rtu_t("/dev/r47-rtu-driver", 2))") {
        calls.erase(calls.begin());
        if (!calls.empty() && numbered_call_of(lines.back()) == "1 rtu_t::~rtu_t()") {
            calls.pop_back();
        }
    }
    return calls;
}

std::string ConsoleSession::control(std::string const& command) {
    if (control_ < 0) {
        look_until([&] { return (control_ = unix_connection(directory_ + "/device/control")) >= 0; },
                   "the control socket");
    }
    std::string const line = command + "\n";
    if (::send(control_, line.data(), line.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(line.size())) {
        fail_with_errno("control command");
    }
    std::string answer;
    while (true) {
        wait_readable(control_, "the answer to " + command);
        char buffer[4096];
        ssize_t const count = ::recv(control_, buffer, sizeof buffer, 0);
        if (count <= 0) {
            fail("the device went away during: " + command);
        }
        answer.append(buffer, static_cast<std::size_t>(count));
        if (answer == "ok\n" || (answer.size() > 3 && answer.compare(answer.size() - 4, 4, "\nok\n") == 0)) {
            return answer.substr(0, answer.size() - 3);
        }
        if (answer.back() == '\n' && answer.rfind("error: ", 0) == 0) {
            fail(command + ": " + answer);
        }
    }
}

pid_t ConsoleSession::console_pid() const {
    pid_t console = -1;
    look_until([&] { return (console = first_beside_starters(pid_)) > 0; }, "the console's process");
    return console;
}

void ConsoleSession::wait_until_asleep() const {
    constexpr int kLooks = 20;
    pid_t const pid = console_pid();
    int alike = 0;
    std::optional<long> before;
    look_until(
        [&] {
            auto const now = times_asleep(pid);
            alike = now && now == before ? alike + 1 : 0;
            before = now;
            return alike == kLooks;
        },
        "the console to wait asleep");
}

Transcript run_console(std::string_view typed, SessionOptions const& options) {
    ConsoleSession session(options);
    session.type(typed);
    Transcript transcript;
    transcript.status = session.wait_for_exit();
    transcript.output = session.output();
    transcript.errors = session.errors();
    transcript.calls = session.calls();
    return transcript;
}

StationClient::StationClient() {
    look_until([&] { return (socket_ = tcp_connection()) >= 0; }, "the console to listen");
}

StationClient::~StationClient() {
    close();
}

void StationClient::send(std::string_view text) {
    while (!text.empty()) {
        ssize_t const count = ::send(socket_, text.data(), text.size(), MSG_NOSIGNAL);
        if (count < 0) {
            fail_with_errno("sending to the console");
        }
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

void StationClient::send_bytewise(std::string_view text) {
    for (char const& c : text) {
        send({&c, 1});
    }
}

bool StationClient::offer(std::string_view text, std::chrono::milliseconds patience) {
    while (!text.empty()) {
        pollfd waited{socket_, POLLOUT, 0};
        if (::poll(&waited, 1, static_cast<int>(patience.count())) <= 0) {
            return false;
        }
        ssize_t const count = ::send(socket_, text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

std::string StationClient::receive(std::size_t size) {
    std::string text(size, '\0');
    std::size_t filled = 0;
    while (filled < size) {
        wait_readable(socket_, "the console to send");
        ssize_t const count = ::recv(socket_, text.data() + filled, size - filled, 0);
        if (count <= 0) {
            break;
        }
        filled += static_cast<std::size_t>(count);
    }
    text.resize(filled);
    return text;
}

std::string StationClient::receive_reply() {
    std::string reply;
    while (reply.size() < kEndMark.size() ||
           reply.compare(reply.size() - kEndMark.size(), kEndMark.size(), kEndMark) != 0) {
        std::string const next = receive(1);
        if (next.empty()) {
            break;
        }
        reply += next;
    }
    return reply;
}

bool StationClient::ended() {
    return receive(1).empty();
}

void StationClient::finish() {
    ::shutdown(socket_, SHUT_WR);
}

void StationClient::close() {
    close_descriptor(socket_);
}

void StationClient::reset() {
    linger const at_once{1, 0};
    ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
    close();
}

bool has_own_network() {
    return std::getenv("R47_LOOPBACK") == nullptr;
}

bool has_forbidden_files() {
    return has_own_network() || ::geteuid() == 0;
}

void cut_network() {
    int const any_socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ifreq request{};
    std::strcpy(request.ifr_name, "lo");
    bool const down = ::ioctl(any_socket, SIOCSIFFLAGS, &request) == 0;  // no flags: down
    ::close(any_socket);
    if (!down) {
        fail_with_errno("taking the loopback interface down");
    }
}

}  // namespace support
