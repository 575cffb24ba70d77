// Tests of the prompts for one setting.
#include "app/value_prompts.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace {

std::string printed_by_get(int status, unsigned int value) {
    testing::internal::CaptureStdout();
    sensor_get(
        [&](unsigned int& read) {
            read = value;
            return status;
        },
        "gain");
    return testing::internal::GetCapturedStdout();
}

TEST(ValuePromptsTest, ValueIsPrinted) {
    EXPECT_EQ(printed_by_get(0, 42), "sensor actual gain: 42\n");
}

TEST(ValuePromptsTest, LargeValueIsPrintedUnsigned) {
    EXPECT_EQ(printed_by_get(0, 4294967295U), "sensor actual gain: 4294967295\n");
}

TEST(ValuePromptsTest, FailedReadPrintsNoValue) {
    EXPECT_EQ(printed_by_get(3, 42), "sensor error to get gain\n");
}

TEST(ValuePromptsTest, NegativeStatusIsAFailureToo) {
    EXPECT_EQ(printed_by_get(-1, 42), "sensor error to get gain\n");
}

TEST(ValuePromptsTest, EmptyAccessorThrows) {
    EXPECT_THROW(sensor_get({}, "gain"), std::bad_function_call);
}

}  // namespace
