#include "menus/motion/gyro_alarm.h"
int test_gyro_alarm() {
    return 0;
}
