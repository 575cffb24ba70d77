#include "menus/imaging/rtu.h"
int test_rtu() {
    return 0;
}
