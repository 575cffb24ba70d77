// Serves the front panel of a device on the loopback: the page, what it is told, and what it commands.
#include "sim/panel/panel_server.h"

#include <httplib.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <nlohmann/json.hpp>
#include <optional>
#include <thread>

#include "sim/control/command.h"
#include "sim/control/control_link.h"
#include "sim/control/device_directory.h"
#include "sim/control/server.h"
#include "sim/core/thread.h"
#include "sim/panel/access.h"
#include "sim/panel/feed.h"
#include "sim/panel/page.h"

namespace sim {

namespace {

constexpr std::size_t kThreads =
    Feed::kMostPages + 16;                           // one for each page that looks, and those for all that is short
constexpr std::chrono::seconds kSlowestRequest{1};   // to come, and to be taken
constexpr std::chrono::seconds kHeartbeat{2};        // to notice a page that has gone
constexpr std::chrono::seconds kLongestCommand{10};  // a step waits for the callbacks of programs

httplib::Headers const kHeaders = {
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; base-uri 'none'; "
     "form-action 'none'; frame-ancestors 'none'; require-trusted-types-for 'script'; trusted-types 'none'"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Referrer-Policy", "no-referrer"},
    {"X-Content-Type-Options", "nosniff"},
    {"X-Frame-Options", "DENY"},
    {"Cache-Control", "no-store"},
};

void answer(httplib::Response& response, int status, std::string const& text) {
    response.status = status;
    response.set_content(text + "\n", "text/plain; charset=utf-8");
}

// What of the grammar does not go over a page: it has the journal anyway.
Error check_command(std::string const& line) {
    if (std::any_of(line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r' || c == '\0'; })) {
        return "a command is one line";
    }
    if (line.size() > Server::kLongestLine) {
        return "line too long";
    }
    Words words;
    if (split_words(line, words) && !words.empty() && (words.front() == "journal" || words.front() == "watch")) {
        return "the page follows the journal and the state by itself";
    }
    return {};
}

}  // namespace

struct PanelServer::Parts {
    explicit Parts(std::string device) : feed(std::move(device)) {}

    httplib::Server::HandlerResponse admit(httplib::Request const& request, httplib::Response& response) const;
    void get(httplib::Request const& request, httplib::Response& response);
    void post(httplib::Request const& request, httplib::Response& response) const;
    void send_events(httplib::Response& response);
    Reply give(std::string const& line) const;

    Feed feed;
    std::optional<Access> access;
    std::string address;
    httplib::Server http;
    std::thread thread;
};

PanelServer::PanelServer(std::string device) : parts_(std::make_unique<Parts>(std::move(device))) {}

PanelServer::~PanelServer() {
    parts_->feed.stop();
    if (parts_->thread.joinable()) {
        parts_->http.stop();
        parts_->thread.join();
    }
}

Error PanelServer::listen(int port) {
    httplib::Server& http = parts_->http;
    Parts* const parts = parts_.get();
    http.new_task_queue = [] { return new httplib::ThreadPool(kThreads); };
    http.set_default_headers(kHeaders);
    http.set_payload_max_length(Server::kLongestLine);
    http.set_read_timeout(kSlowestRequest);
    http.set_write_timeout(kSlowestRequest);
    http.set_keep_alive_timeout(kSlowestRequest.count());
    http.set_tcp_nodelay(true);
    // Not the library's SO_REUSEPORT: two panels would share the port.
    http.set_socket_options([](int socket) {
        int const yes = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    http.set_pre_routing_handler(
        [parts](auto const& request, auto& response) { return parts->admit(request, response); });
    http.Get(".*", [parts](auto const& request, auto& response) { parts->get(request, response); });
    http.Post(".*", [parts](auto const& request, auto& response) { parts->post(request, response); });
    int taken = port;
    if (port == 0) {
        taken = http.bind_to_any_port("127.0.0.1");
    } else if (!http.bind_to_port("127.0.0.1", port)) {
        taken = -1;
    }
    if (taken < 0) {
        return "cannot listen at 127.0.0.1:" + std::to_string(port) + ": " + std::strerror(errno);
    }
    parts_->access.emplace(taken, make_token());
    parts_->address = parts_->access->address();
    return {};
}

std::string const& PanelServer::address() const {
    return parts_->address;
}

void PanelServer::start() {
    parts_->thread = start_thread_without_signals("panel", [this] { parts_->http.listen_after_bind(); });
    while (!parts_->http.is_running()) {  // from then on it can be stopped
        std::this_thread::yield();
    }
    parts_->feed.start();
}

// Before anything of the request is looked at, its body included.
httplib::Server::HandlerResponse PanelServer::Parts::admit(httplib::Request const& request,
                                                           httplib::Response& response) const {
    bool const reads = request.method == "GET" || request.method == "HEAD";
    Error const refusal =
        access->refusal({request.path, request.get_header_value("Host"), request.get_header_value("Origin"),
                         request.get_header_value("Sec-Fetch-Site"), !reads});
    if (refusal.empty()) {
        return httplib::Server::HandlerResponse::Unhandled;
    }
    answer(response, 403, refusal);
    return httplib::Server::HandlerResponse::Handled;
}

void PanelServer::Parts::get(httplib::Request const& request, httplib::Response& response) {
    std::string const name = access->name_in(request.path);
    if (name == "events") {
        send_events(response);
        return;
    }
    auto const file = std::find_if(page_files().begin(), page_files().end(),
                                   [&](PageFile const& candidate) { return candidate.name == name; });
    if (file == page_files().end()) {
        answer(response, 404, "no such file");
        return;
    }
    response.set_content(file->text.data(), file->text.size(), file->type);
}

void PanelServer::Parts::send_events(httplib::Response& response) {
    std::shared_ptr<Feed::Page> const page = feed.join();
    if (!page) {
        answer(response, 503, "too many pages look at this device");
        return;
    }
    response.set_chunked_content_provider("text/event-stream", [page](std::size_t, httplib::DataSink& sink) {
        auto const messages = page->next(kHeartbeat);
        if (!messages) {
            sink.done();
            return true;
        }
        std::string const text = messages->empty() ? ":\n\n" : *messages;
        return sink.write(text.data(), text.size());
    });
}

void PanelServer::Parts::post(httplib::Request const& request, httplib::Response& response) const {
    if (access->name_in(request.path) != "command") {
        answer(response, 404, "nothing takes that");
        return;
    }
    Reply const reply = give(request.body);
    nlohmann::json const told = {{"ok", reply.ok}, {"text", reply.text}};
    response.set_content(told.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace), "application/json");
}

// Each command has a connection of its own, so that a slow one delays nobody.
Reply PanelServer::Parts::give(std::string const& line) const {
    std::string directory;
    Error error = check_command(line);
    if (error.empty()) {
        error = find_device(feed.device(), directory);
    }
    if (!error.empty()) {
        return Reply::error(error);
    }
    return ControlLink(directory).ask(line, std::chrono::steady_clock::now() + kLongestCommand);
}

}  // namespace sim
