#pragma once
int test_gyro();
