// What all windows share: the font, the white background and the main window, which owns every other one.
// GUI thread only.
#pragma once

#include "platform/windows/windows_headers.h"

extern HBRUSH
    BackgroundBrush;  // white; background of every window class and of the coloured controls. May be null.
extern HFONT UiFont;  // null: the controls keep the system's font
extern HWND MainWindowHandle;  // set by wWinMain once the window exists, null until then

// Each makes what is still missing. A refusal by the system leaves the null handle, which everyone can live
// with.
void CreateBackgroundBrush();
void CreateUiFont();

// Font first, then brush; null afterwards. No window may be left that uses them.
void DeleteUiResources();
