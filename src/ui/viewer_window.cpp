#include "ui/viewer_window.h"

#include <cstdint>
#include <new>
#include <span>
#include <string>

#include "core/activity_log.h"
#include "core/app_paths.h"
#include "core/data_files.h"
#include "platform/files.h"
#include "platform/windows/windows_headers.h"
#include "ui/exception_guard.h"
#include "ui/view_text.h"
#include "ui/window_helpers.h"

namespace {

HWND MonitorWindowHandle = nullptr;
HWND MonitorEdit = nullptr;
uint64_t MonitorShownSize = 0;  // size of SNMP.txt at the last poll

HWND LogWindowHandle = nullptr;
HWND LogEdit = nullptr;
uint64_t LogShownSize = 0;  // size of log.txt at the last poll

constexpr int kClearMonitorCommand = 300;
constexpr int kClearLogCommand = 400;
constexpr UINT_PTR kMonitorTimer = 1001;
constexpr UINT_PTR kLogTimer = 1002;
constexpr UINT kPollMilliseconds = 400;

// No horizontal scrolling, so long lines wrap.
constexpr DWORD kViewStyle = WS_VSCROLL | ES_MULTILINE | ES_AUTOVSCROLL | ES_READONLY;

constexpr ControlPlace kViewPlace = {12, 12, 940, 460};

constexpr ControlRow kMonitorControls[] = {
    {.className = L"EDIT",
     .style = kViewStyle,
     .exStyle = WS_EX_CLIENTEDGE,
     .place = kViewPlace,
     .handle = &MonitorEdit},
    {.className = L"BUTTON",
     .text = L"Clear SNMP Traps",
     .place = {12, 482, 160, 30},
     .id = kClearMonitorCommand},
};
constexpr ControlRow kLogControls[] = {
    {.className = L"EDIT",
     .style = kViewStyle,
     .exStyle = WS_EX_CLIENTEDGE,
     .place = kViewPlace,
     .handle = &LogEdit},
    {.className = L"BUTTON", .text = L"Clear Log", .place = {12, 482, 120, 30}, .id = kClearLogCommand},
};

// Everything in which the two viewers differ.
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

// Intentional: resizing the frame does not move the controls.
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

// Does not lock FileLock, so a poll that finds nothing new blocks no other thread.
uint64_t QueryViewedSize(const ViewerKind& kind) {
    return QueryFileSize(*kind.file).value_or(0);
}

// The maximum number of characters. The edit control counts octets, two for each, in 31 bits.
constexpr uint64_t kLargestView = (uint64_t{1} << 30) - 1;

// Calls `add`, which adds the text of `octets` octets of the file to the view and returns whether the view
// accepted it. If it does not fit or memory runs out, replaces the whole text with a sentence that says so.
template <typename Add>
void AddOrExplain(const ViewerKind& kind, uint64_t octets, Add add) {
    bool added = false;
    try {
        const auto length = static_cast<uint64_t>(GetWindowTextLengthW(*kind.edit));
        added = length + octets <= kLargestView && add();
    } catch (const std::bad_alloc&) {
    }
    if (!added) {
        SetWindowTextW(*kind.edit, BuildTooLargeText(*kind.shownSize).c_str());
    }
}

// Intentional: the size is queried before the file is read. Text that is appended in between is read again by
// the next poll and shown twice; the other order would lose it.
//
// Intentional: ReadWholeFile returns one character for each octet, while ReadFileFrom decodes UTF-8. A
// character outside ASCII may therefore look different when it is read at opening and when it is appended
// later.
void ShowWholeFile(const ViewerKind& kind) {
    *kind.shownSize = QueryViewedSize(kind);
    AddOrExplain(kind, *kind.shownSize, [&kind] {
        const std::wstring text = BuildViewText(ReadWholeFile(*kind.file));
        SetWindowTextW(*kind.edit, text.c_str());
        return text.empty() || GetWindowTextLengthW(*kind.edit) > 0;
    });
}

bool AppendToView(HWND edit, const std::wstring& text) {
    if (text.empty()) {
        return true;
    }
    const int end = GetWindowTextLengthW(edit);
    SendMessageW(edit, EM_SETSEL, static_cast<WPARAM>(end), end);
    SendMessageW(edit, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(text.c_str()));
    return GetWindowTextLengthW(edit) > end;
}

void EmptyView(const ViewerKind& kind, uint64_t shownSize) {
    *kind.shownSize = shownSize;
    SetWindowTextW(*kind.edit, L"");
}

// Intentional: if the file became shorter, it was cleared or replaced. The view is emptied, and only text
// that is appended from now on is shown.
void PollViewer(const ViewerKind& kind) {
    const uint64_t size = QueryViewedSize(kind);
    const uint64_t shown = *kind.shownSize;
    if (size < shown) {
        EmptyView(kind, size);
    } else if (size > shown) {
        *kind.shownSize = size;
        AddOrExplain(kind, size - shown, [&kind, shown] {
            return AppendToView(*kind.edit, BuildViewText(ReadFileFrom(*kind.file, shown)));
        });
    }
}

// Logs last, so that the line about clearing log.txt is in the emptied file. The next poll shows it.
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

void OpenViewer(const ViewerKind& kind) {
    if (!RaiseOrCreate(kind.tool, kind.controls)) {
        return;
    }
    const HWND window = *kind.tool.handle;
    // 0 sets the highest limit. With the default of about 32,000 characters, a viewer that is left open would
    // stop showing new text.
    SendMessageW(*kind.edit, EM_SETLIMITTEXT, 0, 0);
    ApplyUiFont(window);
    // The timer is set first: if memory runs out below, the next click still shows a view that polls.
    SetTimer(window, kind.pollTimer, kPollMilliseconds, nullptr);
    ShowWholeFile(kind);
    ShowWindow(window, SW_SHOW);
}

}  // namespace

void OpenMonitorWindow() {
    OpenViewer(kMonitorKind);
}

void OpenLogWindow() {
    OpenViewer(kLogKind);
}
