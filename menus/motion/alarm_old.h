#pragma once
int test_alarm_old();
