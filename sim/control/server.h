// Serves the control grammar on a Unix socket.
#pragma once

#include <list>
#include <mutex>
#include <string>
#include <thread>

#include "sim/control/command.h"

namespace sim {

// One thread, many clients, any number of commands on a connection. Each reply is its body lines and then a line "ok"
// or "error: MESSAGE". Lines longer than kLongestLine are refused. A client that goes, sends half a line or
// does not read hurts only itself.
class Server {
public:
    static constexpr std::size_t kLongestLine = 4096;

    Server(Device& device, Commands const& commands) : device_(device), commands_(commands) {}
    Server(Server const&) = delete;
    Server& operator=(Server const&) = delete;
    ~Server();

    // Listens on `path`, whose directory must be private (mode 0700), and starts the thread. Once.
    Error start(std::string const& path);
    // Ends the thread and all connections and removes the socket.
    void stop();

private:
    struct Client {
        int fd = -1;
        std::string input;
        std::string output;  // guarded by output_mutex_, as `lost`
        int follower = 0;
        bool skipping = false;  // the rest of a line that is too long
        bool ended = false;     // sends no more
        bool lost = false;      // gone, or does not read
    };

    void serve();
    void wait();
    void accept_client();
    void read_from(Client& client);
    void take_lines(Client& client);
    void answer(Client& client, std::string const& line);
    void send(Client& client, std::string const& text);
    void write_to(Client& client);
    bool is_done(Client& client);
    void follow(Client& client);
    void remove_done();
    void wake();

    Device& device_;
    Commands const& commands_;
    std::string path_;
    int listener_ = -1;
    int wake_ = -1;
    std::thread thread_;
    std::list<Client> clients_;
    std::mutex output_mutex_;
    bool stopping_ = false;  // guarded by output_mutex_
};

}  // namespace sim
