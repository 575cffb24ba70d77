// Tests of the module information commands, on modules made for the purpose.
#include "app/module_information.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <iostream>
#include <string>
#include <utility>

#include "hal/illumination.h"
#include "hal/rtu.h"
#include "menus/imaging/sensor_classes.h"

namespace {

// A module of the given class that answers as told, without a device.
template <typename Base>
class Answering : public Base {
public:
    template <typename... Arguments>
    explicit Answering(int result, Arguments... arguments) : Base(arguments...), result_(result) {}

    int get_status(unsigned char& status) const override {
        status = 77;
        errno = ENODEV;
        return result_;
    }

    int get_revision(hal::revision_t& revision) const override {
        revision = {1, 6, 0, 2, 22, 14};
        errno = ENODEV;
        return result_;
    }

private:
    int result_;
};

template <typename Command>
std::pair<std::string, std::string> printed_by(Command command, hal::base_t* module) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_EQ(command(module), 0);
    std::string const errors = testing::internal::GetCapturedStderr();
    return {testing::internal::GetCapturedStdout(), errors};
}

std::string const kNumbers = "\nMajor \t1,\nMinor \t6,\nWeek \t14,\nYear \t22,\nNum \t2,\nPatch \t0,\n Done!\n";
std::string const kPerror = "Failed read rev\n: No such device\n";

TEST(ModuleInformationTest, FailureIsTheModulesWhateverBecomesOfTheOutput) {
    Answering<hal::rtu_t> module(-1, "/dev/none", 2);  // the library says that there is no device
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    int const captured = ::dup(STDOUT_FILENO);
    int const full = ::open("/dev/full", O_WRONLY);
    ::dup2(full, STDOUT_FILENO);
    get_status(&module);
    ::dup2(captured, STDOUT_FILENO);
    ::close(full);
    ::close(captured);
    std::cout.clear();
    std::string const errors = testing::internal::GetCapturedStderr();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(errors, kPerror);
}

TEST(ModuleInformationTest, UsageOffersFourKeys) {
    testing::internal::CaptureStdout();
    top_usage();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "\n\n\nPlease Enter the Option******\n\t 1. Get Status            \n\t 2. Get Revision          \n"
              "\t 3. Get Serial Number     \n\t 0. Exit                  \n\n\n");
}

TEST(ModuleInformationTest, StatusIsReadButNotPrinted) {
    Answering<hal::rtu_t> rtu(0, "/dev/none", 2);
    EXPECT_EQ(printed_by(get_status, &rtu),
              std::make_pair(std::string("Status of the Module: \tDone!\n"), std::string()));
}

TEST(ModuleInformationTest, PositiveStatusResultIsNoFailure) {
    Answering<hal::rtu_t> rtu(5, "/dev/none", 2);
    EXPECT_EQ(printed_by(get_status, &rtu).first, "Status of the Module: \tDone!\n");
}

TEST(ModuleInformationTest, FailedStatusIsReportedWithTheTextOfTheRevision) {
    Answering<hal::rtu_t> rtu(-1, "/dev/none", 2);
    EXPECT_EQ(printed_by(get_status, &rtu), std::make_pair(std::string("Status of the Module: \t"), kPerror));
}

TEST(ModuleInformationTest, RevisionNamesTheModuleByItsClass) {
    Answering<hal::rtu_t> rtu(0, "/dev/none", 2);
    Answering<hal::illumination_t> illumination(0, "/dev/none", 2);
    Answering<hal::imx296_t> imx296(0);
    Answering<hal::imx567_t> imx567(0);
    Answering<hal::base_t> other(0, "/dev/none", 2);
    std::string const head = "Revision of the Module: \t";
    EXPECT_EQ(printed_by(get_revision, &rtu).first, head + "The RTU driver: \n" + kNumbers);
    EXPECT_EQ(printed_by(get_revision, &illumination).first, head + "The Illumination driver: \n" + kNumbers);
    EXPECT_EQ(printed_by(get_revision, &imx296).first, head + "The IMX296 driver: \n" + kNumbers);
    EXPECT_EQ(printed_by(get_revision, &imx567).first, head + "The IMX567 driver: \n" + kNumbers);
    EXPECT_EQ(printed_by(get_revision, &other).first, head + kNumbers);
}

TEST(ModuleInformationTest, PositiveRevisionResultIsNoFailure) {
    Answering<hal::rtu_t> rtu(1, "/dev/none", 2);
    EXPECT_EQ(printed_by(get_revision, &rtu).first, "Revision of the Module: \tThe RTU driver: \n" + kNumbers);
}

TEST(ModuleInformationTest, FailedRevisionPrintsNoNumbers) {
    Answering<hal::rtu_t> rtu(-1, "/dev/none", 2);
    EXPECT_EQ(printed_by(get_revision, &rtu), std::make_pair(std::string("Revision of the Module: \t"), kPerror));
}

TEST(ModuleInformationTest, SerialNumberPrintsNothing) {
    Answering<hal::rtu_t> rtu(0, "/dev/none", 2);
    testing::internal::CaptureStdout();
    EXPECT_EQ(get_serial_number(&rtu), -1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(ModuleInformationTest, EachOfItsKeysActsAndOthersDoNot) {
    Answering<hal::rtu_t> module(0, "/dev/none", 2);
    auto const printed_of = [&](char key, bool is_ours) {
        return printed_by([&](hal::base_t* it) { return run_module_option(key, it) == is_ours ? 0 : -1; }, &module)
            .first;
    };
    EXPECT_EQ(printed_of('1', true), "Status of the Module: \tDone!\n");
    EXPECT_EQ(printed_of('2', true).substr(0, 24), "Revision of the Module: ");
    EXPECT_EQ(printed_of('3', true), "");
    EXPECT_EQ(printed_of('4', false), "");
}

TEST(ModuleInformationDeathTest, ExitKeySaysGoodByeAndEndsTheProcess) {
    EXPECT_EXIT(
        {
            std::fflush(stdout);
            ::dup2(STDERR_FILENO, STDOUT_FILENO);
            run_module_option('0', nullptr);
        },
        testing::ExitedWithCode(0), "\n\033\\[0mGood Bye\n");
}

}  // namespace
