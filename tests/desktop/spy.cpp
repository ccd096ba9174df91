#include "tests/desktop/spy.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <vector>

#include "tests/desktop/json_text.h"
#include "tests/desktop/request.h"
#include "tests/desktop/window_facts.h"

namespace {

SpyMemory* memory = nullptr;
HHOOK sentHook = nullptr;
HHOOK fetchedHook = nullptr;

// Must run before the library is loaded, since the library opens the memory.
void CreateSharedMemory() {
    if (memory != nullptr) {
        return;
    }
    const HANDLE mapping = CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                              sizeof(SpyMemory), kSpyMemoryName);
    memory = static_cast<SpyMemory*>(MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, sizeof(SpyMemory)));
    if (memory == nullptr) {
        throw RequestError("no shared memory for the spy");
    }
}

SpyMemory& AttachedMemory() {
    if (memory == nullptr) {
        throw RequestError("the spy is not attached");
    }
    return *memory;
}

HHOOK SetHook(HMODULE library, int kind, const char* procedure, DWORD thread) {
    HOOKPROC address = nullptr;
    const FARPROC found = GetProcAddress(library, procedure);
    std::memcpy(&address, &found, sizeof(address));
    const HHOOK hook = SetWindowsHookExW(kind, address, library, thread);
    if (hook == nullptr) {
        throw RequestError("SetWindowsHookExW failed: " + std::to_string(GetLastError()));
    }
    return hook;
}

void ReleaseHook(HHOOK& hook) {
    if (hook != nullptr) {
        UnhookWindowsHookEx(hook);
        hook = nullptr;
    }
}

std::string BrushText(const SpyBrush& brush) {
    return JsonObject()
        .Add("handle", JsonNumber(static_cast<int64_t>(brush.handle)))
        .Add("solid", JsonBool(brush.isSolid != 0))
        .Add("colour", JsonNumber(brush.colour))
        .Text();
}

std::string FontText(const SpyAnswer& answer) {
    const LOGFONTW& font = answer.logicalFont;
    return JsonObject()
        .Add("handle", JsonNumber(static_cast<int64_t>(answer.font)))
        .Add("face", JsonText(font.lfFaceName))
        .Add("height", JsonNumber(font.lfHeight))
        .Add("width", JsonNumber(font.lfWidth))
        .Add("weight", JsonNumber(font.lfWeight))
        .Add("italic", JsonNumber(font.lfItalic))
        .Add("underline", JsonNumber(font.lfUnderline))
        .Add("strikeOut", JsonNumber(font.lfStrikeOut))
        .Add("charset", JsonNumber(font.lfCharSet))
        .Add("quality", JsonNumber(font.lfQuality))
        .Text();
}

std::string ClassText(const SpyAnswer& answer) {
    return JsonObject()
        .Add("brush", BrushText(answer.classBrush))
        .Add("style", JsonNumber(answer.classStyle))
        .Add("arrow", JsonBool(answer.classHasArrow != 0))
        .Add("icon", JsonBool(answer.classHasIcon != 0))
        .Add("menu", JsonBool(answer.classHasMenu != 0))
        .Text();
}

std::string ColouringText(const SpyAnswer& answer) {
    return JsonObject()
        .Add("brush", BrushText(answer.controlBrush))
        .Add("backgroundMode", JsonNumber(answer.backgroundMode))
        .Add("background", JsonNumber(answer.backgroundColour))
        .Add("text", JsonNumber(answer.textColour))
        .Text();
}

}  // namespace

std::string AttachSpy(HWND window) {
    CreateSharedMemory();
    ReleaseHook(sentHook);
    ReleaseHook(fetchedHook);
    std::memset(static_cast<void*>(memory), 0, sizeof(*memory));
    const HMODULE library = LoadLibraryW(L"quillmont_desktop_spy.dll");
    if (library == nullptr) {
        throw RequestError("quillmont_desktop_spy.dll could not be loaded");
    }
    DWORD process = 0;
    const DWORD thread = GetWindowThreadProcessId(window, &process);
    memory->program = process;
    sentHook = SetHook(library, WH_CALLWNDPROC, "OnSentMessage", thread);
    fetchedHook = SetHook(library, WH_GETMESSAGE, "OnFetchedMessage", thread);
    SendWithLimit(window, WM_NULL, 0, 0);  // the first hooked message loads the library
    return "null";
}

std::string AskSpy(HWND window, SpyQuestion question, UINT message) {
    AttachedMemory().answer = {};
    SendWithLimit(window, RegisterWindowMessageW(kSpyMessageName), static_cast<WPARAM>(question),
                  static_cast<LPARAM>(message));
    const SpyAnswer answer = memory->answer;
    if (answer.answered == 0) {
        throw RequestError("the spy did not answer");
    }
    return JsonObject()
        .Add("font", FontText(answer))
        .Add("class", ClassText(answer))
        .Add("colouring", ColouringText(answer))
        .Add("gdiObjects", JsonNumber(answer.gdiObjects))
        .Add("kernelHandles", JsonNumber(answer.kernelHandles))
        .Add("currentFolder", JsonText(answer.currentFolder))
        .Text();
}

std::string ReadSpyTimers() {
    const uint32_t count = AttachedMemory().timerCount;
    std::vector<std::string> events;
    for (uint32_t i = count - std::min(count, kSpyTimerEvents); i != count; ++i) {
        const SpyTimerEvent& event = memory->timers[i % kSpyTimerEvents];
        events.push_back(JsonList({JsonNumber(static_cast<int64_t>(event.window)),
                                   JsonNumber(static_cast<int64_t>(event.timer)),
                                   JsonNumber(static_cast<int64_t>(event.tick))}));
    }
    return JsonList(events);
}

std::string ReadSpyCalls() {
    SpyMemory& spy = AttachedMemory();
    const uint32_t count = spy.callCount;
    std::vector<std::string> calls;
    for (uint32_t i = count - std::min(count, kSpyCalls); i != count; ++i) {
        calls.push_back(JsonText(spy.calls[i % kSpyCalls]));
    }
    return JsonList(calls);
}

// In the buffer each text has its terminator, and one more terminator follows the last.
std::string ChooseInNextDialog(const std::vector<std::wstring>& texts) {
    SpyMemory& spy = AttachedMemory();
    std::wstring buffer;
    for (const std::wstring& text : texts) {
        buffer += text + L'\0';
    }
    if (buffer.size() >= std::size(spy.actions.choice)) {
        throw RequestError("too many files to choose");
    }
    std::fill(std::begin(spy.actions.choice), std::end(spy.actions.choice), L'\0');
    buffer.copy(spy.actions.choice, buffer.size());
    spy.actions.choiceIsReady = 1;
    return "null";
}

std::string AppendBeforeNextRead(const std::wstring& path, const std::wstring& octets) {
    SpyActions& actions = AttachedMemory().actions;
    if (path.size() >= std::size(actions.appendPath) || octets.size() >= std::size(actions.appendOctets)) {
        throw RequestError("the path or the text to append is too long");
    }
    actions.appendPath[path.copy(actions.appendPath, path.size())] = L'\0';
    std::transform(octets.begin(), octets.end(), actions.appendOctets,
                   [](wchar_t character) { return static_cast<char>(character); });
    actions.appendOctets[octets.size()] = '\0';
    actions.appendIsReady = 1;
    return "null";
}
