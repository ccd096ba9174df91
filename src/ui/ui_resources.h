// The font and the white background that all windows share. GUI thread only.
#pragma once

#include "platform/windows/windows_headers.h"

extern HBRUSH BackgroundBrush;  // white
extern HFONT UiFont;

// Each creates its object if there is none yet. If the system refuses, the handle remains null. Without the
// brush, window classes have no background; without the font, controls use the system's font.
void CreateBackgroundBrush();
void CreateUiFont();

// Deletes both. No window may use them any more.
void DeleteUiResources();
