#include "menus/motion/alarm_old.h"
int test_alarm_old() {
    return 0;
}
