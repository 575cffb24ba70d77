#pragma once
int test_gyro_alarm();
