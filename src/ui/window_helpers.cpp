#include "ui/window_helpers.h"

#include "ui/main_window.h"
#include "ui/ui_resources.h"

void RegisterWindowClass(const wchar_t* className, WNDPROC procedure) {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.hbrBackground = BackgroundBrush;
    windowClass.lpszClassName = className;
    RegisterClassW(&windowClass);
}

namespace {

void CreateControl(HWND parent, const ControlRow& row) {
    const HMENU id = reinterpret_cast<HMENU>(static_cast<UINT_PTR>(row.id));
    const HWND control = CreateWindowExW(
        row.exStyle, row.className, row.text, WS_CHILD | WS_VISIBLE | row.style, row.place.x, row.place.y,
        row.place.width, row.place.height, parent, id, GetModuleHandleW(nullptr), nullptr);
    if (row.handle) {
        *row.handle = control;
    }
}

}  // namespace

void CreateControls(HWND parent, std::span<const ControlRow> rows) {
    for (const ControlRow& row : rows) {
        CreateControl(parent, row);
    }
}

void ApplyUiFont(HWND window) {
    if (!window || !UiFont) {
        return;
    }
    const WPARAM font = reinterpret_cast<WPARAM>(UiFont);
    SendMessageW(window, WM_SETFONT, font, TRUE);
    for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        SendMessageW(child, WM_SETFONT, font, TRUE);
    }
}

LRESULT ColorControl(WPARAM wParam) {
    const HDC context = reinterpret_cast<HDC>(wParam);
    SetBkMode(context, OPAQUE);
    SetBkColor(context, RGB(255, 255, 255));
    SetTextColor(context, RGB(0, 0, 0));
    return reinterpret_cast<LRESULT>(BackgroundBrush);
}

bool RaiseOrCreate(const ToolWindow& tool, std::span<const ControlRow> rows) {
    if (*tool.handle) {
        // It is still hidden if memory ran out while it was being filled.
        ShowWindow(*tool.handle, SW_SHOW);
        SetForegroundWindow(*tool.handle);
        return false;
    }
    RegisterWindowClass(tool.className, tool.procedure);
    *tool.handle = CreateWindowExW(WS_EX_DLGMODALFRAME, tool.className, tool.title, tool.style, CW_USEDEFAULT,
                                   CW_USEDEFAULT, tool.width, tool.height, MainWindowHandle, nullptr,
                                   GetModuleHandleW(nullptr), nullptr);
    if (!*tool.handle) {
        return false;
    }
    CreateControls(*tool.handle, rows);
    return true;
}
