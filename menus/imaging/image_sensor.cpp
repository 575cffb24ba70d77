#include "menus/imaging/image_sensor.h"
int test_imx(int) {
    return 0;
}
