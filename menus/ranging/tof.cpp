#include "menus/ranging/tof.h"
int test_tof() {
    return 0;
}
