#include "ui/status_window.h"

#include <string>
#include <vector>

#include "config/forwarding_settings.h"
#include "core/app_paths.h"
#include "mib/mib_folder.h"
#include "mib/name_store.h"
#include "platform/clock.h"
#include "trap/server_state.h"
#include "ui/exception_guard.h"
#include "ui/mib_import.h"
#include "ui/status_text.h"
#include "ui/window_helpers.h"

HWND StatusWindowHandle = nullptr;

namespace {

HWND StatusServerLabel = nullptr;
HWND StatusListenLabel = nullptr;
HWND StatusForwardLabel = nullptr;
HWND StatusLastTrapLabel = nullptr;
HWND StatusPathsLabel = nullptr;
HWND StatusCountsLabel = nullptr;
HWND MibListBox = nullptr;

constexpr int ImportCommand = 500;
constexpr int DeleteCommand = 501;
constexpr UINT_PTR RefreshTimer = 1003;
constexpr UINT RefreshMilliseconds = 700;

constexpr ControlRow StatusControls[] = {
    {L"STATIC", L"", 0, 0, 12, 12, 680, 20, 0, &StatusServerLabel},
    {L"STATIC", L"", 0, 0, 12, 36, 680, 20, 0, &StatusListenLabel},
    {L"STATIC", L"", 0, 0, 12, 60, 680, 20, 0, &StatusForwardLabel},
    {L"STATIC", L"", 0, 0, 12, 84, 680, 20, 0, &StatusLastTrapLabel},
    {L"STATIC", L"", 0, 0, 12, 112, 680, 44, 0, &StatusPathsLabel},
    {L"STATIC", L"", 0, 0, 12, 164, 680, 20, 0, &StatusCountsLabel},
    {L"STATIC", L"Imported MIB files:", 0, 0, 12, 190, 200, 20, 0, nullptr},
    {L"LISTBOX", L"", WS_VSCROLL | LBS_NOTIFY, WS_EX_CLIENTEDGE, 12, 212, 680, 240, 0, &MibListBox},
    {L"BUTTON", L"Import MIB Files", 0, 0, 12, 466, 150, 30, ImportCommand, nullptr},
    {L"BUTTON", L"Delete all MIBs", 0, 0, 172, 466, 150, 30, DeleteCommand, nullptr},
};

size_t SumLengths(const std::vector<std::wstring>& names) {
    size_t characters = 0;
    for (const std::wstring& name : names) {
        characters += name.size() + 1;
    }
    return characters;
}

// Kept: the list is refilled whole each time and so loses its selection and its place; what is shown is
// always what the folder holds. Filled with redrawing off and into reserved storage, it does not flicker.
void RefillMibList(const std::vector<std::wstring>& names) {
    // As many names as before are drawn over each other; erasing first would be a white flash every time.
    const bool erase = SendMessageW(MibListBox, LB_GETCOUNT, 0, 0) != static_cast<LRESULT>(names.size());
    SendMessageW(MibListBox, WM_SETREDRAW, FALSE, 0);
    SendMessageW(MibListBox, LB_RESETCONTENT, 0, 0);
    SendMessageW(MibListBox, LB_INITSTORAGE, names.size(),
                 static_cast<LPARAM>(SumLengths(names) * sizeof(wchar_t)));
    for (const std::wstring& name : names) {
        SendMessageW(MibListBox, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(name.c_str()));
    }
    SendMessageW(MibListBox, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(MibListBox, nullptr, erase);
}

void ShowServerState() {
    const bool running = ServerState.running.load();
    const bool listenerOpen = ServerState.listenerSocket != nullptr;
    SetWindowTextW(StatusServerLabel, BuildServerText(running).c_str());
    SetWindowTextW(StatusListenLabel, BuildListenText(running, listenerOpen).c_str());
}

void ShowForwarding() {
    const ForwardingTarget target = CopyForwardingTarget();
    const bool enabled = ForwardingSettings.forwardingEnabled.load();
    SetWindowTextW(StatusForwardLabel, BuildForwardText(enabled, target.ip, target.port).c_str());
}

// The folder is listed before the count takes its lock, so that a slow disk never holds up a trap's lookup.
void ShowMibs() {
    const std::vector<std::wstring> names = ListMibFiles();
    const auto fileCount = static_cast<int32_t>(names.size());
    SetWindowTextW(StatusCountsLabel, BuildCountsText(fileCount, CountOidNames()).c_str());
    RefillMibList(names);
}

// The tick is read before the clock, so that a trap arriving in between cannot make its age negative.
void ShowLastTrap() {
    const uint64_t tick = ServerState.lastTrapTick.load();
    const std::wstring sender = CopyLastTrapSender();
    SetWindowTextW(StatusLastTrapLabel, BuildLastTrapText(tick, sender, ReadTickCount()).c_str());
}

}  // namespace

void RefreshStatus() {
    if (!StatusWindowHandle) {
        return;
    }
    ShowServerState();
    ShowForwarding();
    SetWindowTextW(StatusPathsLabel, BuildPathsText(AppPaths.dataDir, AppPaths.mibsDir).c_str());
    ShowMibs();
    ShowLastTrap();
}

namespace {

void OnTimer(WPARAM timer) {
    if (timer == RefreshTimer) {
        RefreshStatus();
    }
}

void OnDestroy(HWND window) {
    KillTimer(window, RefreshTimer);
    StatusWindowHandle = nullptr;
}

bool RunCommand(int command) {
    switch (command) {
        case ImportCommand:
            ImportMibFiles();
            return true;
        case DeleteCommand:
            DeleteAllMibs();
            return true;
        default:
            return false;
    }
}

LRESULT CALLBACK StatusWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CTLCOLOREDIT:
        case WM_CTLCOLORSTATIC:
            return ColorControl(wParam);
        case WM_TIMER:
            OnTimer(wParam);
            return 0;
        case WM_DESTROY:
            OnDestroy(window);
            return 0;
        case WM_CLOSE:
            DestroyWindow(window);
            return 0;
        case WM_COMMAND:
            if (RunCommand(LOWORD(wParam))) {
                return 0;
            }
            break;
        default:
            break;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

// The frame can be resized while the controls keep their places: there is nothing to show more of.
constexpr DWORD StatusStyle = WS_CAPTION | WS_SYSMENU | WS_THICKFRAME;

constexpr ToolWindow StatusTool = {
    L"SNMP_STATUS_WND", L"Status", StatusStyle, 720, 560, GuardedProc<StatusWindowProc>, &StatusWindowHandle,
};

}  // namespace

void OpenStatusWindow() {
    if (!RaiseOrCreate(StatusTool, StatusControls)) {
        return;
    }
    ApplyUiFont(StatusWindowHandle);
    RefreshStatus();
    SetTimer(StatusWindowHandle, RefreshTimer, RefreshMilliseconds, nullptr);
    ShowWindow(StatusWindowHandle, SW_SHOW);
}
