// Shared by all five windows: their class, their controls from a table, their font and colours, and the rule
// that a tool window exists at most once. GUI thread only.
#pragma once

#include <span>

#include "platform/windows/windows_headers.h"

// In client pixels.
struct ControlPlace {
    int x, y, width, height;
};

// One control as data. WS_CHILD and WS_VISIBLE are added to each.
struct ControlRow {
    const wchar_t* className;
    const wchar_t* text = L"";
    DWORD style = 0;
    DWORD exStyle = 0;
    ControlPlace place;
    int id = 0;
    HWND* handle = nullptr;  // where to store the control's handle, or null
};

// A tool window as data. The main window owns it; its position is the default one.
struct ToolWindow {
    const wchar_t* className;
    const wchar_t* title;
    DWORD style;
    int width, height;  // outer size in pixels
    WNDPROC procedure;
    HWND* handle;  // null while the window is closed; the window's own WM_DESTROY resets it
};

// White background, arrow cursor, no icon, no menu. Registering a class again fails and changes nothing.
void RegisterWindowClass(const wchar_t* className, WNDPROC procedure);

// Creates the controls in the order of the table. Failures are not checked.
void CreateControls(HWND parent, std::span<const ControlRow> rows);

// Sends UiFont to the window and to each of its direct children and redraws them. Does nothing without a
// window or a font.
void ApplyUiFont(HWND window);

// Answers WM_CTLCOLOREDIT and WM_CTLCOLORSTATIC in every window: black on opaque white.
LRESULT ColorControl(WPARAM wParam);

// True: the window was created with its controls and is not visible yet; the caller fills and shows it.
// False: it existed already and was brought to the front, or the system could not create it.
bool RaiseOrCreate(const ToolWindow& tool, std::span<const ControlRow> rows);
