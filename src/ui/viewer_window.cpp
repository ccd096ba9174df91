#include "ui/viewer_window.h"

#include <cstdint>
#include <span>
#include <string>
#include <utility>

#include "core/activity_log.h"
#include "core/app_paths.h"
#include "core/data_files.h"
#include "core/run_guarded.h"
#include "platform/files.h"
#include "platform/windows/windows_headers.h"
#include "ui/exception_guard.h"
#include "ui/window_helpers.h"

namespace {

HWND MonitorWindowHandle = nullptr;
HWND MonitorEdit = nullptr;
uint64_t MonitorShownSize = 0;  // octets of SNMP.txt that the view has taken in

HWND LogWindowHandle = nullptr;
HWND LogEdit = nullptr;
uint64_t LogShownSize = 0;  // octets of log.txt that the view has taken in

constexpr int kClearMonitorCommand = 300;
constexpr int kClearLogCommand = 400;
constexpr UINT_PTR kMonitorTimer = 1001;
constexpr UINT_PTR kLogTimer = 1002;
constexpr UINT kPollMilliseconds = 400;

// No horizontal scrolling, so long lines wrap.
constexpr DWORD kViewStyle = WS_VSCROLL | ES_MULTILINE | ES_AUTOVSCROLL | ES_READONLY;

constexpr ControlPlace kViewPlace = {.x = 12, .y = 12, .width = 940, .height = 460};

constexpr ControlRow kMonitorControls[] = {
    {.className = L"EDIT",
     .style = kViewStyle,
     .exStyle = WS_EX_CLIENTEDGE,
     .place = kViewPlace,
     .handle = &MonitorEdit},
    {.className = L"BUTTON",
     .text = L"Clear SNMP Traps",
     .place = {.x = 12, .y = 482, .width = 160, .height = 30},
     .id = kClearMonitorCommand},
};
constexpr ControlRow kLogControls[] = {
    {.className = L"EDIT",
     .style = kViewStyle,
     .exStyle = WS_EX_CLIENTEDGE,
     .place = kViewPlace,
     .handle = &LogEdit},
    {.className = L"BUTTON",
     .text = L"Clear Log",
     .place = {.x = 12, .y = 482, .width = 120, .height = 30},
     .id = kClearLogCommand},
};

// All in which the twins differ.
struct ViewerKind {
    ToolWindow tool;
    std::span<const ControlRow> controls;
    HWND* edit;
    uint64_t* shownSize;
    const std::wstring* file;
    UINT_PTR pollTimer;
    int clearCommand;
    const wchar_t* clearedLine;
};

LRESULT CALLBACK MonitorWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT CALLBACK LogWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// The frame can be resized while the controls keep their places.
constexpr DWORD kViewerStyle = WS_CAPTION | WS_SYSMENU | WS_THICKFRAME;
constexpr int kViewerWidth = 980;
constexpr int kViewerHeight = 560;

constexpr ViewerKind kMonitorKind = {
    .tool = {.className = L"SNMP_MON_WND",
             .title = L"Monitor (SNMP.txt)",
             .style = kViewerStyle,
             .width = kViewerWidth,
             .height = kViewerHeight,
             .procedure = GuardedProc<MonitorWindowProc>,
             .handle = &MonitorWindowHandle},
    .controls = kMonitorControls,
    .edit = &MonitorEdit,
    .shownSize = &MonitorShownSize,
    .file = &AppPaths.trapFilePath,
    .pollTimer = kMonitorTimer,
    .clearCommand = kClearMonitorCommand,
    .clearedLine = L"SNMP.txt cleared.",
};
constexpr ViewerKind kLogKind = {
    .tool = {.className = L"SNMP_LOG_WND",
             .title = L"Log (log.txt)",
             .style = kViewerStyle,
             .width = kViewerWidth,
             .height = kViewerHeight,
             .procedure = GuardedProc<LogWindowProc>,
             .handle = &LogWindowHandle},
    .controls = kLogControls,
    .edit = &LogEdit,
    .shownSize = &LogShownSize,
    .file = &AppPaths.logFilePath,
    .pollTimer = kLogTimer,
    .clearCommand = kClearLogCommand,
    .clearedLine = L"log.txt cleared.",
};

// The size is asked without FileLock: a poll that finds nothing new costs one attribute query and holds
// nobody up.
uint64_t QueryViewedSize(const ViewerKind& kind) {
    return QueryFileSize(*kind.file).value_or(0);
}

// Kept: what the file gains between the size and the reading is read again by the next poll and shows twice.
// The other order would lose it.
//
// Kept: ReadWholeFile takes each octet for a character, ReadFileFrom decodes. One and the same character
// outside ASCII can look different in the part shown at opening and in the part that came later; the file is
// what counts.
//
// A file too large for memory leaves the view empty but the window usable: its clear button is what
// helps then.
void ShowWholeFile(const ViewerKind& kind) {
    *kind.shownSize = QueryViewedSize(kind);
    RunGuarded([&kind] { SetWindowTextW(*kind.edit, ReadWholeFile(*kind.file).c_str()); });
}

void AppendToView(HWND edit, const std::wstring& text) {
    if (text.empty() || !edit) {
        return;
    }
    const int end = GetWindowTextLengthW(edit);
    SendMessageW(edit, EM_SETSEL, static_cast<WPARAM>(end), end);
    SendMessageW(edit, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(text.c_str()));
}

void EmptyView(const ViewerKind& kind, uint64_t shownSize) {
    *kind.shownSize = shownSize;
    SetWindowTextW(*kind.edit, L"");
}

// Kept: a file that became shorter empties the view and is not read again; it was cleared or replaced, and
// only what is added from here on is news.
void PollViewer(const ViewerKind& kind) {
    const uint64_t size = QueryViewedSize(kind);
    if (size == *kind.shownSize) {
        return;
    }
    if (size < *kind.shownSize) {
        EmptyView(kind, size);
        return;
    }
    // Taken as shown even when memory does not suffice for it: trying again at every poll would hold the file
    // lock, and with it the receiver, for nothing.
    const uint64_t from = std::exchange(*kind.shownSize, size);
    RunGuarded([&] { AppendToView(*kind.edit, ReadFileFrom(*kind.file, from)); });
}

// The log's own line about it lands in the emptied log.txt and is shown by the next poll.
void ClearViewer(const ViewerKind& kind) {
    ClearFile(*kind.file);
    EmptyView(kind, 0);
    LogMessage(kind.clearedLine);
}

void OnTimer(const ViewerKind& kind, WPARAM timer) {
    if (timer == kind.pollTimer) {
        PollViewer(kind);
    }
}

void OnDestroy(const ViewerKind& kind, HWND window) {
    KillTimer(window, kind.pollTimer);
    *kind.tool.handle = nullptr;
}

LRESULT HandleViewerMessage(const ViewerKind& kind, HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_TIMER:
            OnTimer(kind, wParam);
            return 0;
        case WM_DESTROY:
            OnDestroy(kind, window);
            return 0;
        case WM_CLOSE:
            DestroyWindow(window);
            return 0;
        case WM_COMMAND:
            if (LOWORD(wParam) == kind.clearCommand) {
                ClearViewer(kind);
                return 0;
            }
            break;
        case WM_CTLCOLOREDIT:
        case WM_CTLCOLORSTATIC:
            return ColorControl(wParam);
        default:
            break;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

LRESULT CALLBACK MonitorWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return HandleViewerMessage(kMonitorKind, window, message, wParam, lParam);
}

LRESULT CALLBACK LogWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return HandleViewerMessage(kLogKind, window, message, wParam, lParam);
}

// Zero stands for the greatest limit there is. The default of about 32,000 characters would make a monitor
// that was left open stop showing what arrives.
void LiftTextLimit(HWND edit) {
    SendMessageW(edit, EM_SETLIMITTEXT, 0, 0);
}

void OpenViewer(const ViewerKind& kind) {
    if (!RaiseOrCreate(kind.tool, kind.controls)) {
        return;
    }
    const HWND window = *kind.tool.handle;
    LiftTextLimit(*kind.edit);
    ApplyUiFont(window);
    ShowWholeFile(kind);
    SetTimer(window, kind.pollTimer, kPollMilliseconds, nullptr);
    ShowWindow(window, SW_SHOW);
}

}  // namespace

void OpenMonitorWindow() {
    OpenViewer(kMonitorKind);
}

void OpenLogWindow() {
    OpenViewer(kLogKind);
}
