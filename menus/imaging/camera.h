#pragma once
int test_camera();
