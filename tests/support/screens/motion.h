// What the gyro, alarm, delegate and button menus print, as the tests expect it.
#pragma once

#include <string>

#include "tests/support/screens/shell.h"

namespace screens {

// The sensor hub's report of its firmware, after the boot of an image of its variant "AP" or "AB".
inline std::string firmware_report(std::string const& variant, bool idle) {
    return "Sensor hub firmware\n"
           "  product id          0x89\n"
           "  image               BHI260" +
           variant +
           "\n"
           "  ROM version         5166\n"
           "  kernel version      5991\n"
           "  user version        5991\n"
           "  boot status         " +
           (idle ? "0xB0" : "0x30") +
           "\n"
           "                      host interface ready: yes\n"
           "                      firmware verified: yes\n"
           "                      firmware verify error: no\n"
           "                      idle: " +
           (idle ? "yes" : "no") + "\n";
}

inline std::string const kVirtualSensors =
    "Virtual sensors\n"
    "   id  name                                    min Hz    max Hz\n"
    "    1  Accelerometer passthrough                 12.5       400\n"
    "    3  Accelerometer uncalibrated              1.5625       400\n"
    "    4  Accelerometer corrected                 1.5625       400\n"
    "    5  Accelerometer offset                    1.5625       400\n"
    "    6  Accelerometer corrected wake up         1.5625       400\n"
    "    7  Accelerometer uncalibrated wake up      1.5625       400\n"
    "   10  Gyroscope passthrough                       25       400\n"
    "   12  Gyroscope uncalibrated                  1.5625       400\n"
    "   13  Gyroscope corrected                     1.5625       400\n"
    "   14  Gyroscope offset                        1.5625       400\n"
    "   15  Gyroscope corrected wake up             1.5625       400\n"
    "   16  Gyroscope uncalibrated wake up          1.5625       400\n"
    "   28  Gravity vector                          1.5625       400\n"
    "   29  Gravity vector wake up                  1.5625       400\n"
    "   31  Linear acceleration                     1.5625       400\n"
    "   32  Linear acceleration wake up             1.5625       400\n"
    "   37  Game rotation vector                    1.5625       400\n"
    "   38  Game rotation vector wake up            1.5625       400\n"
    "   48  Tilt detector                                1         1\n"
    "   50  Step detector                                1         1\n"
    "   52  Step counter                                 1         1\n"
    "   53  Step counter wake up                         1         1\n"
    "   55  Significant motion                           1         1\n"
    "   57  Wake gesture                                 1         1\n"
    "   59  Glance gesture                               1         1\n"
    "   61  Pickup gesture                               1         1\n"
    "   63  Activity recognition                         1         1\n"
    "   67  Wrist tilt                                   1         1\n"
    "   69  Device orientation                           1         1\n"
    "   70  Device orientation wake up                   1         1\n"
    "   75  Stationary detect                            1         1\n"
    "   77  Motion detect                                1         1\n"
    "   94  Step detector wake up                        1         1\n";

inline std::string const kPhysicalSensors =
    "Physical sensors\n"
    "   id  name\n"
    "    1  Accelerometer\n"
    "    3  Gyroscope\n"
    "   32  Step counter\n"
    "   33  Step detector\n"
    "   34  Significant motion\n";

inline std::string const kPhysicalSensors1And3 =
    "Physical sensor 1: Accelerometer\n"
    "  maximum range       16\n"
    "  resolution          16\n"
    "  maximum rate        400 Hz\n"
    "Physical sensor 3: Gyroscope\n"
    "  maximum range       2000\n"
    "  resolution          16\n"
    "  maximum rate        400 Hz\n";

inline std::string const kVirtualSensor5 =
    "Virtual sensor 5: Accelerometer offset\n"
    "  type                5\n"
    "  driver id           5\n"
    "  driver version      1\n"
    "  power               0\n"
    "  maximum range       16\n"
    "  resolution          16\n"
    "  maximum rate        400 Hz\n"
    "  fifo reserved       0\n"
    "  fifo maximum        256\n"
    "  event size          7\n"
    "  minimum rate        1.5625 Hz\n";

inline std::string const kVirtualSensor5Configuration =
    "Configuration of virtual sensor 5: Accelerometer offset\n"
    "  sample rate         0 Hz\n"
    "  latency             0 ms\n"
    "  sensitivity         0\n"
    "  range               16\n";

inline std::string const kInterruptControl =
    "Interrupt control\n"
    "  register 0x07       0x0C\n"
    "                      wake-up FIFO on\n"
    "                      non-wake-up FIFO on\n"
    "                      status FIFO off\n"
    "                      debug off\n"
    "                      fault on\n"
    "                      active high\n"
    "                      level\n"
    "                      push-pull\n";

// Of the first look after a reset of the hub.
inline std::string const kInterruptAfterReset =
    "Interrupt status\n"
    "  register 0x2D       0x81\n"
    "  asserted            yes\n"
    "  wake-up FIFO        no\n"
    "  non-wake-up FIFO    no\n"
    "  status FIFO         no\n"
    "  debug               no\n"
    "  reset or fault      yes\n";

// The low-level menu of the sensor hub, up to its prompt, and with the echo of the key that answers it.
inline std::string const kGyroMenu = kTopUsage +
                                     "\t\t Gyrometer low level control v1.0\n\n"
                                     "\t\t Commands:\n"
                                     "\t\t d: set default sensor\n"
                                     "\t\t D: set defaults (e.g. frame rate, llatency)\n\n"
                                     "\t\t a: activate and read default sensor \n"
                                     "\t\t A: deactivate default sensor\n\n"
                                     "\t\t w: Virtual  sensor list    \n"
                                     "\t\t W: Physical sensor list\n\n"
                                     "\t\t s: Info default virtual sensor cfg\n"
                                     "\t\t S: Info default virtual sensor \n\n"
                                     "\t\t f: upload Firmware       \n"
                                     "\t\t F  info Firmware       \n\n"
                                     "\t\t e: info irq config\n"
                                     "\t\t E: info irq \n\n"
                                     "\t\t b: boot       \n"
                                     "\t\t B: install callbacks       \n"
                                     "\t\t n: upload boot default       \n"
                                     "\t\t r: read and process fifos\n"
                                     "\n\nPlease enter your option: ";
inline std::string gyro_menu(char key) {
    return kGyroMenu + "Your Option = " + key + "\n";
}

inline std::string activating(std::string const& id, std::string const& rate, std::string const& latency) {
    return "Activating sensor: " + id + " with frame rate: " + rate + " and latency: " + latency + "\n";
}

inline std::string const kAlarmMenu =
    "\t\t  a: set ALpha      \n\n"
    "\t\t  b: set Beta       \n\n"
    "\t\t  g: set Gamma      \n\n"
    "\t\t  t: toggle run     \n\n"
    "\t\t  x: Return to main \n"
    "\n\n  Please enter your option: ";
inline std::string alarm_menu(char key) {
    return kAlarmMenu + "\t\t Your Option = " + key + "\n";
}

// Of both delegate menus.
inline std::string const kDelegateMenu =
    "\t\t  t: toggle run      \n\n"
    "\t\t  x: Return to main     \n"
    "\n\n   Please enter your option: ";
inline std::string delegate_menu(char key) {
    return kDelegateMenu + "\t\t Your Option = " + key + "\n";
}

inline std::string const kButtonMenu =
    "\t\t\n\n\n\n\nButton Control\n\n"
    "\t\t  r: read irq value     \n"
    "\t\t  x: Exit               \n"
    "Please enter your option: ";
inline std::string button_menu(char key) {
    return kButtonMenu + "\t\tYour option = " + key + "\n";
}

inline std::string const kLegacyAlarmMenu =
    "\t\t  i: vsensor list    \n"
    "\t\t  s: save position    \n"
    "\t\t  t: toggle run      \n\n"
    "\t\t  x: Return to main     \n"
    "\n\n   Please enter your option: ";
inline std::string legacy_alarm_menu(char key) {
    return kLegacyAlarmMenu + "\t\t Your Option = " + key + "\n";
}

// The watchdog's trace of one sample.
inline std::string const kSampleTrace = "void cb_sensor_data(uint8_t, hal::cb_struct_te, void*) 29\n";

}  // namespace screens
