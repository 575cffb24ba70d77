// The fields of the library's records in order, for the journal and the fault rules.
#pragma once

#include <tuple>
#include <type_traits>

#include "hal/autofocus.h"
#include "hal/illumination.h"
#include "hal/quaternion.h"
#include "hal/rtu.h"
#include "hal/types.h"
#include "hal/vl53l5cx.h"

namespace sim {

// Records without fields here are no records for the journal: they are scalars, texts or containers.
template <typename Record>
struct Fields;

template <>
struct Fields<hal::revision_t> {
    template <typename R>
    static auto of(R& r) {
        return std::tie(r.major, r.minor, r.patch, r.num, r.year, r.week);
    }
};

template <>
struct Fields<hal::color_t> {
    template <typename R>
    static auto of(R& r) {
        return std::tie(r.brightness, r.red, r.green, r.blue);
    }
};

template <>
struct Fields<hal::dio_pin_config_t> {
    template <typename R>
    static auto of(R& r) {
        return std::tie(r.type, r.func, r.config, r.invert, r.on_delay_active, r.off_delay_active, r.pulse_active,
                        r.on_delay_time, r.off_delay_time, r.pulse_time, r.pin_lines);
    }
};

template <>
struct Fields<hal::spot_flags> {
    template <typename R>
    static auto of(R& r) {
        return std::tie(r.general_error, r.low_power, r.trigger_overflow, r.driver_error, r.calibration_error, r.dvsc,
                        r.bc, r.over_temperature);
    }
};

template <>
struct Fields<hal::spot_states> {
    template <typename R>
    static auto of(R& r) {
        return std::tie(r.light_range, r.operating_mode, r.segments[0], r.segments[1], r.segments[2], r.segments[3],
                        r.further_state);
    }
};

template <>
struct Fields<hal::illu_guards> {
    template <typename R>
    static auto of(R& r) {
        return std::tie(r.over_temperature, r.dvs, r.autocal, r.pvd);
    }
};

template <>
struct Fields<hal::af_error> {
    template <typename R>
    static auto of(R& r) {
        return std::tie(r.reserved, r.no_valid_frequency, r.initialization_error, r.motor_stuck, r.target_unreachable,
                        r.mirror_failure, r.no_mirror, r.communication_error, r.empty_calibration_table);
    }
};

template <>
struct Fields<decltype(VL53L5CX_ResultsData::motion_indicator)> {
    template <typename R>
    static auto of(R& r) {
        return std::tie(r.global_indicator_1, r.global_indicator_2, r.status, r.nb_of_detected_aggregates,
                        r.nb_of_aggregates, r.spare, r.motion);
    }
};

template <>
struct Fields<VL53L5CX_ResultsData> {
    template <typename R>
    static auto of(R& r) {
        return std::tie(r.silicon_temp_degc, r.ambient_per_spad, r.nb_target_detected, r.nb_spads_enabled,
                        r.signal_per_spad, r.range_sigma_mm, r.distance_mm, r.reflectance, r.target_status,
                        r.motion_indicator);
    }
};

// Records whose bytes are flags, of which any but 0 is true.
template <typename T>
constexpr bool is_flags =
    std::is_same_v<T, hal::spot_flags> || std::is_same_v<T, hal::illu_guards> || std::is_same_v<T, hal::af_error>;

template <typename T, typename = void>
struct is_record : std::false_type {};
template <typename T>
struct is_record<T, std::void_t<decltype(Fields<T>::of(std::declval<T&>()))>> : std::true_type {};

}  // namespace sim
