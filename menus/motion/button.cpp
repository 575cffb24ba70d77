#include "menus/motion/button.h"
int test_button() {
    return 0;
}
