// The digital I/O menu: configuration and values of the six pins, and the light bar.
#pragma once

// Runs the menu. Options and numbers come through console I/O. Its real-time unit object is opened on the first
// entry and closed at process exit. Returns 0 on its exit key; key '0' ends the process.
int test_dio();

// Asks for a pin, prints its configuration and sends it to the client. Where the library fails, what is printed and
// sent is a new record's contents. Throws no_answer.
void read_dio_config();
