#pragma once
int test_autofocus();
