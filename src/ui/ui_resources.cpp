#include "ui/ui_resources.h"

HBRUSH BackgroundBrush = nullptr;
HFONT UiFont = nullptr;

void CreateBackgroundBrush() {
    if (!BackgroundBrush) {
        BackgroundBrush = CreateSolidBrush(RGB(255, 255, 255));
    }
}

void CreateUiFont() {
    if (!UiFont) {
        UiFont =
            CreateFontW(-14, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS,
                        CLIP_DEFAULT_PRECIS, CLEARTYPE_QUALITY, DEFAULT_PITCH | FF_DONTCARE, L"Segoe UI");
    }
}

void DeleteUiResources() {
    if (UiFont) {
        DeleteObject(UiFont);
        UiFont = nullptr;
    }
    if (BackgroundBrush) {
        DeleteObject(BackgroundBrush);
        BackgroundBrush = nullptr;
    }
}
