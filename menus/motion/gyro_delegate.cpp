#include "menus/motion/gyro_delegate.h"
int test_gyro_delegate() {
    return 0;
}
int test_gyro_delegate_and_alarm() {
    return 0;
}
