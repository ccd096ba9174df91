#include "ui/main_window.h"

#include "config/config_file.h"
#include "trap/server_control.h"
#include "trap/server_state.h"
#include "ui/exception_guard.h"
#include "ui/forwarding_window.h"
#include "ui/scoped_gdi.h"
#include "ui/status_window.h"
#include "ui/ui_resources.h"
#include "ui/viewer_window.h"
#include "ui/window_helpers.h"

HWND StartButtonHandle = nullptr;

namespace {

constexpr int StartCommand = 100;
constexpr int ForwardingCommand = 101;
constexpr int MonitorCommand = 102;
constexpr int LogCommand = 103;
constexpr int StatusCommand = 104;

// Kept: the gaps between the buttons are 10, 8, 12 and 8 pixels; operators know the strip as it is.
constexpr ControlRow MainControls[] = {
    {L"BUTTON", L"Start server", 0, 0, 44, 10, 140, 32, StartCommand, &StartButtonHandle},
    {L"BUTTON", L"Forwarding", 0, 0, 194, 10, 140, 32, ForwardingCommand, nullptr},
    {L"BUTTON", L"Monitor", 0, 0, 342, 10, 140, 32, MonitorCommand, nullptr},
    {L"BUTTON", L"Log", 0, 0, 494, 10, 82, 32, LogCommand, nullptr},
    {L"BUTTON", L"Status", 0, 0, 584, 10, 80, 32, StatusCommand, nullptr},
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

}  // namespace

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
