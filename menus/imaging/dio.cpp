#include "menus/imaging/dio.h"
int test_dio() {
    return 0;
}
