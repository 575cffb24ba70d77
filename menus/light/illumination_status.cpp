#include "menus/light/illumination_status.h"
