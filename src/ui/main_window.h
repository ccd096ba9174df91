// The operator's control strip: starts and stops the receiver, opens the tool windows, shows green or red.
// GUI thread only.
#pragma once

#include "platform/windows/windows_headers.h"

// Owns the tool windows. Null until OpenMainWindow has created the window.
extern HWND MainWindowHandle;

// Creates and shows the window. The receiver starts by itself as soon as messages are dispatched: the window
// posts itself a click on its start button. Destroying the window stops the receiver, saves the settings and
// ends the message loop. False: the system could not create it.
bool OpenMainWindow(int showCommand);
