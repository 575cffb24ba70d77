// Standard output: what becomes of the text that the console prints.
#include "app/standard_output.h"

#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <streambuf>

namespace {

// Passes everything on to the C library's stream, which has the lock and the buffer, whatever becomes of it there.
class output_without_failure : public std::streambuf {
protected:
    int_type overflow(int_type c) override {
        if (c != traits_type::eof()) {
            std::putc(c, stdout);
        }
        return traits_type::not_eof(c);
    }

    std::streamsize xsputn(char const* text, std::streamsize size) override {
        std::fwrite(text, 1, static_cast<std::size_t>(size), stdout);
        return size;
    }

    int sync() override {
        std::fflush(stdout);
        return 0;
    }
};

}  // namespace

void set_up_standard_output() {
    // Both must outlive everything that prints, at the end of the process too.
    static char buffer[1 << 16];  // larger than any screen
    static auto* const output = new output_without_failure;
    std::setvbuf(stdout, buffer, ::isatty(STDOUT_FILENO) ? _IOLBF : _IOFBF, sizeof buffer);
    std::cout.rdbuf(output);
}
