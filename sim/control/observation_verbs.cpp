// The verbs that look at the device's state while it changes.
#include <memory>
#include <optional>

#include "sim/control/condition.h"
#include "sim/control/verbs.h"

namespace sim {

namespace {

char const* const kWatchUsage = "watch [--json] [--every DURATION] [PREFIX...]";
char const* const kWaitUsage = "wait NAME OP VALUE [--timeout DURATION]";
char const* const kExpectUsage = "expect NAME OP VALUE";

char const* const kWatchDetails =
    "A line for each change: the time, the name, the value. A property that changes\n"
    "all the while is told 20 times a second, of the device's on a stepped clock. A\n"
    "reader that is slow misses values in between, never the last one. Without a\n"
    "PREFIX the time itself is not watched. --json: each line as a JSON object.\n"
    "--every: tells what is now, the time too, and then, so often by the host's\n"
    "clock, what is other than before, not what was so in between.\n"
    "Examples: watch system autofocus.position; watch --every 1s illumination";
char const* const kWaitDetails =
    "OP is == or !=, for numbers also <, <=, > or >=; VALUE as \"set\" takes it.\n"
    "Fails when it does not hold within DURATION of the device's time. On a stepped\n"
    "clock it is looked at whenever something happens, and after each step.\n"
    "Examples: wait autofocus.moving == false --timeout 5s; wait dio.encoder '>=' 10";
char const* const kExpectDetails =
    "For scenarios: where it does not hold, the device ends with status 125, and says\n"
    "when and what. OP and VALUE are those of \"wait\".\n"
    "Example: 2s expect system.state == warning";

constexpr std::chrono::milliseconds kPatience{50};  // after which is looked at who waits, and what time has changed

Reply watch(Caller const& caller, Words const& words) {
    Words prefixes = words;
    StreamForm form;
    Error const error = take_stream_form(prefixes, kWatchUsage, form);
    if (!error.empty()) {
        return Reply::error(error);
    }
    {
        auto const device = caller.device.access();
        for (std::string const& prefix : prefixes) {
            if (device->properties.select({prefix}).empty()) {
                return Reply::error(device->properties.unknown(prefix, true));
            }
        }
    }
    if (!caller.watch) {
        return Reply::error("watch needs a connection");
    }
    caller.watch(prefixes, form);
    return Reply::done();
}

// Waits until a condition holds, however short, or its time is over.
class Wait {
public:
    Wait(Device& device, Condition const& condition, std::optional<Duration> longest)
        : device_(device), condition_(condition) {
        auto const access = device_.access();
        if (longest) {
            end_ = access.now() + *longest;
            alarm_ = device_.timeline.at(*end_, [&device = device_] { device.access(); });
        }
        observer_ =
            access->observers.add([this, &properties = access->properties](Time now) { look(now, properties); });
    }
    Wait(Wait const&) = delete;
    Wait& operator=(Wait const&) = delete;
    ~Wait() {
        device_.timeline.cancel(alarm_);
        auto const access = device_.access();
        access->observers.remove(observer_);
    }

    // What is instead, where it does not hold. `gone`: whether nobody is interested any more.
    std::optional<std::string> run(std::function<bool()> const& gone) {
        auto access = device_.access();
        while (!over_ && !gone()) {
            access.wait_until([this] { return over_; }, kPatience);
        }
        if (!over_) {
            return value_of(condition_, access->properties);
        }
        return instead_;
    }

private:
    void look(Time now, Properties const& properties) {
        if (over_) {
            return;
        }
        bool const is_so = holds(condition_, properties);
        bool const late = end_ && now >= *end_;
        if (!is_so && late) {
            instead_ = value_of(condition_, properties);
        }
        over_ = is_so || late;
        if (over_) {
            device_.notify();
        }
    }

    Device& device_;
    Condition const condition_;
    std::optional<Time> end_;
    Timeline::EventId alarm_ = 0;
    int observer_ = 0;
    bool over_ = false;  // guarded by the device's lock, as what follows
    std::optional<std::string> instead_;
};

Reply wait(Caller const& caller, Words const& words) {
    bool const limited = words.size() == 5 && words[3] == "--timeout";
    if (words.size() != 3 && !limited) {
        return usage_error(kWaitUsage);
    }
    auto const longest = limited ? parse_duration(words[4]) : std::nullopt;
    if (limited && !longest) {
        return duration_error(words[4]);
    }
    Condition condition;
    Error const error = parse_condition(caller.device.access()->properties, words, condition);
    if (!error.empty()) {
        return Reply::error(error);
    }
    if (!caller.gone) {
        return Reply::error("wait needs a connection");
    }
    auto const instead = Wait(caller.device, condition, longest).run(caller.gone);
    if (!instead) {
        return Reply::done();
    }
    return Reply::error(condition.text + " did not come" + (limited ? " within " + words[4] : "") + ": it is " +
                        *instead);
}

Reply expect(Caller const& caller, Words const& words) {
    if (words.size() != 3) {
        return usage_error(kExpectUsage);
    }
    auto const device = caller.device.access();
    Condition condition;
    Error const error = parse_condition(device->properties, words, condition);
    if (!error.empty()) {
        return Reply::error(error);
    }
    if (caller.rehearses || holds(condition, device->properties)) {
        return Reply::done();
    }
    return Reply::error("at " + seconds(device.now()) + " s expected " + condition.text + ", but it is " +
                        value_of(condition, device->properties));
}

}  // namespace

void add_observation_verbs(Commands& commands) {
    commands.add({"watch", kWatchUsage, "the state's changes, as they happen", {}, watch, true, kWatchDetails});
    commands.add({"wait", kWaitUsage, "waits until the state is so", {}, wait, true, kWaitDetails});
    commands.add({"expect", kExpectUsage, "fails where the state is not so", {}, expect, true, kExpectDetails});
}

}  // namespace sim
