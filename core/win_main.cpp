// Start-up, the one message loop of the process, and shutdown; the one place that knows every part of
// the program.
// clang-format off
#include "platform/windows/windows_headers.h"
#include <commctrl.h>
// clang-format on

#include "config/config_file.h"
#include "core/app_paths.h"
#include "mib/mib_folder.h"
#include "platform/udp_socket.h"
#include "trap/server_control.h"
#include "ui/exception_guard.h"
#include "ui/main_window.h"
#include "ui/ui_resources.h"
#include "ui/window_helpers.h"

namespace {

constexpr wchar_t MainClass[] = L"SNMP_MAIN_WND";
constexpr wchar_t MainTitle[] = L"Quillmont PRO v1.0 (SNMP v1 and v2c) -  \u00A9 2026 Quillmont";

// No sizing border and no maximize box: the strip has one size.
constexpr DWORD MainStyle = WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX;

HWND CreateMainWindow(HINSTANCE instance) {
    RegisterWindowClass(MainClass, GuardedProc<MainWindowProc>);
    return CreateWindowExW(0, MainClass, MainTitle, MainStyle, CW_USEDEFAULT, CW_USEDEFAULT, 694, 90, nullptr,
                           nullptr, instance, nullptr);
}

// Returns at the quit message, and at a fetch that fails.
void RunMessageLoop() {
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

void RunMainWindow(HINSTANCE instance, int showCommand) {
    MainWindowHandle = CreateMainWindow(instance);
    if (!MainWindowHandle) {
        return;
    }
    ApplyUiFont(MainWindowHandle);
    ShowWindow(MainWindowHandle, showCommand);
    UpdateWindow(MainWindowHandle);
    RunMessageLoop();
    // The main window's end has stopped the receiver; a loop that broke off has not.
    RunGuarded(StopServer);
}

}  // namespace

// Kept: the exit code is always 0, so that whatever starts the program at logon never reports a failure.
int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int showCommand) {
    InitCommonControls();
    CreateBackgroundBrush();
    CreateUiFont();
    RunGuarded(InitAppPaths);
    if (!StartSocketLibrary()) {
        // Kept: ends without a window and without a word; the process takes its brush and font with it.
        return 0;
    }
    RunGuarded(LoadConfig);
    RunGuarded(LoadMibFolder);
    RunMainWindow(instance, showCommand);
    StopSocketLibrary();
    DeleteUiResources();
    // Not by returning: that would destroy paths and locks under a worker that outlived its stop (a
    // hung disk).
    ExitProcess(0);
}
