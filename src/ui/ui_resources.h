// What all windows share: the font, the white background and the main window, which owns every other one.
// GUI thread only.
#pragma once

#include "platform/windows/windows_headers.h"

// White; the background of every window class and of the coloured controls. May be null.
extern HBRUSH BackgroundBrush;

// Null: the controls keep the system's font.
extern HFONT UiFont;

// Set by OpenMainWindow once the window exists, null until then.
extern HWND MainWindowHandle;

// Each makes what is still missing. A refusal by the system leaves the null handle, which everyone can
// live with.
void CreateBackgroundBrush();
void CreateUiFont();

// Font first, then brush; null afterwards. No window may be left that uses them.
void DeleteUiResources();
