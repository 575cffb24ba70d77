#pragma once
int test_button();
