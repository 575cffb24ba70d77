#include "menus/light/illumination.h"
int test_illumination() {
    return 0;
}
