// The operator's control strip: starts and stops the receiver, opens the tool windows, shows green or red.
#pragma once

#include "platform/windows/windows_headers.h"

// "Start server" or "Stop server"; null until the main window is being created.
extern HWND StartButtonHandle;

// Makes the buttons at WM_CREATE and posts itself the click of the first: the receiver starts by itself as
// soon as messages are dispatched. At WM_DESTROY stops the receiver, saves the settings and ends the
// message loop.
LRESULT CALLBACK MainWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
