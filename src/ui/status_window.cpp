#include "ui/status_window.h"

#include <array>
#include <string>
#include <vector>

#include "config/forwarding_settings.h"
#include "core/app_paths.h"
#include "core/run_guarded.h"
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

constexpr int kImportCommand = 500;
constexpr int kDeleteCommand = 501;
constexpr UINT_PTR kRefreshTimer = 1003;
constexpr UINT kRefreshMilliseconds = 700;

// Places one below the other: a line put in between moves all that stands below it.
class Stack {
  public:
    struct Step {
        int gap;
        int height = 20;  // one line of text
        int width = 680;
    };
    constexpr ControlPlace Below(Step step) {
        top_ = bottom_ + step.gap;
        bottom_ = top_ + step.height;
        right_ = kLeft + step.width;
        return {.x = kLeft, .y = top_, .width = step.width, .height = step.height};
    }

    struct SideStep {
        int gap;
        int width;
    };
    constexpr ControlPlace Beside(SideStep step) {
        const int left = right_ + step.gap;
        right_ = left + step.width;
        return {.x = left, .y = top_, .width = step.width, .height = bottom_ - top_};
    }

  private:
    static constexpr int kLeft = 12;
    int top_ = 0;
    int bottom_ = 0;
    int right_ = 0;
};

constexpr auto kStatusControls = [] {
    Stack stack;
    return std::to_array<ControlRow>({
        {.className = L"STATIC", .place = stack.Below({.gap = 12}), .handle = &StatusServerLabel},
        {.className = L"STATIC", .place = stack.Below({.gap = 4}), .handle = &StatusListenLabel},
        {.className = L"STATIC", .place = stack.Below({.gap = 4}), .handle = &StatusForwardLabel},
        {.className = L"STATIC", .place = stack.Below({.gap = 4}), .handle = &StatusLastTrapLabel},
        {.className = L"STATIC", .place = stack.Below({.gap = 8, .height = 44}), .handle = &StatusPathsLabel},
        {.className = L"STATIC", .place = stack.Below({.gap = 8}), .handle = &StatusCountsLabel},
        {.className = L"STATIC",
         .text = L"Imported MIB files:",
         .place = stack.Below({.gap = 6, .width = 200})},
        {.className = L"LISTBOX",
         .style = WS_VSCROLL | LBS_NOTIFY,
         .exStyle = WS_EX_CLIENTEDGE,
         .place = stack.Below({.gap = 2, .height = 240}),
         .handle = &MibListBox},
        {.className = L"BUTTON",
         .text = L"Import MIB Files",
         .place = stack.Below({.gap = 14, .height = 30, .width = 150}),
         .id = kImportCommand},
        {.className = L"BUTTON",
         .text = L"Delete all MIBs",
         .place = stack.Beside({.gap = 10, .width = 150}),
         .id = kDeleteCommand},
    });
}();

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
    const ForwardingValues forwarding = CopyForwarding();
    SetWindowTextW(StatusForwardLabel,
                   BuildForwardText(forwarding.enabled, forwarding.ip, forwarding.port).c_str());
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
            ImportMibFiles();
            return true;
        case kDeleteCommand:
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

constexpr ToolWindow kStatusTool = {
    .className = L"SNMP_STATUS_WND",
    .title = L"Status",
    // The frame can be resized while the controls keep their places: there is nothing to show more of.
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
    // A refresh for which there is no memory leaves texts empty until the next; a window that is never shown
    // would leave its button without effect.
    RunGuarded(RefreshStatus);
    SetTimer(StatusWindowHandle, kRefreshTimer, kRefreshMilliseconds, nullptr);
    ShowWindow(StatusWindowHandle, SW_SHOW);
}
