// Start-up, the message loop, and shutdown. The only file that knows every module.
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

// Returns on the quit message, or if GetMessageW fails.
void RunMessageLoop() {
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

}  // namespace

// Intentional: the exit code is always 0, so that a script or task that starts the program never reports a
// failure.
int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int showCommand) {
    InitCommonControls();
    CreateBackgroundBrush();
    CreateUiFont();
    RunGuarded(InitAppPaths);
    if (!StartSocketLibrary()) {
        // Intentional: ends silently, without a window. The system frees the brush and the font.
        return 0;
    }
    RunGuarded(LoadConfig);
    RunGuarded(LoadMibFolder);
    if (OpenMainWindow(showCommand)) {
        RunMessageLoop();
        // Destroying the main window has stopped the receiver already, unless GetMessageW failed.
        RunGuarded(StopServer);
    }
    StopSocketLibrary();
    DeleteUiResources();
    // Returning would destroy paths and locks that a worker still uses if a hung disk made it outlive its
    // stop.
    ExitProcess(0);
}
