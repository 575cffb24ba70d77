// A transcript: what is typed at the console, and all that comes of it.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tests/support/console_session.h"

namespace support {

// Types the text, which makes the console end by itself with status 0, and compares the whole of its output, its
// library calls and its standard error.
inline void expect_transcript(SessionOptions const& options, std::string const& typed, std::string const& output,
                              Calls const& calls, std::string const& errors = "") {
    auto const run = run_console(typed, options);
    EXPECT_EQ(run.output, output);
    EXPECT_EQ(run.calls, calls);
    EXPECT_EQ(run.errors, errors);
    EXPECT_EQ(run.status, 0);
}

}  // namespace support
