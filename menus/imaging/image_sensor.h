// The image sensor menu: the sensor that is fitted, without the camera pipeline.
#pragma once

// Runs the menu, always at the terminal. The sensor is the one whose node can be opened, IMX296 before IMX567; the
// argument is not used. It is opened on entry and closed on return. Returns 0 on its exit key and -1, printing
// nothing, where there is no sensor; key '0' ends the process.
int test_imx(int which);
