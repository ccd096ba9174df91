#include "ui/main_window.h"

#include "config/config_file.h"
#include "core/run_guarded.h"
#include "trap/server_control.h"
#include "trap/server_state.h"
#include "ui/exception_guard.h"
#include "ui/forwarding_window.h"
#include "ui/status_window.h"
#include "ui/viewer_window.h"
#include "ui/window_helpers.h"

HWND MainWindowHandle = nullptr;

namespace {

HWND StartButtonHandle = nullptr;  // "Start server" or "Stop server"

constexpr int kStartCommand = 100;
constexpr int kForwardingCommand = 101;
constexpr int kMonitorCommand = 102;
constexpr int kLogCommand = 103;
constexpr int kStatusCommand = 104;

// Intentional: the gaps between the buttons are 10, 8, 12 and 8 pixels, as operators know them.
constexpr ControlRow kMainControls[] = {
    {.className = L"BUTTON",
     .text = L"Start server",
     .place = {44, 10, 140, 32},
     .id = kStartCommand,
     .handle = &StartButtonHandle},
    {.className = L"BUTTON", .text = L"Forwarding", .place = {194, 10, 140, 32}, .id = kForwardingCommand},
    {.className = L"BUTTON", .text = L"Monitor", .place = {342, 10, 140, 32}, .id = kMonitorCommand},
    {.className = L"BUTTON", .text = L"Log", .place = {494, 10, 82, 32}, .id = kLogCommand},
    {.className = L"BUTTON", .text = L"Status", .place = {584, 10, 80, 32}, .id = kStatusCommand},
};

void ShowRunning(bool running) {
    if (StartButtonHandle) {
        SetWindowTextW(StartButtonHandle, running ? L"Stop server" : L"Start server");
    }
}

void RepaintIndicator() {
    if (MainWindowHandle) {
        InvalidateRect(MainWindowHandle, nullptr, TRUE);
    }
}

void OnCreate(HWND window) {
    CreateControls(window, kMainControls);
    ApplyUiFont(window);
    ServerEvents.showRunning = ShowRunning;
    ServerEvents.repaint = RepaintIndicator;
    PostMessageW(window, WM_COMMAND, kStartCommand, 0);
}

void PaintIndicator(HWND window) {
    PAINTSTRUCT paint{};
    const HDC context = BeginPaint(window, &paint);
    const HBRUSH brush = CreateSolidBrush(ServerState.running.load() ? RGB(0, 180, 0) : RGB(200, 0, 0));
    const HGDIOBJ previous = SelectObject(context, brush);
    Ellipse(context, 16, 18, 34, 36);
    SelectObject(context, previous);
    DeleteObject(brush);
    EndPaint(window, &paint);
}

// Decides by the flag, which is the state itself; the button's text only shows it.
void ToggleServer() {
    if (ServerState.running.load()) {
        StopServer();
    } else {
        StartServer();
    }
}

bool RunCommand(int command) {
    switch (command) {
        case kStartCommand:
            ToggleServer();
            return true;
        case kForwardingCommand:
            OpenForwardingWindow();
            return true;
        case kMonitorCommand:
            OpenMonitorWindow();
            return true;
        case kLogCommand:
            OpenLogWindow();
            return true;
        case kStatusCommand:
            OpenStatusWindow();
            return true;
        default:
            return false;
    }
}

// Posts the quit message whatever fails before; without it the process would run on without a window.
void OnDestroy() {
    RunGuarded(StopServer);
    RunGuarded(SaveConfig);
    PostQuitMessage(0);
}

LRESULT CALLBACK MainWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CREATE:
            OnCreate(window);
            return 0;
        case WM_PAINT:
            PaintIndicator(window);
            return 0;
        case WM_COMMAND:
            if (RunCommand(LOWORD(wParam))) {
                return 0;
            }
            break;
        case WM_CTLCOLOREDIT:
        case WM_CTLCOLORSTATIC:
            return ColorControl(wParam);
        case WM_CLOSE:
            DestroyWindow(window);
            return 0;
        case WM_DESTROY:
            OnDestroy();
            return 0;
        default:
            break;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

constexpr wchar_t kMainClass[] = L"SNMP_MAIN_WND";
constexpr wchar_t kMainTitle[] = L"Quillmont PRO v1.0 (SNMP v1 and v2c) -  \u00A9 2026 Quillmont";

// No sizing border and no maximize box: the window has a fixed size.
constexpr DWORD kMainStyle = WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX;
constexpr int kMainWidth = 694;  // outer size in pixels
constexpr int kMainHeight = 90;

}  // namespace

bool OpenMainWindow(int showCommand) {
    RegisterWindowClass(kMainClass, GuardedProc<MainWindowProc>);
    MainWindowHandle =
        CreateWindowExW(0, kMainClass, kMainTitle, kMainStyle, CW_USEDEFAULT, CW_USEDEFAULT, kMainWidth,
                        kMainHeight, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    if (!MainWindowHandle) {
        return false;
    }
    ApplyUiFont(MainWindowHandle);
    ShowWindow(MainWindowHandle, showCommand);
    UpdateWindow(MainWindowHandle);
    return true;
}
