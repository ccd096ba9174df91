// The outermost frame of everything that the system calls. A C++ exception must not travel through
// DispatchMessageW: what lies between belongs to the system, and the process would end with the receiver in
// it. What can be thrown at all is a shortage of memory, and the operator's next click may well succeed.
#pragma once

#include "platform/windows/windows_headers.h"

// The window procedure to register for `procedure`. A message whose handling throws is answered as if the
// window did not know it: WM_COMMAND and WM_TIMER end with 0 where they broke off, WM_CLOSE still closes.
template <WNDPROC procedure>
LRESULT CALLBACK GuardedProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    try {
        return procedure(window, message, wParam, lParam);
    } catch (...) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
}
