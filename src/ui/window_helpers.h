// Helpers of all five windows: window class, controls from a table, font and colours, and opening a tool
// window at most once. GUI thread only.
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

// A tool window as data. It is owned by the main window and opens at the default position.
struct ToolWindow {
    const wchar_t* className;
    const wchar_t* title;
    DWORD style;
    int width, height;  // outer size in pixels
    WNDPROC procedure;
    HWND* handle;  // null while the window is closed; the window's own WM_DESTROY resets it
};

// Registers a class with white background, arrow cursor, no icon and no menu. A no-op if it is registered
// already.
void RegisterWindowClass(const wchar_t* className, WNDPROC procedure);

// Creates the controls in the order of the table. Failures are not checked.
void CreateControls(HWND parent, std::span<const ControlRow> rows);

// Sets UiFont in the window and its direct children and redraws them. Does nothing if either is null.
void ApplyUiFont(HWND window);

// The result of WM_CTLCOLOREDIT and WM_CTLCOLORSTATIC in every window: black on opaque white.
LRESULT ColorControl(WPARAM wParam);

// Opens a tool window or brings the open one to the front. True: it was created with its controls and is
// still hidden; the caller fills and shows it. False: it was open already, or the system could not create it.
bool RaiseOrCreate(const ToolWindow& tool, std::span<const ControlRow> rows);
