// Presence test of the files that the component menus depend on.
#pragma once

// Tries to open each of them for reading and reports one number, on standard output and to the client, in which
// each bit names what is missing (the bits: docs/line-protocol.md). 0: all are there.
void check_devices();
