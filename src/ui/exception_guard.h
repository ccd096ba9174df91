// The outermost frame of every window procedure. A C++ exception must not cross the system's frames above it:
// that would end the process, and with it the receiver. The exceptions that occur are memory shortages and
// locks that the system refuses, and the operator's next click may succeed.
#pragma once

#include "platform/windows/windows_headers.h"

// The window procedure to register for `procedure`. A message whose handler throws goes to DefWindowProcW, so
// that WM_CLOSE still closes the window; WM_COMMAND and WM_TIMER return 0.
template <WNDPROC procedure>
LRESULT CALLBACK GuardedProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    try {
        return procedure(window, message, wParam, lParam);
    } catch (...) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
}
