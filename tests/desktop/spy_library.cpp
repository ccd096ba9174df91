// Loaded into the program under test by a message hook. Reads what another process cannot read (a control's
// font, a window class's brush, a window's replies to the colouring messages) and logs every timer message.
#include "tests/desktop/spy_calls.h"
#include "tests/desktop/spy_memory.h"

namespace {

SpyMemory* memory = nullptr;
UINT spyMessage = 0;

// The view stays mapped as long as the library is loaded.
void OpenSharedMemory() {
    const HANDLE mapping = OpenFileMappingW(FILE_MAP_ALL_ACCESS, FALSE, kSpyMemoryName);
    if (mapping != nullptr) {
        memory =
            static_cast<SpyMemory*>(MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, sizeof(SpyMemory)));
        CloseHandle(mapping);
    }
}

SpyBrush DescribeBrush(HBRUSH brush) {
    LOGBRUSH description = {};
    const bool isBrush = GetObjectW(brush, sizeof(description), &description) != 0;
    return {reinterpret_cast<uint64_t>(brush), isBrush && description.lbStyle == BS_SOLID ? 1u : 0u,
            description.lbColor};
}

void AnswerWindow(HWND window, SpyAnswer& answer) {
    const auto font = reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0));
    answer.font = reinterpret_cast<uint64_t>(font);
    GetObjectW(font, sizeof(answer.logicalFont), &answer.logicalFont);
    answer.classBrush = DescribeBrush(reinterpret_cast<HBRUSH>(GetClassLongPtrW(window, GCLP_HBRBACKGROUND)));
    answer.classStyle = GetClassLongW(window, GCL_STYLE);
    const auto cursor = reinterpret_cast<HCURSOR>(GetClassLongPtrW(window, GCLP_HCURSOR));
    answer.classHasArrow = cursor == LoadCursorW(nullptr, IDC_ARROW) ? 1u : 0u;
    answer.classHasIcon = GetClassLongPtrW(window, GCLP_HICON) != 0 ? 1u : 0u;
    answer.classHasMenu = GetClassLongPtrW(window, GCLP_MENUNAME) != 0 ? 1u : 0u;
}

void AnswerColouring(HWND control, UINT message, SpyAnswer& answer) {
    const HDC context = GetDC(control);
    SetBkMode(context, TRANSPARENT);
    SetBkColor(context, RGB(1, 2, 3));
    SetTextColor(context, RGB(4, 5, 6));
    const LRESULT brush = SendMessageW(GetParent(control), message, reinterpret_cast<WPARAM>(context),
                                       reinterpret_cast<LPARAM>(control));
    answer.controlBrush = DescribeBrush(reinterpret_cast<HBRUSH>(brush));
    answer.backgroundMode = static_cast<uint32_t>(GetBkMode(context));
    answer.backgroundColour = GetBkColor(context);
    answer.textColour = GetTextColor(context);
    ReleaseDC(control, context);
}

// GetGuiResources returns 0 under Wine. GetObjectType needs only the low half of a handle.
uint32_t CountGdiObjects() {
    uint32_t count = 0;
    for (UINT_PTR index = 1; index < 0x10000; ++index) {
        if (GetObjectType(reinterpret_cast<HGDIOBJ>(index)) != 0) {
            ++count;
        }
    }
    return count;
}

// GetProcessHandleCount returns 0 under Wine. Handles are multiples of four and the lowest free one is used
// next, so leaked handles fill the range from below.
uint32_t CountKernelHandles() {
    uint32_t count = 0;
    for (UINT_PTR value = 4; value < 0x8000; value += 4) {
        DWORD flags = 0;
        if (GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags)) {
            ++count;
        }
    }
    return count;
}

void AnswerQuestion(const CWPSTRUCT& message) {
    SpyAnswer answer = {};
    switch (static_cast<SpyQuestion>(message.wParam)) {
        case SpyQuestion::window:
            AnswerWindow(message.hwnd, answer);
            break;
        case SpyQuestion::colouring:
            AnswerColouring(message.hwnd, static_cast<UINT>(message.lParam), answer);
            break;
        case SpyQuestion::resources:
            answer.gdiObjects = CountGdiObjects();
            answer.kernelHandles = CountKernelHandles();
            break;
        case SpyQuestion::folder:
            GetCurrentDirectoryW(MAX_PATH, answer.currentFolder);
            break;
        case SpyQuestion::killTimer:
            KillTimer(message.hwnd, static_cast<UINT_PTR>(message.lParam));
            break;
    }
    answer.answered = 1;
    memory->answer = answer;
}

void LogTimer(const MSG& message) {
    SpyTimerEvent& event = memory->timers[memory->timerCount % kSpyTimerEvents];
    event.window = reinterpret_cast<uint64_t>(message.hwnd);
    event.timer = message.wParam;
    event.tick = GetTickCount64();
    memory->timerCount = memory->timerCount + 1;
}

}  // namespace

extern "C" __declspec(dllexport) LRESULT CALLBACK OnSentMessage(int code, WPARAM wParam, LPARAM lParam) {
    const auto* message = reinterpret_cast<const CWPSTRUCT*>(lParam);
    if (code == HC_ACTION && memory != nullptr && message->message == spyMessage) {
        AnswerQuestion(*message);
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

extern "C" __declspec(dllexport) LRESULT CALLBACK OnFetchedMessage(int code, WPARAM wParam, LPARAM lParam) {
    const auto* message = reinterpret_cast<const MSG*>(lParam);
    if (code == HC_ACTION && wParam == PM_REMOVE && memory != nullptr && message->message == WM_TIMER) {
        LogTimer(*message);
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        spyMessage = RegisterWindowMessageW(kSpyMessageName);
        OpenSharedMemory();
        if (memory != nullptr && memory->program == GetCurrentProcessId()) {
            InterceptCalls(*memory);
        }
    }
    return TRUE;
}
