// Standard input: every option, number and word that is typed at the terminal is read here.
#pragma once

#include <string>

// Each read flushes standard output, then blocks until the typed text answers it.
//
// Three things besides text can come: Ctrl-D on a terminal, which costs one redisplay and no more; the end of an
// input that is not a terminal; and, in socket mode, the end of the client's connection, which ends the input of
// the menus that the client is in. None of them is an answer: an option has a value for each, a number or a word throws
// no_answer (app/no_answer.h).

// What a component menu presets its option to, so that the end of input leaves the menu as this key does.
constexpr char kExitKey = 'x';

// One option character: white space is skipped, the rest of the line stays for the next reads.
// Ctrl-D makes it NUL. At the end of input it keeps its value, after a wait of 20 ms, so that a menu which
// is shown again without end does not spin.
void read_option(char& option);

// One decimal number; white space before it is skipped, and what follows it on the line stays for the next reads. Where
// the text is no number of this type the value stays as it was and the rest of the line is dropped, so that a mistyped
// number is never taken for options. A negative number wraps into the unsigned type. Text that the input's end cuts off
// is an answer, text that the client's end cuts off is none.
void read_number(int& value);
void read_number(unsigned int& value);
void read_number(float& value);

// As read_number, of what scanf("%f") takes: hexadecimal, "inf" and "nan" too. A number that is too large is infinite.
void read_scanned_number(float& value);

// One word, up to the next white space.
void read_word(std::string& word);

// For socket mode, where two threads read the terminal: a menu that reads it takes it and keeps it until
// release_terminal(), and the local menu waits its turn. Each goes on where the other stopped, in a line too.

// As read_option, but only while no menu has the terminal. False at the end of input.
bool read_local_option(char& option);

// Gives the terminal back to the local menu.
void release_terminal();

// For a menu that waits for its client: blocks until the descriptor can be read or has ended. While the menu has the
// terminal it keeps what is typed there for its next reads, and Ctrl-D throws no_answer.
void wait_for_client(int descriptor);

// From now on the reads of the menus end as soon as the peer of this connected socket has gone. -1: of none.
void watch_connection(int descriptor);
