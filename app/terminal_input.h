// Standard input: every character and number that is typed at the terminal is read here.
#pragma once

#include <string>

// Each read flushes standard output, then blocks until the typed text answers it.
//
// Three things besides text can come: Ctrl-D on a terminal, which costs one redisplay and no more; the end of an
// input that is not a terminal; and, in socket mode, the end of the client's connection, which ends the input of
// the menus that the client is in. What each read then leaves in its argument is said below.

// What a component menu presets its option to, so that the end of input leaves the menu as this key does.
constexpr char kExitKey = 'x';

// One option character: white space is skipped, the rest of the line stays for the next reads.
// Ctrl-D makes it NUL. At the end of input it keeps its value, after a wait of 20 ms, so that a menu which
// is shown again without end does not spin.
void read_option(char& option);

// One decimal number; white space before it is skipped. Where the text is no number of this type the value stays
// as it was and the rest of the line is dropped, so that a mistyped number is never taken for options. Ctrl-D and
// the end of input leave the value as well. A negative number wraps into the unsigned type.
void read_number(int& value);
void read_number(unsigned int& value);
void read_number(float& value);

// One word, up to the next white space. Ctrl-D and the end of input leave it empty.
void read_word(std::string& word);

// For socket mode, where two threads read the terminal: the client's menu that reads it first keeps it until
// release_terminal(), and the local menu waits its turn, so that both never share one typed line.

// As read_option, but only while no menu has the terminal. False at the end of input.
bool read_local_option(char& option);

// Gives the terminal back to the local menu.
void release_terminal();

// From now on the reads of the menus end as soon as the peer of this connected socket has gone. -1: of none.
void watch_connection(int descriptor);
