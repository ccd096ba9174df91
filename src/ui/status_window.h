// The live summary of the receiver and the list of imported MIB files, refreshed every 700 ms. GUI
// thread only.
#pragma once

#include "platform/windows/windows_headers.h"

extern HWND StatusWindowHandle;  // null while the window is closed

// Opens the window, or raises the one that is open.
void OpenStatusWindow();

// Updates every text and the whole list. Does nothing while the window is closed.
void RefreshStatus();
