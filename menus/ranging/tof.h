#pragma once
int test_tof();
