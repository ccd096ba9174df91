#include "bench/floor_window.h"

void ShowEmptyWindow() {}
