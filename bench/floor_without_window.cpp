#include "bench/floor_system.h"

void ShowEmptyWindow() {}
