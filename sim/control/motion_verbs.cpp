// The verbs that move the device and press its button.
#include "sim/control/verbs.h"
#include "sim/core/numbers.h"

namespace sim {

namespace {

char const* const kTiltUsage = "tilt YAW PITCH ROLL [over DURATION]";
char const* const kPressUsage = "press DURATION [bounce DURATION]";
char const* const kButtonUsage = "button down\nbutton up";

std::string both_ways(double most) {
    return number_text(-most) + " to " + number_text(most);
}

Reply tilt(Device::Access& device, Words const& words) {
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
    if (!device->hub.tilt({*yaw, *pitch, *roll}, device.now(), *over)) {
        return Reply::error("angle out of range: yaw and roll " + both_ways(Orientation::kMostTurn) + ", pitch " +
                            both_ways(Orientation::kMostPitch));
    }
    return Reply::done();
}

Reply press(Device::Access& device, Words const& words) {
    bool const bounces = words.size() == 3 && words[1] == "bounce";
    if (words.size() != 1 && !bounces) {
        return usage_error(kPressUsage);
    }
    auto const length = parse_duration(words.front());
    if (!length) {
        return duration_error(words.front());
    }
    auto const bounce = bounces ? parse_duration(words[2]) : Duration(0);
    if (!bounce) {
        return duration_error(words[2]);
    }
    if (bounces && *length <= 2 * *bounce) {
        return Reply::error("the press is too short for that bounce: more than twice it");
    }
    return device->presses.press_for(device.now(), *length, *bounce) ? Reply::done()
                                                                     : Reply::error("the button is pressed already");
}

Reply button(Device::Access& device, Words const& words) {
    if (words == Words{"down"}) {
        return device->presses.press(device.now()) ? Reply::done() : Reply::error("the button is pressed already");
    }
    if (words == Words{"up"}) {
        return device->presses.release(device.now()) ? Reply::done() : Reply::error("the button is not pressed");
    }
    return usage_error(kButtonUsage);
}

}  // namespace

void add_motion_verbs(Commands& commands) {
    commands.add({"tilt",
                  kTiltUsage,
                  "tilts the device, in degrees: at once, or turning over a time",
                  tilt,
                  {},
                  false,
                  "Yaw and roll -360 to 360, pitch -90 to 90; it turns evenly on the shortest way.\nExample: tilt 0 20 "
                  "0 over 3s"});
    commands.add({"press",
                  kPressUsage,
                  "presses the button and releases it after the time; its contact may bounce; does not wait",
                  press,
                  {},
                  false,
                  "A bounce goes back and there again on press and release, each for its time; the\npress must last "
                  "more than twice that. Example: press 5s"});
    commands.add({"button",
                  kButtonUsage,
                  "presses the button or releases it",
                  button,
                  {},
                  false,
                  "What it makes can be told only when it is released."});
}

}  // namespace sim
