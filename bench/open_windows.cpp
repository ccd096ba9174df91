// Opens the monitor, the log and the status window of the Quillmont that runs on this desktop.
// Returns 0 when all three stand.
#include <initializer_list>

#include "platform/windows/windows_headers.h"

int main() {
    const HWND mainWindow = FindWindowW(L"SNMP_MAIN_WND", nullptr);
    // The main window's buttons: Monitor, Log, Status.
    for (const WPARAM command : {102, 103, 104}) {
        SendMessageW(mainWindow, WM_COMMAND, command, 0);
    }
    for (const wchar_t* name : {L"SNMP_MON_WND", L"SNMP_LOG_WND", L"SNMP_STATUS_WND"}) {
        if (!FindWindowW(name, nullptr)) {
            return 1;
        }
    }
    return 0;
}
