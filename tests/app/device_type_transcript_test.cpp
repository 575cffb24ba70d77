// Transcripts of the device type detection.
#include <gtest/gtest.h>

#include "tests/support/console_session.h"

namespace {

constexpr char const* kAutofocus = "/dev/r47-autofocus-driver";
constexpr char const* kIllumination = "/dev/r47-illumination-driver";
constexpr char const* kRtu = "/dev/r47-rtu-driver";

std::string printed_without(std::string const& entry_point, std::vector<std::string> const& paths) {
    support::SessionOptions options;
    options.entry_point = entry_point;
    options.without = paths;
    return support::run_console("", options).output;
}

TEST(DeviceTypeTest, AnyOneOfTheDriversMakesAnR47) {
    for (auto const& missing : std::vector<std::vector<std::string>>{
             {}, {kAutofocus, kIllumination}, {kAutofocus, kRtu}, {kIllumination, kRtu}}) {
        EXPECT_EQ(printed_without("device_type", missing), "Detected device R47\ntype 0\n");
        EXPECT_EQ(printed_without("button_irq_line", missing), "Detected device R47\nline 82\n");
    }
}

TEST(DeviceTypeTest, WithoutDriversItIsTheOtherVariant) {
    EXPECT_EQ(printed_without("device_type", {kAutofocus, kIllumination, kRtu}), "\ntype 1\n");
    EXPECT_EQ(printed_without("button_irq_line", {kAutofocus, kIllumination, kRtu}), "\nline 44\n");
}

TEST(DeviceTypeTest, UnreadableNodesCountAsAbsent) {
    if (!support::has_forbidden_files()) {
        GTEST_SKIP() << "proot gives a user all his own files";
    }
    support::SessionOptions options;
    options.entry_point = "button_irq_line";
    options.script = "chmod 000 /dev/r47-*; exec \"$@\"";
    EXPECT_EQ(support::run_console("", options).output, "\nline 44\n");
}

}  // namespace
