#pragma once
int test_imx(int which);
