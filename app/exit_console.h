// The end of the whole console from within a component menu.
#pragma once

// What key '0' of the menus with module information does: says goodbye and ends the process with status 0. Objects of
// the menu are not destroyed.
[[noreturn]] void exit_console();
