#pragma once
int test_illumination();
