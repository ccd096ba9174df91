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

namespace {

HWND StatusWindowHandle = nullptr;  // null while the window is closed
HWND StatusServerLabel = nullptr;
HWND StatusListenLabel = nullptr;
HWND StatusForwardLabel = nullptr;
HWND StatusLastTrapLabel = nullptr;
HWND StatusPathsLabel = nullptr;
HWND StatusCountsLabel = nullptr;
HWND MibListBox = nullptr;

constexpr int kImportCommand = 500;
constexpr int kDeleteCommand = 501;
constexpr UINT_PTR kRefreshTimer = 1003;
constexpr UINT kRefreshMilliseconds = 700;

constexpr ControlRow kStatusControls[] = {
    {.className = L"STATIC", .place = {12, 12, 680, 20}, .handle = &StatusServerLabel},
    {.className = L"STATIC", .place = {12, 36, 680, 20}, .handle = &StatusListenLabel},
    {.className = L"STATIC", .place = {12, 60, 680, 20}, .handle = &StatusForwardLabel},
    {.className = L"STATIC", .place = {12, 84, 680, 20}, .handle = &StatusLastTrapLabel},
    {.className = L"STATIC", .place = {12, 112, 680, 44}, .handle = &StatusPathsLabel},
    {.className = L"STATIC", .place = {12, 164, 680, 20}, .handle = &StatusCountsLabel},
    {.className = L"STATIC", .text = L"Imported MIB files:", .place = {12, 190, 200, 20}},
    {.className = L"LISTBOX",
     .style = WS_VSCROLL | LBS_NOTIFY,
     .exStyle = WS_EX_CLIENTEDGE,
     .place = {12, 212, 680, 240},
     .handle = &MibListBox},
    {.className = L"BUTTON", .text = L"Import MIB Files", .place = {12, 466, 150, 30}, .id = kImportCommand},
    {.className = L"BUTTON", .text = L"Delete all MIBs", .place = {172, 466, 150, 30}, .id = kDeleteCommand},
};

// Intentional: the list is refilled each time, so that it always shows the folder's content. It loses its
// selection and scroll position.
void RefillMibList(const std::vector<std::wstring>& names) {
    // With as many names as before, each new row covers an old one. Erasing the background would flicker.
    const bool erase = SendMessageW(MibListBox, LB_GETCOUNT, 0, 0) != static_cast<LRESULT>(names.size());
    SendMessageW(MibListBox, WM_SETREDRAW, FALSE, 0);
    SendMessageW(MibListBox, LB_RESETCONTENT, 0, 0);
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
    const ForwardingValues forwarding = CopyForwarding();
    SetWindowTextW(StatusForwardLabel,
                   BuildForwardText(forwarding.enabled, forwarding.ip, forwarding.port).c_str());
}

// Lists the folder without MibStoreLock, so that no trap's lookup waits for this.
void ShowMibs() {
    const std::vector<std::wstring> names = ListMibFiles();
    const auto fileCount = static_cast<int32_t>(names.size());
    SetWindowTextW(StatusCountsLabel, BuildCountsText(fileCount, CountOidNames()).c_str());
    RefillMibList(names);
}

// Reads lastTrapTick before the clock, so that a trap that arrives in between cannot have a negative age.
void ShowLastTrap() {
    const uint64_t tick = ServerState.lastTrapTick.load();
    const std::wstring sender = CopyLastTrapSender();
    SetWindowTextW(StatusLastTrapLabel, BuildLastTrapText(tick, sender, ReadTickCount()).c_str());
}

// Updates every text and the whole list. Does nothing while the window is closed.
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

void OnTimer(WPARAM timer) {
    if (timer == kRefreshTimer) {
        RefreshStatus();
    }
}

void OnDestroy(HWND window) {
    KillTimer(window, kRefreshTimer);
    StatusWindowHandle = nullptr;
}

bool RunCommand(int command) {
    switch (command) {
        case kImportCommand:
            if (ImportMibFiles(StatusWindowHandle)) {
                RefreshStatus();
            }
            return true;
        case kDeleteCommand:
            if (DeleteAllMibs(StatusWindowHandle)) {
                RefreshStatus();
            }
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

constexpr ToolWindow kStatusTool = {
    .className = L"SNMP_STATUS_WND",
    .title = L"Status",
    // Intentional: resizing the frame does not move the controls.
    .style = WS_CAPTION | WS_SYSMENU | WS_THICKFRAME,
    .width = 720,
    .height = 560,
    .procedure = GuardedProc<StatusWindowProc>,
    .handle = &StatusWindowHandle,
};

}  // namespace

void OpenStatusWindow() {
    if (!RaiseOrCreate(kStatusTool, kStatusControls)) {
        return;
    }
    ApplyUiFont(StatusWindowHandle);
    // The timer is set first: if memory runs out below, the next click still shows a window that refreshes.
    SetTimer(StatusWindowHandle, kRefreshTimer, kRefreshMilliseconds, nullptr);
    RefreshStatus();
    ShowWindow(StatusWindowHandle, SW_SHOW);
}
