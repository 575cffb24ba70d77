#include "menus/light/autofocus.h"
int test_autofocus() {
    return 0;
}
