// What a device shows at one moment, and how two moments differ.
#include "sim/panel/snapshot.h"

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

namespace sim {

namespace {

using Json = nlohmann::json;

// "present  PATH", or "missing  PATH".
Json nodes_of(std::string const& list) {
    Json nodes = Json::object();
    std::istringstream lines(list);
    for (std::string state, path; lines >> state >> path;) {
        nodes[path] = state == "present";
    }
    return nodes;
}

// "ID  RULE  fired COUNT"
Json faults_of(std::string const& list) {
    static constexpr std::string_view kFired = "  fired ";
    Json faults = Json::object();
    std::istringstream lines(list);
    for (std::string line; std::getline(lines, line);) {
        std::size_t const rule = line.find("  ");
        std::size_t const fired = line.rfind(kFired);
        if (rule != std::string::npos && fired != std::string::npos && rule < fired) {
            faults[line.substr(0, rule)] = {{"rule", line.substr(rule + 2, fired - rule - 2)},
                                            {"fired", line.substr(fired + kFired.size())}};
        }
    }
    return faults;
}

}  // namespace

Error read_snapshot(ControlLink& link, ControlLink::Deadline until, Snapshot& snapshot) {
    Reply const shown = link.ask("show --json", until);
    if (!shown.ok) {
        return shown.text;
    }
    Json const all = Json::parse(shown.text, nullptr, false);
    if (!all.is_object()) {
        return "the device is of another build";
    }
    Json properties = Json::object();
    for (auto const& [name, property] : all.items()) {
        properties[name] = property.value("value", Json());
    }
    snapshot = {{"device", {{"connected", true}, {"message", ""}}}, {"properties", std::move(properties)}};
    return read_lists(link, until, snapshot);
}

Error read_lists(ControlLink& link, ControlLink::Deadline until, Snapshot& snapshot) {
    link.give({"node list", "fault list", "programs"});
    Reply replies[3];
    for (Reply& reply : replies) {
        reply = link.take_reply(until);
        if (!reply.ok) {
            return reply.text;
        }
    }
    snapshot["nodes"] = nodes_of(replies[0].text);
    snapshot["faults"] = faults_of(replies[1].text);
    snapshot["programs"] = {{"list", replies[2].text}};
    return {};
}

void take_changes(std::vector<std::string> const& lines, Snapshot& snapshot) {
    for (std::string const& line : lines) {
        Json change = Json::parse(line, nullptr, false);
        if (change.is_object() && change.contains("property") && change.contains("value")) {
            snapshot["properties"][change["property"].get<std::string>()] = std::move(change["value"]);
        }
    }
}

Snapshot lost_device(Error const& why) {
    return {{"device", {{"connected", false}, {"message", why}}}};
}

Snapshot difference(Snapshot const& before, Snapshot const& now) {
    Snapshot differences = Snapshot::object();
    Snapshot const nothing = Snapshot::object();
    auto const members = [&](Snapshot const& all, std::string const& name) -> Snapshot const& {
        auto const found = all.find(name);
        return found == all.end() ? nothing : *found;
    };
    for (auto const& [name, group] : now.items()) {
        Snapshot const& old = members(before, name);
        for (auto const& [key, value] : group.items()) {
            auto const found = old.find(key);
            if (found == old.end() || *found != value) {
                differences[name][key] = value;
            }
        }
    }
    for (auto const& [name, group] : before.items()) {
        Snapshot const& fresh = members(now, name);
        for (auto const& [key, value] : group.items()) {
            if (!fresh.contains(key)) {
                differences[name][key] = nullptr;
            }
        }
    }
    return differences;
}

}  // namespace sim
