// What becomes of a command whose question gets no answer.
#pragma once

// Thrown by the reads of numbers and words, and by what asks for them, where the answer will never come, so that
// nothing invented is written to hardware. Text that does not convert is an answer.
struct no_answer {};

// Runs one command of a menu. Where a question of it gets no answer the command ends there; what it did before stays
// done, and the menu goes on.
template <typename Command>
void run_command(Command const& command) {
    try {
        command();
    } catch (no_answer const&) {  // ended the command and concerns nobody else
    }
}
