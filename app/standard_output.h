// Standard output: what becomes of the text that the console prints.
#pragma once

// To be called before anything is printed. From then on
// - a screen leaves as one write, where nothing flushes it before it ends; at a terminal each line does, so that
//   those of the library's threads do not wait for the next prompt;
// - text that cannot be written (a full disk, a closed terminal) is lost, and later text is tried again: std::cout
//   never fails, so that its threads have no state of it to share.
void set_up_standard_output();
