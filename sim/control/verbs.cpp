// The verbs that every part of the device shares: its state, faults, nodes, time and journal.
#include "sim/control/verbs.h"

#include <algorithm>

#include "sim/control/fault_words.h"
#include "sim/control/property_table.h"
#include "sim/control/value_words.h"
#include "sim/core/numbers.h"
#include "sim/device/schema.h"

namespace sim {

namespace {

char const* const kShowUsage = "show [--json | --schema] [PREFIX...]";
char const* const kSetUsage = "set NAME VALUE";
char const* const kFaultUsage =
    "fault add OPERATION [arg N VALUE] [object N] [from TIME] [to TIME] [skip N] [every N] [probability P [seed N]] "
    "[count N] status S | errno NAME | delay MS | value V[,V...]\n"
    "fault add CALLBACK, with the same choices, drop | double | late MS\n"
    "fault list\n"
    "fault clear [ID]";
char const* const kOperationsUsage = "operations [PATTERN]";
char const* const kNodeUsage = "node remove PATH\nnode restore PATH\nnode list";
char const* const kClockUsage = "clock [real | scaled FACTOR | stepped]";
char const* const kStepUsage = "step DURATION";
char const* const kProgramsUsage = "programs";
char const* const kJournalUsage = "journal follow [--json] [--every DURATION]";

char const* const kShowDetails =
    "Shows all properties, or those whose name is a PREFIX or begins with one and\n"
    "a dot. A line has the name, the value with its own name and its unit, \"set\"\n"
    "where it can be set, the type with its range, and the meaning.\n"
    "--json prints the same for programs, --schema without the values.\n"
    "Examples: show system; show dio rtu.trigger; show --json imx296.roi";
char const* const kSetDetails =
    "VALUE is a number, decimal or hexadecimal after 0x; true, false, on, off, 1\n"
    "or 0; a choice, by its value or its name; a place X,Y; or a scene in quotes.\n"
    "A value that is refused changes nothing, and is told which are legal.\n"
    "Examples: set system.state warning; set imx296.roi 20,20;\n"
    "set ranging.scene \"plane 500\"";
char const* const kFaultDetails =
    "OPERATION and CALLBACK are names, or patterns with *: \"operations\" lists them.\n"
    "The first rule that applies takes the call. add answers the rule's number,\n"
    "list tells how often each rule fired. Times are those of the device's clock.\n"
    "Examples: fault add rtu_t::get_exposure skip 1 count 1 status -1;\n"
    "fault add *::get_* errno EIO delay 20; fault add gyro_delegate_t every 3 drop";
char const* const kOperationsDetails =
    "PATTERN may have * for any characters; without one, it is a part of the name.\n"
    "A line has the name, what it is, how many arguments the journal writes, and of\n"
    "how many values an answer consists.\n"
    "Examples: operations exposure; operations 'rtu_t::*'";
char const* const kNodeDetails =
    "What is done through a file that is away fails with ENODEV.\n"
    "Example: node remove /dev/imx296";
char const* const kClockDetails =
    "Without words it tells how. real is the host's time, scaled FACTOR (0.001 to\n"
    "1000) so much faster; stepped stands still until \"step\". A change keeps the time.";
char const* const kStepDetails =
    "DURATION is as 3s, 250ms, 10us, 5min or 2h, at most one day. A step that waits\n"
    "for programs says so each second.";
char const* const kProgramsDetails = "A line has name and number, process, and how many objects it has open.";
char const* const kJournalDetails =
    "One line for each call, callback, command and program that comes or goes, from\n"
    "now on, until one side ends. --json: each line as a JSON object. --every: the\n"
    "lines come together, so often by the host's clock, which costs less.\n"
    "r47-sim has \"journal show\" and \"journal diff\" for journals in files.";

constexpr double kSmallestFactor = 1e-3;
constexpr double kLargestFactor = 1e3;  // a device that triggers and samples all the while keeps up

Reply show(Device::Access& device, Words const& words) {
    std::string const form = words.empty() ? "" : words.front();
    bool const json = form == "--json";
    bool const schema = form == "--schema";
    Words const prefixes(words.begin() + (json || schema ? 1 : 0), words.end());
    for (std::string const& prefix : prefixes) {
        if (device->properties.select({prefix}).empty()) {
            return Reply::error(device->properties.unknown(prefix, true));
        }
    }
    std::string const shown = properties_json(device->properties, prefixes, !schema);
    return Reply::done(json || schema ? shown : property_table(shown));
}

Reply set(Device::Access& device, Words const& words) {
    if (words.size() != 2) {
        return usage_error(kSetUsage);
    }
    return Reply::of(set_property(device->properties, words[0], words[1]));
}

Reply add_fault(FaultRules& faults, Time now, Words const& words) {
    FaultRule rule;
    Error error = parse_fault_rule(words, rule);
    if (error.empty() && rule.to && *rule.to <= now) {
        error = "it can do nothing: its time is over";
    }
    return error.empty() ? Reply::done(std::to_string(faults.add(rule)) + "\n") : Reply::error(error);
}

Reply clear_faults(FaultRules& faults, Words const& words) {
    if (words.size() == 1) {
        faults.clear();
        return Reply::done();
    }
    auto const id = parse_integer_as<int>(words[1]);
    return id ? Reply::of(faults.clear(*id)) : Reply::error("no fault rule " + words[1]);
}

Reply fault(Device::Access& device, Words const& words) {
    FaultRules& faults = device->faults;
    std::string const form = words.empty() ? "" : words.front();
    if (form == "add" && words.size() > 1) {
        return add_fault(faults, device.now(), Words(words.begin() + 1, words.end()));
    }
    if (form == "list" && words.size() == 1) {
        return Reply::done(faults.list());
    }
    if (form == "clear" && words.size() <= 2) {
        return clear_faults(faults, words);
    }
    return usage_error(kFaultUsage);
}

Reply operations(Device::Access&, Words const& words) {
    if (words.size() > 1) {
        return usage_error(kOperationsUsage);
    }
    std::string const pattern = words.empty() ? "" : words.front();
    std::string const list = list_operations(pattern);
    return list.empty() ? Reply::error(no_operation(pattern)) : Reply::done(list);
}

Reply node(Device::Access& device, Words const& words) {
    Nodes& nodes = device->nodes;
    std::string const form = words.empty() ? "" : words.front();
    if (form == "remove" && words.size() == 2) {
        return Reply::of(nodes.remove(words[1]));
    }
    if (form == "restore" && words.size() == 2) {
        return Reply::of(nodes.restore(words[1]));
    }
    if (form == "list" && words.size() == 1) {
        return Reply::done(nodes.list());
    }
    return usage_error(kNodeUsage);
}

Reply clock(Caller const& caller, Words const& words) {
    Timeline& timeline = caller.device.timeline;
    std::string const mode = words.empty() ? "" : words.front();
    if (words.empty()) {
        return Reply::done(timeline.clock_setting() + "\n");
    }
    if (mode == "real" && words.size() == 1) {
        timeline.run_real();
    } else if (mode == "stepped" && words.size() == 1) {
        timeline.run_stepped();
    } else if (mode == "scaled" && words.size() == 2) {
        auto const factor = parse_float(words[1]);
        if (!factor || *factor < kSmallestFactor || *factor > kLargestFactor) {
            return Reply::error("bad factor " + words[1] + ": 0.001 to 1000");
        }
        timeline.run_scaled(*factor);
    } else {
        return usage_error(kClockUsage);
    }
    caller.device.notify();  // a step that waited for callbacks waits no more
    return Reply::done();
}

Reply step(Caller const& caller, Words const& words) {
    if (words.size() != 1) {
        return usage_error(kStepUsage);
    }
    auto const length = parse_duration(words.front());
    if (!length) {
        return duration_error(words.front());
    }
    auto const tell_whom = [&] {
        if (caller.tell && caller.programs != nullptr) {
            for (std::string const& line : caller.programs->waited_for()) {
                caller.tell("waiting: " + line);
            }
        }
    };
    return caller.device.timeline.step(*length, tell_whom) ? Reply::done() : Reply::error("the clock is not stepped");
}

Reply programs(Caller const& caller, Words const& words) {
    if (!words.empty()) {
        return usage_error(kProgramsUsage);
    }
    std::string list;
    if (caller.programs != nullptr) {
        for (std::string const& line : caller.programs->connected()) {
            list += line + "\n";
        }
    }
    return Reply::done(list);
}

Reply journal(Caller const& caller, Words const& words) {
    if (words.empty() || words.front() != "follow") {
        return usage_error(kJournalUsage);
    }
    Words rest(words.begin() + 1, words.end());
    StreamForm form;
    Error const error = take_stream_form(rest, kJournalUsage, form);
    if (!error.empty()) {
        return Reply::error(error);
    }
    if (!rest.empty()) {
        return usage_error(kJournalUsage);
    }
    if (!caller.follow_journal) {
        return Reply::error("journal follow needs a connection");
    }
    caller.follow_journal(form);
    return Reply::done();
}

}  // namespace

void add_state_verbs(Commands& commands) {
    commands.add(
        {"show", kShowUsage, "the device's state: what each property is, and its value", show, {}, true, kShowDetails});
    commands.add({"set",
                  kSetUsage,
                  "sets one property of the state, to a value or what it is called",
                  set,
                  {},
                  false,
                  kSetDetails});
}

void add_fault_verbs(Commands& commands) {
    commands.add({"fault",
                  kFaultUsage,
                  "makes calls fail, take long or answer other values, and disturbs callbacks",
                  fault,
                  {},
                  false,
                  kFaultDetails});
    commands.add(
        {"operations", kOperationsUsage, "what fault rules can name", operations, {}, true, kOperationsDetails});
}

void add_node_verbs(Commands& commands) {
    commands.add(
        {"node", kNodeUsage, "takes files of the device away and puts them back", node, {}, false, kNodeDetails});
}

void add_time_verbs(Commands& commands) {
    commands.add({"clock", kClockUsage, "how the device's time passes", {}, clock, false, kClockDetails});
    commands.add({"step",
                  kStepUsage,
                  "moves the stepped clock on; done when all that fell due has been delivered",
                  {},
                  step,
                  false,
                  kStepDetails});
}

void add_program_verbs(Commands& commands) {
    commands.add(
        {"programs", kProgramsUsage, "the programs that use the device", {}, programs, true, kProgramsDetails});
}

void add_journal_verbs(Commands& commands) {
    commands.add({"journal",
                  kJournalUsage,
                  "sends the journal's lines as they are written",
                  {},
                  journal,
                  true,
                  kJournalDetails});
}

}  // namespace sim
