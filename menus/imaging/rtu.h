#pragma once
int test_rtu();
