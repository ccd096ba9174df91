#include "ui/main_window.h"

#include "config/config_file.h"
#include "core/run_guarded.h"
#include "trap/server_control.h"
#include "trap/server_state.h"
#include "ui/exception_guard.h"
#include "ui/forwarding_window.h"
#include "ui/scoped_gdi.h"
#include "ui/status_window.h"
#include "ui/ui_resources.h"
#include "ui/viewer_window.h"
#include "ui/window_helpers.h"

namespace {

HWND StartButtonHandle = nullptr;  // "Start server" or "Stop server"

constexpr int StartCommand = 100;
constexpr int ForwardingCommand = 101;
constexpr int MonitorCommand = 102;
constexpr int LogCommand = 103;
constexpr int StatusCommand = 104;

// Kept: the gaps between the buttons are 10, 8, 12 and 8 pixels; operators know the strip as it is.
constexpr ControlRow MainControls[] = {
    {.className = L"BUTTON",
     .text = L"Start server",
     .place = {.x = 44, .y = 10, .width = 140, .height = 32},
     .id = StartCommand,
     .handle = &StartButtonHandle},
    {.className = L"BUTTON",
     .text = L"Forwarding",
     .place = {.x = 194, .y = 10, .width = 140, .height = 32},
     .id = ForwardingCommand},
    {.className = L"BUTTON",
     .text = L"Monitor",
     .place = {.x = 342, .y = 10, .width = 140, .height = 32},
     .id = MonitorCommand},
    {.className = L"BUTTON",
     .text = L"Log",
     .place = {.x = 494, .y = 10, .width = 82, .height = 32},
     .id = LogCommand},
    {.className = L"BUTTON",
     .text = L"Status",
     .place = {.x = 584, .y = 10, .width = 80, .height = 32},
     .id = StatusCommand},
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
    CreateControls(window, MainControls);
    ApplyUiFont(window);
    ServerEvents.showRunning = ShowRunning;
    ServerEvents.repaint = RepaintIndicator;
    PostMessageW(window, WM_COMMAND, StartCommand, 0);
}

void PaintIndicator(HWND window) {
    const ScopedPaint paint(window);
    const ScopedBrush brush(ServerState.running.load() ? RGB(0, 180, 0) : RGB(200, 0, 0));
    const ScopedSelect select(paint.context, brush.brush);
    Ellipse(paint.context, 16, 18, 34, 36);
}

// Asks the flag, not the button's text: a click that was waiting in the queue must not start twice.
void ToggleServer() {
    if (ServerState.running.load()) {
        StopServer();
    } else {
        StartServer();
    }
}

bool RunCommand(int command) {
    switch (command) {
        case StartCommand:
            ToggleServer();
            return true;
        case ForwardingCommand:
            OpenForwardingWindow();
            return true;
        case MonitorCommand:
            OpenMonitorWindow();
            return true;
        case LogCommand:
            OpenLogWindow();
            return true;
        case StatusCommand:
            OpenStatusWindow();
            return true;
        default:
            return false;
    }
}

// The quit message must go out whatever happens before it: without it the process would live on windowless.
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

constexpr wchar_t MainClass[] = L"SNMP_MAIN_WND";
constexpr wchar_t MainTitle[] = L"Quillmont PRO v1.0 (SNMP v1 and v2c) -  \u00A9 2026 Quillmont";

// No sizing border and no maximize box: the strip has one size.
constexpr DWORD MainStyle = WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX;
constexpr int MainWidth = 694;  // outer size in pixels
constexpr int MainHeight = 90;

}  // namespace

bool OpenMainWindow(int showCommand) {
    RegisterWindowClass(MainClass, GuardedProc<MainWindowProc>);
    MainWindowHandle =
        CreateWindowExW(0, MainClass, MainTitle, MainStyle, CW_USEDEFAULT, CW_USEDEFAULT, MainWidth,
                        MainHeight, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    if (!MainWindowHandle) {
        return false;
    }
    ApplyUiFont(MainWindowHandle);
    ShowWindow(MainWindowHandle, showCommand);
    UpdateWindow(MainWindowHandle);
    return true;
}
