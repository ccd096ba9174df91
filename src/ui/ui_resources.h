// The font and the white background that all windows share. GUI thread only.
#pragma once

#include "platform/windows/windows_headers.h"

extern HBRUSH BackgroundBrush;  // white
extern HFONT UiFont;

// Each creates its object if there is none yet. If the system cannot, the handle stays null: a window class
// then has no background, and the controls have the system's font.
void CreateBackgroundBrush();
void CreateUiFont();

// Deletes the font, then the brush. No window that uses them may be left.
void DeleteUiResources();
