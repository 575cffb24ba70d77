#pragma once
int test_dio();
