// The command line of r47-sim.
#include "sim/tool/command_line.h"

#include <arpa/inet.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <cstdio>

#include "sim/control/command.h"
#include "sim/core/numbers.h"
#include "sim/tool/exit_status.h"
#include "sim/tool/options.h"

namespace sim {

namespace {

using Task = CommandLine::Task;
using Texts = std::vector<std::string>;

Texts const kOwnCommands{"run", "fleet", "device", "list", "panel"};
constexpr char const* kNoCommand = "no command given: r47-sim run [OPTION...] -- COMMAND [ARG...]";

constexpr char const* kUsage =
    "usage: r47-sim run [OPTION...] -- COMMAND [ARG...]   runs COMMAND inside a virtual device\n"
    "       r47-sim fleet N [OPTION...] -- COMMAND        runs it in the midst of N devices with consoles that serve\n"
    "       r47-sim device [OPTION...]                    runs a device until a signal ends it\n"
    "       r47-sim list                                  the devices that run, and their programs\n"
    "       r47-sim panel [OPTION...]                     shows a device to a browser, and prints the address\n"
    "       r47-sim [OPTION...] CONTROL-COMMAND           gives a running device a command\n"
    "       r47-sim [OPTION...] -                         gives it the commands on standard input\n"
    "       r47-sim journal show [OPTION...] FILE         prints the journal in a file\n"
    "       r47-sim journal diff [OPTION...] FILE FILE    compares two of them\n"
    "       r47-sim help [COMMAND]                        this text, or what a command does\n";

bool asks_for_help(std::string const& word) {
    return word == "-h" || word == "--help";
}

class Reader {
public:
    explicit Reader(Texts const& words) : words_(words) {
        app_.prefix_command();
        app_.set_version_flag("--version", "r47-sim " R47_VERSION, "prints the version");
        app_.add_option("--device", line_.control.device,
                        "the running device that a command is for, if not the only one")
            ->type_name("NAME");
        app_.add_option("--timeout", timeout_, "the longest that a command may take; not the lines of a journal")
            ->type_name("DURATION");
        add_device_options(device_, line_.device);
        add_device_options(run_, line_.run.own);
        run_.add_option("--device", line_.run.device, "runs COMMAND in this running device, not in one of its own")
            ->type_name("NAME");
        run_.add_flag("--private-network", line_.run.sandbox.private_network,
                      "a network of its own, with nothing but a loopback interface");
        run_.add_option("--publish", port_, "the same, but the console in it is reached at 127.0.0.1:PORT of this host")
            ->type_name("[127.X.Y.Z:]PORT");
        run_.add_flag("--require-faults", line_.run.require_faults, "fails where a fault rule never fired");
        fleet_.add_option("N", fleet_size_, "devices")->type_name("");
        fleet_.add_option("--name", line_.fleet.name, "the devices are called NAME-1, NAME-2 and so on")
            ->type_name("NAME");
        fleet_.add_option("--console", line_.fleet.console, "the console's program, not the one beside r47-sim")
            ->type_name("PATH");
        fleet_.add_flag("--usage", line_.fleet.usage, "tells memory and processor of each device at the end");
        add_start_options(fleet_, fleet_start_);
        add_panel_options(panel_, line_.panel);
        for (CLI::App* const task : {&run_, &fleet_, &device_, &panel_}) {
            task->allow_extras();
        }
        describe(app_, kUsage);
        describe(run_, "usage: r47-sim run [OPTION...] -- COMMAND [ARG...]\n");
        describe(fleet_, "usage: r47-sim fleet N [OPTION...] -- COMMAND [ARG...]\n");
        describe(device_, "usage: r47-sim device [OPTION...]\n");
        describe(list_, "usage: r47-sim list\n");
        describe(panel_, "usage: r47-sim panel [OPTION...]\n");
        std::string commands = "Control commands:\n" + device_commands().help();
        commands.pop_back();  // the library ends it itself
        app_.footer(commands);
    }

    CommandLine read() {
        if (words_.empty()) {
            std::fputs(whole_help().c_str(), stderr);
            return ended(kNotUnderstood);
        }
        Texts words = words_;
        take_command(words);
        std::reverse(words.begin(), words.end());  // as the library wants them
        try {
            app_.parse(words);
        } catch (CLI::CallForHelp const&) {
            return say(app_.get_subcommands().empty() ? whole_help() : app_.help());
        } catch (CLI::CallForVersion const& version) {
            return say(std::string(version.what()) + "\n");
        } catch (CLI::ParseError const& error) {
            return refuse(error.what());
        }
        return take();
    }

private:
    static void add_device_options(CLI::App& app, DeviceOptions& options) {
        app.add_option("--name", options.name, "of the device; with a slash, its directory")->type_name("NAME");
        app.add_option("--journal", options.journal, "writes a line for each call of the library")->type_name("FILE");
        app.add_flag("--json-journal", options.journal_as_json, "the lines as JSON");
        add_start_options(app, options);
    }

    // Those that several devices may have alike.
    static void add_start_options(CLI::App& app, DeviceOptions& options) {
        app.add_option("--without", options.without, "leaves this file of the device out; may be repeated")
            ->type_name("PATH")
            ->allow_extra_args(false);
        app.add_option("--scenario", options.scenario, "commands that the device carries out by itself")
            ->type_name("FILE");
        auto const set_clock = [&options](Texts const& words) { options.clock = join_words(words); };
        app.add_option_function<Texts>("--clock", set_clock, "how time passes: real, scaled FACTOR or stepped")
            ->type_name("SETTING")
            ->expected(1, 2);
    }

    // What stands behind -- is the command of run or fleet, whatever it looks like.
    void take_command(Texts& words) {
        auto const mark = std::find(words.begin(), words.end(), "--");
        bool const is_run = words.front() == "run";
        if ((is_run || words.front() == "fleet") && mark != words.end()) {
            (is_run ? line_.run.sandbox.command : line_.fleet.command).assign(mark + 1, words.end());
            words.erase(mark, words.end());
        }
    }

    CommandLine take() {
        for (CLI::App* const task : {&run_, &fleet_, &device_, &panel_}) {
            if (task->parsed() && task->remaining_size() > 0) {
                return refuse(unknown_option(*task, task->remaining().front()));
            }
        }
        bool const has_control_options = !line_.control.device.empty() || !timeout_.empty();
        if (!app_.get_subcommands().empty() && has_control_options) {
            return refuse("--device and --timeout in front are for control commands");
        }
        if (run_.parsed()) {
            return take_run();
        }
        if (fleet_.parsed()) {
            return take_fleet();
        }
        if (!app_.get_subcommands().empty()) {
            line_.task = device_.parsed() ? Task::device : list_.parsed() ? Task::list : Task::panel;
            return line_;
        }
        return take_control();
    }

    CommandLine take_run() {
        auto const options = device_.get_options();
        bool const has_own =
            line_.run.require_faults || std::any_of(options.begin(), options.end(), [this](CLI::Option const* option) {
                return run_.count(option->get_name()) > 0;
            });
        if (!port_.empty()) {
            PublishedAt& published = line_.run.published;
            std::size_t const colon = port_.rfind(':');
            if (colon != std::string::npos) {
                published.address = port_.substr(0, colon);
            }
            published.port = parse_integer_as<std::uint16_t>(port_.substr(colon + 1)).value_or(0);
            in_addr address{};
            if (published.port == 0) {
                return refuse("bad port " + port_ + ": 1 to 65535");
            }
            if (::inet_pton(AF_INET, published.address.c_str(), &address) != 1 ||
                published.address.compare(0, 4, "127.") != 0) {
                return refuse("bad address " + published.address + ": 127.0.0.1 or another of this host alone");
            }
        }
        if (!line_.run.device.empty() && has_own) {
            return refuse("--device names a device that runs already: it takes no options of a device's start");
        }
        if (line_.run.sandbox.command.empty()) {
            return refuse(kNoCommand);
        }
        line_.task = Task::run;
        return line_;
    }

    CommandLine take_fleet() {
        line_.fleet.count = parse_integer_as<int>(fleet_size_).value_or(0);
        if (line_.fleet.count < 1 || line_.fleet.count > kLargestFleet) {
            return refuse("bad number of devices " + fleet_size_ + ": 1 to " + std::to_string(kLargestFleet));
        }
        if (line_.fleet.command.empty()) {
            return refuse("no command given: r47-sim fleet N [OPTION...] -- COMMAND [ARG...]");
        }
        Error const error = check(fleet_start_);
        if (!error.empty()) {
            return refuse(error);
        }
        Texts& member = line_.fleet.member;
        for (std::string const& path : fleet_start_.without) {
            member.insert(member.end(), {"--without", path});
        }
        if (!fleet_start_.scenario.empty()) {
            member.insert(member.end(), {"--scenario", fleet_start_.scenario});
        }
        if (!fleet_start_.clock.empty()) {
            member.push_back("--clock");
            Words words;
            split_words(fleet_start_.clock, words);
            member.insert(member.end(), words.begin(), words.end());
        }
        line_.task = Task::fleet;
        return line_;
    }

    CommandLine take_control() {
        line_.control.command = app_.remaining();
        Texts const& command = line_.control.command;
        if (command.empty()) {
            return refuse("no command given: try r47-sim help");
        }
        if (command.front().compare(0, 1, "-") == 0 && command.front() != "-") {
            return refuse(unknown_option(app_, command.front()));
        }
        if (command.size() > 1 && command[0] == "journal" && (command[1] == "show" || command[1] == "diff")) {
            return take_journal({command.begin() + 1, command.end()});
        }
        if (command.front() == "help") {
            return help_of({command.begin() + 1, command.end()});
        }
        if (command.front() != "-" && !device_commands().has(command.front())) {
            return ended(fail(kRefused, device_commands().unknown(command.front(), kOwnCommands).text));
        }
        if (command.size() == 2 && asks_for_help(command[1])) {
            return help_of({command.front()});
        }
        if (!timeout_.empty()) {
            line_.control.timeout = parse_duration(timeout_);
            if (!line_.control.timeout) {
                return refuse(duration_error(timeout_).text);
            }
        }
        line_.task = Task::control;
        return line_;
    }

    // Of files: no device is asked.
    CommandLine take_journal(Texts words) {
        CLI::App app;
        CLI::App& show = *app.add_subcommand("show", "prints the journal in a file, - for standard input");
        describe(show, "usage: r47-sim journal show [OPTION...] FILE\n");
        show.add_option("FILE", line_.journals, "lines of text or of JSON")->required()->expected(1);
        show.add_option("--kind", line_.filter.kind,
                        "lines of this kind alone: call, callback, command, program or lost")
            ->type_name("KIND");
        show.add_option("--program", line_.filter.program, "lines of this program alone")->type_name("NAME.NUMBER");
        show.add_option("--text", line_.filter.text,
                        "lines with this in their text, or that a pattern with * describes")
            ->type_name("PATTERN");
        show.add_flag("--failed", line_.filter.failed, "what failed alone");
        CLI::App& diff =
            *app.add_subcommand("diff", "prints what differs between two journals; their numbers do not count");
        describe(diff, "usage: r47-sim journal diff [OPTION...] FILE FILE\n");
        diff.add_option("FILE", line_.journals, "lines of text or of JSON")->required()->expected(2);
        diff.add_flag("--times", line_.with_times, "times count, too");
        std::reverse(words.begin(), words.end());
        try {
            app.parse(words);
        } catch (CLI::CallForHelp const&) {
            return say(app.help());
        } catch (CLI::ParseError const& error) {
            return refuse(error.what());
        }
        line_.task = show.parsed() ? Task::show_journal : Task::diff_journals;
        return line_;
    }

    // Of one of this program's own commands or of a control command.
    CommandLine help_of(Texts const& words) {
        if (words.empty()) {
            return say(whole_help());
        }
        for (CLI::App const* const task : {&run_, &fleet_, &device_, &list_, &panel_}) {
            if (words == Texts{task->get_name()}) {
                return say(task->help("r47-sim"));
            }
        }
        Reply const reply = device_commands().help(words.front(), kOwnCommands);
        return reply.ok ? say(reply.text) : refuse(reply.text);
    }

    std::string whole_help() const { return app_.help("", CLI::AppFormatMode::All); }

    static CommandLine ended(int status) {
        CommandLine line;
        line.status = status;
        return line;
    }

    static CommandLine refuse(std::string const& message) { return ended(fail(kNotUnderstood, message)); }

    static CommandLine say(std::string const& text) {
        std::fputs(text.c_str(), stdout);
        return ended(0);
    }

    Texts const& words_;
    CommandLine line_;
    std::string timeout_;
    std::string port_;
    std::string fleet_size_;
    DeviceOptions fleet_start_;
    CLI::App app_{"Runs programs inside the virtual device, and controls devices that run.", "r47-sim"};
    CLI::App& run_ = *app_.add_subcommand("run", "runs COMMAND in a device of its own, which ends with it");
    CLI::App& fleet_ = *app_.add_subcommand("fleet", "runs COMMAND in the midst of N devices with consoles that serve");
    CLI::App& device_ = *app_.add_subcommand("device", "runs a device until SIGINT, SIGTERM or SIGHUP ends it");
    CLI::App& list_ = *app_.add_subcommand("list", "the devices that run, and their programs");
    CLI::App& panel_ = *app_.add_subcommand("panel", "shows a device to a browser, and prints the address");
};

}  // namespace

CommandLine read_command_line(std::vector<std::string> const& words) {
    return Reader(words).read();
}

}  // namespace sim
