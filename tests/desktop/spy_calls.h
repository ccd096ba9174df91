// Logs system calls of the program under test. Each is logged as a text and then made, except a file dialog
// that the driver has answered already.
#pragma once

#include "tests/desktop/spy_memory.h"

// Called once in the program's process; the library then stays loaded. Logs, with numbers in decimal and a
// window as the number of its handle:
//   WM_SETREDRAW WINDOW FLAG, LB_RESETCONTENT WINDOW     sent messages
//   InvalidateRect WINDOW part|whole ERASE
//   MessageBoxW TYPE
//   GetOpenFileNameW ...             the record as "name=value" texts, the zeros of the filter as "|"
void CatchCalls(SpyMemory& shared);
