// Tests of the table of operations.
#include "sim/calls/operations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

namespace {

using sim::info_of;
using sim::kOperationInfos;
using sim::OperationId;
using sim::OperationKind;

TEST(OperationsTest, EachHasAPlaceAndANameOfItsOwn) {
    std::set<std::string_view> names;
    for (auto const& info : kOperationInfos) {
        EXPECT_TRUE(names.insert(info.name).second) << info.name;
        EXPECT_NE(info.name.find("_t::"), std::string_view::npos) << info.name;
    }
    EXPECT_EQ(names.size(), sim::kOperations);
}

TEST(OperationsTest, TheirPlaceIsThatOfTheirType) {
    std::size_t place = 0;
#define EXPECT_PLACE(type)                                 \
    EXPECT_EQ(static_cast<std::size_t>(type::kId), place); \
    EXPECT_EQ(kOperationInfos[place].name, type::kName);   \
    EXPECT_EQ(kOperationInfos[place].kind, type::kKind);   \
    ++place;
#define CONSTRUCTOR(class_name, arguments) EXPECT_PLACE(sim::operations::class_name::constructor)
#define DESTRUCTOR(class_name) EXPECT_PLACE(sim::operations::class_name::destructor)
#define OPERATION(class_name, operation, result, arguments, results) \
    EXPECT_PLACE(sim::operations::class_name::operation)
#include "sim/calls/operation_table.def"
#undef CONSTRUCTOR
#undef DESTRUCTOR
#undef OPERATION
#undef EXPECT_PLACE
    EXPECT_EQ(place, sim::kOperations);
}

TEST(OperationsTest, AreNamedAsInTheProgram) {
    EXPECT_EQ(info_of(OperationId::rtu_t_constructor).name, "rtu_t::rtu_t");
    EXPECT_EQ(info_of(OperationId::rtu_t_destructor).name, "rtu_t::~rtu_t");
    EXPECT_EQ(info_of(OperationId::rtu_t_set_exposure).name, "rtu_t::set_exposure");
}

TEST(OperationsTest, TellWhatARuleCanAnswer) {
    struct Expected {
        OperationId id;
        OperationKind kind;
        bool status;
        std::size_t values;
    };
    for (Expected const& expected : {
             Expected{OperationId::rtu_t_constructor, OperationKind::constructor, false, 0},
             {OperationId::rtu_t_destructor, OperationKind::destructor, false, 0},
             {OperationId::rtu_t_get_exposure, OperationKind::method, true, 1},
             {OperationId::rtu_t_set_exposure, OperationKind::method, true, 0},
             {OperationId::camera_t_determine_imxtype, OperationKind::method, false, 1},
             {OperationId::autofocus_t_is_present, OperationKind::method, false, 1},
             {OperationId::gyro_t_info_firmware, OperationKind::method, true, 0},  // a report is no value
             {OperationId::rtu_t_get_revision, OperationKind::method, true, 6},
             {OperationId::rtu_t_get_io_pin_config, OperationKind::method, true, 16},  // six of them the lines
         }) {
        auto const& info = info_of(expected.id);
        EXPECT_EQ(info.kind, expected.kind) << info.name;
        EXPECT_EQ(info.answers_status, expected.status) << info.name;
        EXPECT_EQ(info.values, expected.values) << info.name;
    }
}

// The version must not say "the same" of two tables that are not.
TEST(OperationsTest, VersionDependsOnEveryCharacterOfTheTable) {
    using sim::version_of;
    auto const whole = version_of({"a(Text, int)", "~a", "a::get int()(unsigned int)"});
    EXPECT_EQ(version_of({"a(Text, int)", "~a", "a::get int()(unsigned int)"}), whole);
    EXPECT_NE(version_of({"~a", "a(Text, int)", "a::get int()(unsigned int)"}), whole) << "another order";
    EXPECT_NE(version_of({"a(Text, int)", "~a"}), whole) << "one less";
    EXPECT_NE(version_of({"a(Text, int)", "~a", "a::get int()(int)"}), whole) << "another type";
    EXPECT_NE(version_of({"a(Text, int)", "~", "aa::get int()(unsigned int)"}), whole) << "the same in other lines";
    EXPECT_NE(sim::table_version(), version_of({}));
}

}  // namespace
