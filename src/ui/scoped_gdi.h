// Drawing objects that end with their scope. Declared in the order paint, brush, select they undo themselves
// in the only right one: old brush back, brush deleted, painting ended.
#pragma once

#include "platform/windows/windows_headers.h"

struct ScopedPaint {
    explicit ScopedPaint(HWND paintedWindow) : window(paintedWindow), context(BeginPaint(window, &paint)) {}
    ~ScopedPaint() { EndPaint(window, &paint); }
    ScopedPaint(const ScopedPaint&) = delete;
    ScopedPaint& operator=(const ScopedPaint&) = delete;

    PAINTSTRUCT paint{};
    HWND window;
    HDC context;
};

struct ScopedBrush {
    explicit ScopedBrush(COLORREF color) : brush(CreateSolidBrush(color)) {}
    ~ScopedBrush() { DeleteObject(brush); }
    ScopedBrush(const ScopedBrush&) = delete;
    ScopedBrush& operator=(const ScopedBrush&) = delete;

    HBRUSH brush;
};

struct ScopedSelect {
    ScopedSelect(HDC targetContext, HGDIOBJ object)
        : context(targetContext), previous(SelectObject(targetContext, object)) {}
    ~ScopedSelect() { SelectObject(context, previous); }
    ScopedSelect(const ScopedSelect&) = delete;
    ScopedSelect& operator=(const ScopedSelect&) = delete;

    HDC context;
    HGDIOBJ previous;
};
