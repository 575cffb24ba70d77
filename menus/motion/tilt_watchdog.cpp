#include "menus/motion/tilt_watchdog.h"
