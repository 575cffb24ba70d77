// Puts another libhal.so.2, written from the headers in hal/ alone, in the place of ours, without a rebuild.
#include <gtest/gtest.h>

#include "tests/support/console_session.h"
#include "tests/support/screens/imaging.h"

namespace {

using namespace screens;

// The other library answers every call with success and zeros.
TEST(SecondLibraryTest, LibraryPathPutsItInPlace) {
    auto const run =
        support::run_console("bE2xx", support::in_shell("LD_LIBRARY_PATH='" R47_SECOND_LIBRARY "' exec \"$@\""));
    EXPECT_EQ(run.output,
              visit('b', kRtuStart + rtu_menu('E') + "sensor actual exposure: 0\n" + rtu_menu('2') +
                             "Revision of the Module: \tThe RTU driver: \n\nMajor \t0,\nMinor \t0,\nWeek \t0,\n"
                             "Year \t0,\nNum \t0,\nPatch \t0,\n Done!\n" +
                             rtu_menu('x')));
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.calls, support::Calls{});
}

TEST(SecondLibraryTest, WithoutItOursIsFoundBesideTheConsole) {
    auto const run = support::run_console("bExx");
    EXPECT_EQ(run.output, visit('b', kRtuStart + rtu_menu('E') + "sensor actual exposure: 10000\n" + rtu_menu('x')));
}

}  // namespace
