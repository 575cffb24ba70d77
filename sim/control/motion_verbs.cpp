// The verbs that move the device and press its button.
#include "sim/control/verbs.h"
#include "sim/core/numbers.h"

namespace sim {

namespace {

char const* const kTiltUsage = "tilt YAW PITCH ROLL [over DURATION]";
char const* const kPressUsage = "press DURATION";
char const* const kButtonUsage = "button down\nbutton up";

std::string both_ways(double most) {
    return number_text(-most) + " to " + number_text(most);
}

Reply tilt(Caller const& caller, Words const& words) {
    bool const turns = words.size() == 5 && words[3] == "over";
    if (words.size() != 3 && !turns) {
        return usage_error(kTiltUsage);
    }
    auto const yaw = parse_float(words[0]);
    auto const pitch = parse_float(words[1]);
    auto const roll = parse_float(words[2]);
    if (!yaw || !pitch || !roll) {
        return Reply::error("bad angle: degrees as 20 or -7.5");
    }
    auto const over = turns ? parse_duration(words[4]) : Duration(0);
    if (!over) {
        return duration_error(words[4]);
    }
    Device& device = caller.device;
    if (!device.hub.tilt({*yaw, *pitch, *roll}, device.now(), *over)) {
        return Reply::error("angle out of range: yaw and roll " + both_ways(Orientation::kMostTurn) + ", pitch " +
                            both_ways(Orientation::kMostPitch));
    }
    return Reply::done();
}

Reply press(Caller const& caller, Words const& words) {
    if (words.size() != 1) {
        return usage_error(kPressUsage);
    }
    auto const length = parse_duration(words.front());
    if (!length) {
        return duration_error(words.front());
    }
    return caller.device.presses.press_for(*length) ? Reply::done() : Reply::error("the button is pressed already");
}

Reply button(Caller const& caller, Words const& words) {
    if (words == Words{"down"}) {
        return caller.device.presses.press() ? Reply::done() : Reply::error("the button is pressed already");
    }
    if (words == Words{"up"}) {
        return caller.device.presses.release() ? Reply::done() : Reply::error("the button is not pressed");
    }
    return usage_error(kButtonUsage);
}

}  // namespace

void add_motion_verbs(Commands& commands) {
    commands.add({"tilt", kTiltUsage, "tilts the device, in degrees: at once, or turning over a time", tilt});
    commands.add({"press", kPressUsage, "presses the button and releases it after the time; does not wait", press});
    commands.add({"button", kButtonUsage, "presses the button or releases it", button});
}

}  // namespace sim
