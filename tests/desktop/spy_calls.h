// Calls of the program under test to the system, caught on their way. Each is noted as a text and goes on to
// where it wanted, but for a file dialog that the driver has answered already.
#pragma once

#include "tests/desktop/spy_memory.h"

// In the program's own process, once; the library stays loaded from here on. Noted are, numbers in decimal:
//   CreateWindowExW CLASS X Y        of windows that are nobody's child, a default place as "default"
//   WM_SETFONT WINDOW                sent; a window as its handle's number
//   ShowWindow WINDOW COMMAND
//   MessageBoxW TYPE
//   GetOpenFileNameW ...             the record as "name=value" texts, the zeros of the filter as "|"
void CatchCalls(SpyMemory& shared);
