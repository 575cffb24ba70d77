// The operations of the library as types: what one end encodes, the other end decodes, and all else is derived from.
#include "sim/calls/operations.h"

#include <cmath>
#include <limits>

#include "sim/calls/codec.h"
#include "sim/calls/fault_values.h"
#include "sim/core/numbers.h"

namespace sim {

namespace {

// Raised when the messages themselves change.
constexpr std::uint64_t kProtocol = 3;

constexpr std::uint64_t kHashStart = 14695981039346656037U;  // FNV-1a
constexpr std::uint64_t kHashFactor = 1099511628211U;

// Whether a number of the type can be this one.
template <typename T>
bool can_be(long double number) {
    if constexpr (std::is_same_v<T, bool>) {
        return number == 0 || number == 1;
    } else if constexpr (std::is_integral_v<T>) {
        return std::trunc(number) == number && number >= std::numeric_limits<T>::min() &&
               number <= std::numeric_limits<T>::max();
    } else if constexpr (std::is_enum_v<T>) {
        return can_be<std::underlying_type_t<T>>(number);
    } else {
        return true;
    }
}

template <typename T>
bool could_be(std::string const& value) {
    if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>) {
        auto const number = parse_number(value);
        return number && can_be<T>(*number);
    } else {
        return true;
    }
}

template <typename... T>
bool takes(std::tuple<T...> const* /*arguments*/, std::size_t argument, std::string const& value) {
    std::size_t at = 0;
    bool taken = true;
    [[maybe_unused]] auto const look = [&](bool hidden, bool (*could)(std::string const&)) {
        taken = taken && (hidden || at++ != argument || could(value));
    };
    (look(is_hidden<T>::value, could_be<T>), ...);
    return taken;
}

template <typename Op>
std::size_t count_values() {
    std::vector<long double> const none;
    FaultValues values(none);
    typename Op::Results results{};
    std::apply([&](auto&... each) { (values.fill(each), ...); }, results);
    return values.taken() + (std::is_same_v<typename Op::Result, int> ? 0 : 1);
}

template <typename Op>
OperationInfo info() {
    constexpr bool answers = Op::kKind == OperationKind::method;
    return {Op::kName,
            Op::kKind,
            detail::count_shown<typename Op::Arguments>::value,
            Op::kStatic,
            answers && std::is_same_v<typename Op::Result, int>,
            answers ? count_values<Op>() : 0,
            [](std::size_t argument, std::string const& value) {
                return takes(static_cast<typename Op::Arguments const*>(nullptr), argument, value);
            }};
}

// Every operation with its types as they stand in the table, and with how many bytes its values take at least: another
// number where a record has got other fields.
template <typename Op>
std::string line_of(std::string types) {
    Encoder values;
    values.put(typename Op::Arguments{}).put(typename Op::Results{});
    return types += " " + std::to_string(values.bytes().size());
}

std::vector<std::string> lines_of_table() {
    return {
#define CONSTRUCTOR(class_name, arguments) line_of<operations::class_name::constructor>(#class_name #arguments),
#define DESTRUCTOR(class_name) line_of<operations::class_name::destructor>("~" #class_name),
#define OPERATION(class_name, operation, result, arguments, results) \
    line_of<operations::class_name::operation>(#class_name "::" #operation " " #result #arguments #results),
#include "sim/calls/operation_table.def"
#undef CONSTRUCTOR
#undef DESTRUCTOR
#undef OPERATION
    };
}

}  // namespace

std::array<OperationInfo, kOperations> const kOperationInfos{{
#define CONSTRUCTOR(class_name, arguments) info<operations::class_name::constructor>(),
#define DESTRUCTOR(class_name) info<operations::class_name::destructor>(),
#define OPERATION(class_name, operation, result, arguments, results) info<operations::class_name::operation>(),
#include "sim/calls/operation_table.def"
#undef CONSTRUCTOR
#undef DESTRUCTOR
#undef OPERATION
}};

std::uint64_t version_of(std::vector<std::string> const& table) {
    std::uint64_t hash = kHashStart ^ kProtocol;
    for (std::string const& line : table) {
        for (char const c : line + "\n") {
            hash = (hash ^ static_cast<unsigned char>(c)) * kHashFactor;
        }
    }
    return hash;
}

std::uint64_t table_version() {
    static std::uint64_t const version = version_of(lines_of_table());
    return version;
}

}  // namespace sim
