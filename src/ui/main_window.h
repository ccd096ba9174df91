// The main window: starts and stops the receiver, opens the tool windows, and shows a green or red indicator.
// GUI thread only.
#pragma once

#include "platform/windows/windows_headers.h"

// The owner of the tool windows. Null until OpenMainWindow has created it.
extern HWND MainWindowHandle;

// Creates and shows the window. The receiver starts as soon as messages are dispatched, because the window
// posts itself a click on its start button. Destroying the window stops the receiver, saves the settings and
// ends the message loop. False: the system could not create the window.
bool OpenMainWindow(int showCommand);
