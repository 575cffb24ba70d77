// The result record of the VL53L5CX ranging sensor, laid out as in its maker's published driver 1.3
// for one target per zone.
#pragma once

#include <cstddef>
#include <cstdint>

struct VL53L5CX_ResultsData {
    std::int8_t silicon_temp_degc;
    std::uint32_t ambient_per_spad[64];  // kcps/SPAD
    std::uint8_t nb_target_detected[64];
    std::uint32_t nb_spads_enabled[64];
    std::uint32_t signal_per_spad[64];  // kcps/SPAD
    std::uint16_t range_sigma_mm[64];
    std::int16_t distance_mm[64];
    std::uint8_t reflectance[64];    // percent
    std::uint8_t target_status[64];  // 5 valid, 6 and 9 half-confident, 255 no target
    struct {
        std::uint32_t global_indicator_1;
        std::uint32_t global_indicator_2;
        std::uint8_t status;
        std::uint8_t nb_of_detected_aggregates;
        std::uint8_t nb_of_aggregates;
        std::uint8_t spare;
        std::uint32_t motion[32];
    } motion_indicator;
};
static_assert(sizeof(VL53L5CX_ResultsData) == 1360);
static_assert(offsetof(VL53L5CX_ResultsData, distance_mm) == 964);
