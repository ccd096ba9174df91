// What all five windows do alike: their class, their controls from a table, their font, their colours, and
// that a tool window exists at most once. GUI thread only.
#pragma once

#include <span>

#include "platform/windows/windows_headers.h"

// In client pixels.
struct ControlPlace {
    int x, y, width, height;
};

// One control as data. Every control is a visible child besides what `style` adds.
struct ControlRow {
    const wchar_t* className;
    const wchar_t* text = L"";
    DWORD style = 0;
    DWORD exStyle = 0;
    ControlPlace place;
    int id = 0;
    HWND* handle = nullptr;  // where the control's handle is kept, or null
};

// A tool window as data: opened from the main window, owned by it and destroyed with it. The
// default position.
struct ToolWindow {
    const wchar_t* className;
    const wchar_t* title;
    DWORD style;
    int width, height;  // outer size in pixels
    WNDPROC procedure;
    HWND* handle;  // null while the window is closed; the window's own WM_DESTROY sets it back
};

// White background, arrow cursor, no icon, no menu. Registering a name again fails, which harms nobody.
void RegisterWindowClass(const wchar_t* className, WNDPROC procedure);

// Creates the controls in the order of the table and stores the handles that are to be kept. Not checked.
void CreateControls(HWND parent, std::span<const ControlRow> rows);

// Sends UiFont to the window and to each of its direct children, redrawing them. A null window or
// font: nothing.
void ApplyUiFont(HWND window);

// Black on opaque white: the answer to WM_CTLCOLOREDIT and WM_CTLCOLORSTATIC in every window.
LRESULT ColorControl(WPARAM wParam);

// False: the window exists already and was brought to the front, or the system refused to make one.
// True: it was created with its controls and is not visible yet; the caller fills and shows it.
bool RaiseOrCreate(const ToolWindow& tool, std::span<const ControlRow> rows);
