// The functions of a program that are called back, as the journal and the fault rules call them. Their arguments are
// whole numbers, none below 0.
#pragma once

#include <cstddef>
#include <string_view>

namespace sim {

struct CallbackInfo {
    std::string_view name;
    std::size_t arguments;  // that the journal writes
};

namespace callbacks {
constexpr CallbackInfo kGyroRecord{"gyro_t::callback_records", 2};  // index, sensor
constexpr CallbackInfo kDelegate{"gyro_delegate_t", 1};             // sensor
constexpr CallbackInfo kPositionReached{"gyro_alarm_t::on_position_reached", 0};
constexpr CallbackInfo kPositionLeft{"gyro_alarm_t::on_position_left", 0};
constexpr CallbackInfo kPressRecord{"button_t::press_records", 1};      // index
constexpr CallbackInfo kReleaseRecord{"button_t::release_records", 1};  // index
}  // namespace callbacks

constexpr CallbackInfo kCallbackInfos[] = {callbacks::kGyroRecord,      callbacks::kDelegate,
                                           callbacks::kPositionReached, callbacks::kPositionLeft,
                                           callbacks::kPressRecord,     callbacks::kReleaseRecord};

}  // namespace sim
