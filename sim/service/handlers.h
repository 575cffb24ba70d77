// The functions that answer the operations, declared from their table: handlers::rtu_t::set_exposure, ...
#pragma once

#include "sim/calls/operations.h"
#include "sim/service/objects.h"
#include "sim/service/target.h"

namespace sim {

// What the objects of a class are on the device.
namespace object_types {
using base_t = ServedObject;
using system_t = ServedObject;
using rtu_t = ServedObject;
using rtu_delegate_t = ServedObject;
using camera_t = CameraObject;
using imx_t = ServedObject;
using illumination_t = ServedObject;
using autofocus_t = ServedObject;
using gyro_t = GyroObject;
using gyro_alarm_t = AlarmObject;
using gyro_delegate_t = DelegateObject;
using button_t = ButtonObject;
using tof_t = ServedObject;
}  // namespace object_types

// With the device's lock held. An operation answers its result, errno set where that is a failure; a constructor the
// errno of the opening, 0 for none. A destructor leaves it to its caller to remove the object.
namespace handlers {
// NOLINTBEGIN(bugprone-macro-parentheses): names, which take none
#define HANDLER(class_name, operation)                                                          \
    namespace class_name {                                                                      \
    operations::class_name::operation::Handler<CallTarget<object_types::class_name>> operation; \
    }
#define CONSTRUCTOR(class_name, arguments) HANDLER(class_name, constructor)
#define DESTRUCTOR(class_name) HANDLER(class_name, destructor)
#define OPERATION(class_name, operation, result, arguments, results) HANDLER(class_name, operation)
#include "sim/calls/operation_table.def"
#undef CONSTRUCTOR
#undef DESTRUCTOR
#undef OPERATION
#undef HANDLER
// NOLINTEND(bugprone-macro-parentheses)
}  // namespace handlers

}  // namespace sim
