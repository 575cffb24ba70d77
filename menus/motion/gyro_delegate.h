#pragma once
int test_gyro_delegate();
int test_gyro_delegate_and_alarm();
