// What each command of the console asks, calls and says, written once more for the fault sweep.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/support/menus.h"

namespace proof {

// A script tells one command from its start to its end. All of it is text that the console prints, but for:
//
//   @name            the operator types a number or a word
//   ^name            a number through console I/O: in socket mode the client sends it and gets it back
//   <op(args) names> the call; what its out-arguments received goes to the names field by field, its status to `status`
//   {cond?yes|no}    one of two scripts; `cond` compares, as in status=0, key>1; none: the last call answered 0
//   $name, $(name)   the value; $?name as a truth value
//   &name            an item of the reply to the client, $& sends the reply
//   %(name=text)     gives the name a value
//   %report          what the library prints for the info calls before; nothing where all of them failed
//   %error           a line on standard error with the errno of the last call
//   %files           puts the device check's code into `code`, and the image sensor whose node is there into `sensor`
//   %leave           there is no menu
//   %number          puts the number of the `pins` into `number`
//   %grid            the distances of a shot in `all`, whose resolution is in `zones`
//
// {} is nothing, and ends a name before a letter. Where a call answers no results its names keep their values. Names in
// lower case are 0 when a command starts, those in upper case live as long as the console.
using Script = std::string;

struct Dialogue {
    menus::Menu const* menu;  // its screens, keys and traits
    Script opening;           // from the key that leads to it to its first screen
    Script closing;           // behind the echo of 'x'
    std::map<char, Script> commands{};
    Script otherwise{};  // the answer to any other key, which is in `key`
    // What its callbacks call, each one of the texts or nothing where "" is among them.
    std::map<std::string, std::vector<std::string>> callbacks{};
    // What they print as often as they make a call.
    std::map<std::string, std::string> announcements{};
};

std::vector<Dialogue> const& dialogues();

// The whole of a run that starts in this function (SessionOptions::entry_point) and shows no menu.
std::map<std::string, Script> const& entry_point_scripts();

}  // namespace proof
