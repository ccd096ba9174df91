// Start-up, the one message loop of the process, and shutdown; the one place that knows every part of
// the program.
// clang-format off
#include "platform/windows/windows_headers.h"
#include <commctrl.h>
// clang-format on

#include "config/config_file.h"
#include "core/app_paths.h"
#include "core/run_guarded.h"
#include "mib/mib_folder.h"
#include "platform/udp_socket.h"
#include "trap/server_control.h"
#include "ui/exception_guard.h"
#include "ui/main_window.h"
#include "ui/ui_resources.h"

namespace {

// Returns at the quit message, and at a fetch that fails.
void RunMessageLoop() {
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

}  // namespace

// Intentional: the exit code is always 0, so that what starts the program at sign-in never reports a failure.
int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int showCommand) {
    InitCommonControls();
    CreateBackgroundBrush();
    CreateUiFont();
    RunGuarded(InitAppPaths);
    if (!StartSocketLibrary()) {
        // Intentional: ends silently and without a window. The system frees the brush and the font.
        return 0;
    }
    RunGuarded(LoadConfig);
    RunGuarded(LoadMibFolder);
    if (OpenMainWindow(showCommand)) {
        RunMessageLoop();
        // The main window's end has stopped the receiver; a loop that broke off has not.
        RunGuarded(StopServer);
    }
    StopSocketLibrary();
    DeleteUiResources();
    // Not by returning: that would destroy paths and locks under a worker that outlived its stop (a
    // hung disk).
    ExitProcess(0);
}
