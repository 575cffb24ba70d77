// Tests of the panel's server, with a device in this process.
#include "sim/panel/panel_server.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "sim/control/device_directory.h"
#include "sim/control/server.h"
#include "sim/panel/feed.h"
#include "tests/sim/temporary_directory.h"

namespace {

using nlohmann::json;

constexpr std::chrono::seconds kLimit{20};

// Messages of a page that looks, taken on a thread of its own.
class Events {
public:
    Events(std::string const& origin, std::string const& path)
        : client_(origin), thread_([this, path] {
              client_.set_read_timeout(kLimit);
              auto const result = client_.Get(path, [this](char const* bytes, std::size_t size) {
                  std::lock_guard<std::mutex> const lock(mutex_);
                  text_.append(bytes, size);
                  changed_.notify_all();
                  return !ended_;
              });
              std::lock_guard<std::mutex> const lock(mutex_);
              status_ = result ? result->status : 0;
              ended_ = true;
              changed_.notify_all();
          }) {}
    Events(Events const&) = delete;
    Events& operator=(Events const&) = delete;
    ~Events() { end(); }

    // The data of the next message of this name; null where none comes in time.
    json next(std::string const& name) {
        std::string const mark = "event: " + name + "\ndata: ";
        std::unique_lock<std::mutex> lock(mutex_);
        std::size_t at = 0;
        std::size_t end = 0;
        changed_.wait_for(lock, kLimit, [&] {
            at = text_.find(mark, taken_);
            end = at == std::string::npos ? at : text_.find("\n\n", at);
            return end != std::string::npos || ended_;
        });
        if (end == std::string::npos) {
            ADD_FAILURE() << "no " << name << " in " << text_;
            return nullptr;
        }
        taken_ = end;
        return json::parse(text_.substr(at + mark.size(), end - at - mark.size()));
    }
    // The next state that has this member of this group.
    json next_with(std::string const& group, std::string const& member) {
        while (true) {
            json const state = next("state");
            if (state.is_null() || (state.contains(group) && state[group].contains(member))) {
                return state.is_null() ? state : state[group][member];
            }
        }
    }
    int wait_for_end() {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait_for(lock, kLimit, [this] { return ended_; });
        return status_;
    }
    void end() {
        {
            std::lock_guard<std::mutex> const lock(mutex_);
            ended_ = true;
        }
        client_.stop();
        if (thread_.joinable()) {
            thread_.join();
        }
    }

private:
    httplib::Client client_;
    std::mutex mutex_;  // guards what follows
    std::condition_variable changed_;
    std::string text_;
    std::size_t taken_ = 0;
    int status_ = 0;
    bool ended_ = false;
    std::thread thread_;
};

class PanelServerTest : public testing::Test {
protected:
    PanelServerTest() {
        start_device();
        EXPECT_EQ(panel_.listen(0), "");
        panel_.start();
        std::string const& address = panel_.address();
        std::size_t const path = address.find('/', std::string("http://").size());
        origin_ = address.substr(0, path);
        path_ = address.substr(path);
        client_ = std::make_unique<httplib::Client>(origin_);
    }

    void start_device() {
        device_ = std::make_unique<sim::Device>(std::make_unique<sim::MemoryFileSystem>());
        control_ = std::make_unique<sim::Server>(*device_, sim::device_commands(), nullptr);
        EXPECT_EQ(control_->start(sim::control_socket(directory_.path())), "");
    }
    void end_device() {
        control_.reset();
        device_.reset();
    }
    std::unique_ptr<Events> look() const { return std::make_unique<Events>(origin_, path_ + "events"); }

    httplib::Result post(std::string const& command) const {
        return client_->Post(path_ + "command", httplib::Headers{{"Origin", origin_}}, command, "text/plain");
    }
    // What the device answers.
    json give(std::string const& command) const {
        auto const result = post(command);
        EXPECT_TRUE(result) << command;
        return result ? json::parse(result->body) : json();
    }
    std::string value(std::string const& name) const {
        return sim::value_text(device_->access()->properties.all().at(name).get());
    }

    TemporaryDirectory directory_;
    std::unique_ptr<sim::Device> device_;
    std::unique_ptr<sim::Server> control_;
    sim::PanelServer panel_{directory_.path()};
    std::string origin_;
    std::string path_;
    std::unique_ptr<httplib::Client> client_;
};

TEST_F(PanelServerTest, PageAndItsPartsComeWithAStrictPolicy) {
    for (char const* const name : {"", "main.js", "panel.css", "icon.svg"}) {
        auto const result = client_->Get(path_ + name);
        ASSERT_TRUE(result) << name;
        EXPECT_EQ(result->status, 200) << name;
        std::string const policy = result->get_header_value("Content-Security-Policy");
        EXPECT_EQ(policy.find("default-src 'none'; script-src 'self'; style-src 'self';"), 0U) << policy;
        EXPECT_NE(policy.find("frame-ancestors 'none'"), std::string::npos);
        EXPECT_EQ(policy.find("unsafe"), std::string::npos);
        EXPECT_EQ(result->get_header_value("X-Content-Type-Options"), "nosniff");
        EXPECT_EQ(result->get_header_value("Referrer-Policy"), "no-referrer");
    }
}

TEST_F(PanelServerTest, EverythingIsRefusedWithoutTheToken) {
    for (char const* const path : {"/", "/events", "/main.js", "/00000000000000000000000000000000/events"}) {
        auto const result = client_->Get(path);
        ASSERT_TRUE(result) << path;
        EXPECT_EQ(result->status, 403) << path;
    }
    auto const command = client_->Post("/command", httplib::Headers{{"Origin", origin_}}, "power off", "text/plain");
    ASSERT_TRUE(command);
    EXPECT_EQ(command->status, 403);
    EXPECT_EQ(value("power"), "true");
}

TEST_F(PanelServerTest, AnotherHostsNameIsRefused) {
    auto const result = client_->Get(path_, httplib::Headers{{"Host", "evil.example"}});
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, 403);
}

TEST_F(PanelServerTest, AnotherPageSteersNothing) {
    for (httplib::Headers const& headers : {httplib::Headers{}, httplib::Headers{{"Origin", "http://evil.example"}},
                                            httplib::Headers{{"Origin", origin_}, {"Sec-Fetch-Site", "cross-site"}}}) {
        auto const result = client_->Post(path_ + "command", headers, "power off", "text/plain");
        ASSERT_TRUE(result);
        EXPECT_EQ(result->status, 403);
    }
    EXPECT_EQ(value("power"), "true");
}

TEST_F(PanelServerTest, CommandIsGivenToTheDevice) {
    EXPECT_EQ(give("set system.state 5"), json({{"ok", true}, {"text", ""}}));
    EXPECT_EQ(value("system.state"), "5");
    EXPECT_EQ(give("clock"), json({{"ok", true}, {"text", "stepped\n"}}));
}

TEST_F(PanelServerTest, RefusedCommandTellsWhyAndChangesNothing) {
    EXPECT_EQ(give("set ranging.noise 101"),
              json({{"ok", false}, {"text", "ranging.noise: 101 is not a number from 0 to 100"}}));
    EXPECT_EQ(give("frobnicate")["ok"], false);
    EXPECT_EQ(value("ranging.noise"), "1");
}

TEST_F(PanelServerTest, OnlyOneLineOfTheGrammarPasses) {
    for (char const* const command : {"power off\npower on", "power off\r\n", "\npower off"}) {
        EXPECT_EQ(give(command), json({{"ok", false}, {"text", "a command is one line"}}));
    }
    for (char const* const command : {"journal follow", "\"journal\" follow --json", "watch rtu"}) {
        EXPECT_EQ(give(command),
                  json({{"ok", false}, {"text", "the page follows the journal and the state by itself"}}));
    }
    EXPECT_EQ(value("power"), "true");
}

TEST_F(PanelServerTest, CommandLongerThanALineIsRefused) {
    auto const result = post("set system.state 5 " + std::string(sim::Server::kLongestLine, ' '));
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, 413);
    EXPECT_EQ(value("system.state"), "1");
}

TEST_F(PanelServerTest, FirstMessageTellsAllTheNextOnesOnlyDifferences) {
    auto const page = look();
    json const first = page->next("state");
    EXPECT_EQ(first["device"]["connected"], true);
    EXPECT_EQ(first["properties"]["system.state"], 1);
    EXPECT_GT(first["properties"].size(), 150U);
    EXPECT_EQ(first["nodes"]["/dev/imx296"], true);
    give("set system.state 5");
    EXPECT_EQ(page->next("state"), json({{"properties", {{"system.state", 5}}}}));
    give("node remove /dev/i2c-2");
    EXPECT_EQ(page->next("state"), json({{"nodes", {{"/dev/i2c-2", false}}}}));
}

TEST_F(PanelServerTest, WhatTimeAloneChangesMovesOnThePage) {
    auto const page = look();
    page->next("state");
    give("clock real");
    double const before = page->next_with("properties", "clock.time");
    EXPECT_GT(page->next_with("properties", "clock.time"), before);
}

TEST_F(PanelServerTest, PageThatTakesThePlaceOfTheLastOneIsToldAll) {
    for (int i = 0; i < 5; ++i) {
        EXPECT_GT(look()->next("state")["properties"].size(), 150U) << i;
    }
}

TEST_F(PanelServerTest, FaultRulesAreToldAndGo) {
    auto const page = look();
    page->next("state");
    give("fault add rtu_t::get_exposure count 1 status -1");
    EXPECT_EQ(page->next_with("faults", "1"),
              json({{"rule", "rtu_t::get_exposure count 1 status -1"}, {"fired", "0"}}));
    give("fault clear 1");
    EXPECT_EQ(page->next_with("faults", "1"), nullptr);
}

TEST_F(PanelServerTest, JournalRunsAlong) {
    auto const page = look();
    page->next("state");
    give("set system.state 6");
    json const journal = page->next("journal");
    EXPECT_EQ(journal["skipped"], 0);
    EXPECT_EQ(journal["lines"].back()["text"], "set system.state 6");
}

TEST_F(PanelServerTest, FloodOfTheJournalIsCutAndSaidSo) {
    auto const page = look();
    page->next("state");
    for (int i = 0; i < 5000; ++i) {
        sim::device_commands().run({*device_}, "set system.state 6");
    }
    std::size_t told = 0;
    std::size_t skipped = 0;
    while (told + skipped < 5000) {
        json const journal = page->next("journal");
        ASSERT_FALSE(journal.is_null());
        EXPECT_LE(journal["lines"].size(), sim::Feed::kMostLines);
        told += journal["lines"].size();
        skipped += journal["skipped"].get<std::size_t>();
    }
    EXPECT_EQ(told + skipped, 5000U);
}

TEST_F(PanelServerTest, TenPagesLookAtOnce) {
    std::vector<std::unique_ptr<Events>> pages;
    for (int i = 0; i < 10; ++i) {
        pages.push_back(look());
    }
    for (auto const& page : pages) {
        page->next("state");
    }
    give("set system.state 5");
    for (auto const& page : pages) {
        EXPECT_EQ(page->next_with("properties", "system.state"), 5);
    }
}

TEST_F(PanelServerTest, OnePageTooManyIsToldSo) {
    std::vector<std::unique_ptr<Events>> pages;
    for (std::size_t i = 0; i < sim::Feed::kMostPages; ++i) {
        pages.push_back(look());
        pages.back()->next("state");
    }
    EXPECT_EQ(look()->wait_for_end(), 503);
    EXPECT_EQ(give("clock")["ok"], true);
}

TEST_F(PanelServerTest, LostDeviceIsSaidAndFoundAgain) {
    auto const page = look();
    page->next("state");
    end_device();
    EXPECT_EQ(page->next_with("device", "connected"), false);
    EXPECT_EQ(give("clock"), json({{"ok", false}, {"text", "the device ended"}}));
    start_device();
    EXPECT_EQ(page->next_with("device", "connected"), true);
    give("set system.state 5");
    EXPECT_EQ(page->next_with("properties", "system.state"), 5);
}

TEST_F(PanelServerTest, DeviceIsLeftAloneWhenNobodyLooks) {
    auto page = look();
    page->next("state");
    EXPECT_TRUE(device_->access()->journal.on());
    page->end();
    // The panel's own connections end with its last page: then the journal is read by nobody.
    auto const limit = std::chrono::steady_clock::now() + kLimit;
    while (device_->access()->journal.on() && std::chrono::steady_clock::now() < limit) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(device_->access()->journal.on());
}

TEST_F(PanelServerTest, PortThatIsTakenIsRefused) {
    sim::PanelServer second(directory_.path());
    int const port = std::stoi(origin_.substr(origin_.rfind(':') + 1));
    EXPECT_EQ(second.listen(port).find("cannot listen at 127.0.0.1:" + std::to_string(port)), 0U);
}

}  // namespace
