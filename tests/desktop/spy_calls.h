// Intercepts system calls of the program under test, logs them as texts and then makes them. A file dialog
// whose result the driver has prepared is logged but not shown.
#pragma once

#include "tests/desktop/spy_memory.h"

// Called once in the program's process; the library then stays loaded. Logs, with decimal numbers and each
// window as the number of its handle:
//   WM_SETREDRAW WINDOW FLAG, LB_RESETCONTENT WINDOW     sent messages
//   InvalidateRect WINDOW part|whole ERASE
//   MessageBoxW TYPE
//   GetOpenFileNameW ...             the structure as "name=value" texts, zeros in the filter as "|"
void InterceptCalls(SpyMemory& shared);
