#include "menus/motion/gyro.h"
int test_gyro() {
    return 0;
}
