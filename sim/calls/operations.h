// The operations of the library as types: what one end encodes, the other end decodes, and all else is derived from.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>

#include "hal/camera.h"
#include "hal/imx.h"
#include "hal/rtu_delegate.h"
#include "hal/system.h"
#include "hal/tof.h"
#include "sim/calls/argument_types.h"
#include "sim/calls/records.h"

namespace sim {

// The place of an operation in the table.
enum class OperationId : std::uint16_t {
#define CONSTRUCTOR(class_name, arguments) class_name##_constructor,
#define DESTRUCTOR(class_name) class_name##_destructor,
#define OPERATION(class_name, operation, result, arguments, results) class_name##_##operation,
#include "sim/calls/operation_table.def"
#undef CONSTRUCTOR
#undef DESTRUCTOR
#undef OPERATION
    count
};

constexpr std::size_t kOperations = static_cast<std::size_t>(OperationId::count);

enum class OperationKind { constructor, destructor, method };

namespace detail {

template <typename Signature>
struct Types;
template <typename... T>
struct Types<void(T...)> {
    using Tuple = std::tuple<T...>;
};

template <typename Tuple>
struct has_hidden;
template <typename... T>
struct has_hidden<std::tuple<T...>> : std::bool_constant<(is_hidden<T>::value || ...)> {};

template <typename Tuple>
struct count_shown;
template <typename... T>
struct count_shown<std::tuple<T...>>
    : std::integral_constant<std::size_t, (std::size_t{0} + ... + (is_hidden<T>::value ? 0U : 1U))> {};

// The function that answers an operation in a place of kind Target: the arguments, then the results to be filled.
template <typename Target, typename Result, typename Arguments, typename Results>
struct HandlerOf;
template <typename Target, typename Result, typename... I, typename... O>
struct HandlerOf<Target, Result, std::tuple<I...>, std::tuple<O...>> {
    using type = Result(Target&, std::conditional_t<std::is_scalar_v<I>, I, I const&>..., O&...);
};

}  // namespace detail

template <OperationId Id, OperationKind Kind, typename ResultType, typename ArgumentSignature, typename ResultSignature>
struct Operation {
    static constexpr OperationId kId = Id;
    static constexpr OperationKind kKind = Kind;
    using Result = ResultType;
    using Arguments = typename detail::Types<ArgumentSignature>::Tuple;
    using Results = typename detail::Types<ResultSignature>::Tuple;
    template <typename Target>
    using Handler = typename detail::HandlerOf<Target, Result, Arguments, Results>::type;
    // Operations of a class, not of an object.
    static constexpr bool kStatic = Id == OperationId::camera_t_determine_imxtype;
    // Whether the results are a report for the program alone, which it gets whatever the status says.
    static constexpr bool kReports = detail::has_hidden<Results>::value;
};

// operations::rtu_t::set_exposure, operations::rtu_t::constructor, operations::rtu_t::destructor ...
// A constructor's result is the errno of the opening.
namespace operations {
// NOLINTBEGIN(bugprone-macro-parentheses): names and types, which take none
#define CONSTRUCTOR(class_name, arguments)                                                                            \
    namespace class_name {                                                                                            \
    struct constructor                                                                                                \
        : Operation<OperationId::class_name##_constructor, OperationKind::constructor, int, void arguments, void()> { \
        static constexpr std::string_view kName = #class_name "::" #class_name;                                       \
    };                                                                                                                \
    }
#define DESTRUCTOR(class_name)                                                                              \
    namespace class_name {                                                                                  \
    struct destructor                                                                                       \
        : Operation<OperationId::class_name##_destructor, OperationKind::destructor, int, void(), void()> { \
        static constexpr std::string_view kName = #class_name "::~" #class_name;                            \
    };                                                                                                      \
    }
#define OPERATION(class_name, operation, result, arguments, results)                                                   \
    namespace class_name {                                                                                             \
    struct operation : Operation<OperationId::class_name##_##operation, OperationKind::method, result, void arguments, \
                                 void results> {                                                                       \
        static constexpr std::string_view kName = #class_name "::" #operation;                                         \
    };                                                                                                                 \
    }
#include "sim/calls/operation_table.def"
#undef CONSTRUCTOR
#undef DESTRUCTOR
#undef OPERATION
// NOLINTEND(bugprone-macro-parentheses)
}  // namespace operations

// What can be known of an operation without its types.
struct OperationInfo {
    std::string_view name;  // "class_t::operation", as the journal and the fault rules call it
    OperationKind kind;
    std::size_t arguments;  // that the journal writes
    bool is_static;         // it has no object
    bool answers_status;    // its result is an int status
    std::size_t values;     // of which its results consist, and its result where that is a value itself
    // Whether the journal could write its argument of that number, from 0, as this text, or as the same number.
    bool (*takes)(std::size_t argument, std::string const& value);
};

// By OperationId.
extern std::array<OperationInfo, kOperations> const kOperationInfos;

inline OperationInfo const& info_of(OperationId id) {
    return kOperationInfos[static_cast<std::size_t>(id)];
}

// A number that differs where the table, the codec or the protocol of two builds may differ.
std::uint64_t table_version();
// The one of any table, a line for each operation.
std::uint64_t version_of(std::vector<std::string> const& table);

}  // namespace sim
