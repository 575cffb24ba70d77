// Where the console finds the device.
#pragma once

constexpr char const* kRtuDevice = "/dev/r47-rtu-driver";
constexpr char const* kIlluminationDevice = "/dev/r47-illumination-driver";
constexpr char const* kAutofocusDevice = "/dev/r47-autofocus-driver";
constexpr char const* kTofDevice = "/dev/r47-tof-driver";
constexpr char const* kImx296Device = "/dev/imx296";
constexpr char const* kImx567Device = "/dev/imx567";
constexpr char const* kHubDevice = "/dev/i2c-2";
constexpr char const* kHubInterrupt = "/sys/class/gpio/gpio481/value";
constexpr char const* kButtonDevice = "/dev/gpiochip1";

// The sensor hub's firmware, and the "old" one, which is the turbo one.
constexpr char const* kHubFirmware = "/opt/kelvora/libhal/fw/kelvora-260AP_1.6.fw";
constexpr char const* kOldHubFirmware = "/opt/kelvora/libhal/fw/kelvora-260AB_turbo-1.x.fw";

// The number that every object of the library takes beside its device; what it means is the library's own.
constexpr int kDeviceAccess = 2;
