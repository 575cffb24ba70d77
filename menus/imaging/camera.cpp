#include "menus/imaging/camera.h"
int test_camera() {
    return 0;
}
