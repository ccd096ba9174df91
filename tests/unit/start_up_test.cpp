// Start-up and the end in their order, and a system that refuses: its calls are replaced by linking with ones
// that note what is asked of them, hence a program of its own. The receiver and its files are the real ones.
// clang-format off
#include "platform/windows/windows_headers.h"
#include <commctrl.h>
#include <shlobj.h>
// clang-format on

#include <gtest/gtest.h>

#include <bit>
#include <deque>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "config/config_file.h"
#include "core/app_paths.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/stamps.h"
#include "trap/server_state.h"
#include "ui/ui_resources.h"

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE former, PWSTR commandLine, int showCommand);

namespace {

struct ProgramEnded {
    UINT code;
};

// The system as one test wants it, and what was asked of it.
struct System {
    std::vector<std::string> calls;
    std::wstring applicationData;
    bool refusesSockets = false;
    bool refusesWindow = false;
    bool refusesFontAndBrush = false;
    BOOL endOfMessages = 0;  // 0: the quit message; -1: the fetch fails
    std::deque<MSG> messages;
    WNDPROC procedure = nullptr;
    std::vector<std::string> buttons;
} wanted;

// Handles that nobody but these functions looks into.
template <typename Handle>
Handle FakeHandle(UINT_PTR value) {
    return std::bit_cast<Handle>(value);
}
const HWND kMainWindow = FakeHandle<HWND>(0x100);
const HBRUSH kBrush = FakeHandle<HBRUSH>(0x201);
const HFONT kFont = FakeHandle<HFONT>(0x202);

HWND ButtonHandle(size_t index) {
    return FakeHandle<HWND>(0x300 + index);
}

void Note(const std::string& call) {
    wanted.calls.push_back(call);
}

std::string Narrow(std::wstring_view text) {
    std::string narrow;
    for (const wchar_t character : text) {
        narrow += character < 0x80 ? static_cast<char>(character) : '?';
    }
    return narrow;
}

std::string NameOf(HWND window) {
    if (window == kMainWindow) {
        return "main window";
    }
    const auto index = std::bit_cast<UINT_PTR>(window) - 0x300;
    return index < wanted.buttons.size() ? wanted.buttons[index] : "strange window";
}

// The messages of log.txt without their stamps.
std::string LogMessages() {
    std::string messages;
    const std::string log = ReadOctets(AppPaths.logFilePath);
    for (size_t begin = 0; begin < log.size();) {
        const size_t end = log.find("\r\r\n", begin);
        messages += "<" + log.substr(begin + kStampLength + 2, end - begin - kStampLength - 2) + ">";
        begin = end + 3;
    }
    return messages;
}

template <typename Function>
Function RealFunction(const wchar_t* library, const char* name) {
    return std::bit_cast<Function>(GetProcAddress(LoadLibraryW(library), name));
}

void WINAPI SeeInitCommonControls() {
    Note("InitCommonControls");
}

HBRUSH WINAPI SeeCreateSolidBrush(COLORREF color) {
    Note("CreateSolidBrush " + std::to_string(color));
    return wanted.refusesFontAndBrush ? nullptr : kBrush;
}

HFONT WINAPI SeeCreateFontW(int height, int width, int escapement, int orientation, int weight, DWORD italic,
                            DWORD underline, DWORD strikeOut, DWORD charSet, DWORD outPrecision,
                            DWORD clipPrecision, DWORD quality, DWORD pitchAndFamily, LPCWSTR face) {
    std::string call = "CreateFontW";
    for (const int number : {height, width, escapement, orientation, weight}) {
        call += " " + std::to_string(number);
    }
    for (const DWORD number :
         {italic, underline, strikeOut, charSet, outPrecision, clipPrecision, quality, pitchAndFamily}) {
        call += " " + std::to_string(number);
    }
    Note(call + " " + Narrow(face));
    return wanted.refusesFontAndBrush ? nullptr : kFont;
}

BOOL WINAPI SeeDeleteObject(HGDIOBJ object) {
    Note(object == kFont    ? "DeleteObject font"
         : object == kBrush ? "DeleteObject brush"
                            : "DeleteObject what?");
    return TRUE;
}

HRESULT WINAPI SeeSHGetFolderPathW(HWND, int, HANDLE, DWORD, LPWSTR path) {
    Note("SHGetFolderPathW");
    path[wanted.applicationData.copy(path, MAX_PATH - 1)] = L'\0';
    return S_OK;
}

int WINAPI SeeWSAStartup(WORD version, LPWSADATA data) {
    Note("WSAStartup " + std::to_string(LOBYTE(version)) + "." + std::to_string(HIBYTE(version)) + " " +
         LogMessages());
    static const auto real = RealFunction<decltype(&WSAStartup)>(L"ws2_32.dll", "WSAStartup");
    return wanted.refusesSockets ? WSASYSNOTREADY : real(version, data);
}

int WINAPI SeeWSACleanup() {
    Note("WSACleanup");
    static const auto real = RealFunction<decltype(&WSACleanup)>(L"ws2_32.dll", "WSACleanup");
    return real();
}

HCURSOR WINAPI SeeLoadCursorW(HINSTANCE, LPCWSTR) {
    return nullptr;
}

ATOM WINAPI SeeRegisterClassW(const WNDCLASSW* windowClass) {
    // The tool windows' classes come with their windows.
    if (!MainWindowHandle) {
        Note("RegisterClassW " + Narrow(windowClass->lpszClassName) + " " + LogMessages());
        wanted.procedure = windowClass->lpfnWndProc;
    }
    return 1;
}

HWND WINAPI SeeCreateWindowExW(DWORD exStyle, LPCWSTR className, LPCWSTR text, DWORD style, int x, int y,
                               int width, int height, HWND parent, HMENU menu, HINSTANCE, LPVOID) {
    if (parent && (style & WS_CHILD) == 0) {
        Note("tool window " + Narrow(className));
        return nullptr;
    }
    if (parent) {
        wanted.buttons.push_back(Narrow(text));
        Note("control " + wanted.buttons.back());
        return ButtonHandle(wanted.buttons.size() - 1);
    }
    std::string call = "CreateWindowExW " + Narrow(className) + " " + Narrow(text);
    for (const DWORD number : {exStyle, style}) {
        call += " " + std::to_string(number);
    }
    for (const int number : {x, y, width, height}) {
        call += number == CW_USEDEFAULT ? " default" : " " + std::to_string(number);
    }
    Note(call + (menu ? " menu" : ""));
    if (wanted.refusesWindow) {
        return nullptr;
    }
    wanted.procedure(kMainWindow, WM_CREATE, 0, 0);
    return kMainWindow;
}

HWND WINAPI SeeGetWindow(HWND window, UINT which) {
    const size_t next = window == kMainWindow ? 0 : std::bit_cast<UINT_PTR>(window) - 0x300 + 1;
    EXPECT_EQ(which, static_cast<UINT>(next == 0 ? GW_CHILD : GW_HWNDNEXT));
    return next < wanted.buttons.size() ? ButtonHandle(next) : nullptr;
}

LRESULT WINAPI SeeSendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    EXPECT_EQ(message, static_cast<UINT>(WM_SETFONT));
    EXPECT_EQ(wParam, std::bit_cast<WPARAM>(kFont));
    EXPECT_EQ(lParam, TRUE);
    Note("font for " + NameOf(window));
    return 0;
}

BOOL WINAPI SeePostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    Note("post " + std::to_string(message) + " " + std::to_string(wParam) + " to " + NameOf(window));
    wanted.messages.push_front({window, message, wParam, lParam, 0, {}});
    return TRUE;
}

BOOL WINAPI SeeShowWindow(HWND window, int command) {
    Note("ShowWindow " + NameOf(window) + " " + std::to_string(command));
    return FALSE;
}

BOOL WINAPI SeeUpdateWindow(HWND window) {
    Note("UpdateWindow " + NameOf(window));
    return TRUE;
}

BOOL WINAPI SeeGetMessageW(LPMSG message, HWND window, UINT first, UINT last) {
    EXPECT_TRUE(!window && first == 0 && last == 0) << "messages of the whole thread";
    if (wanted.messages.empty()) {
        return wanted.endOfMessages;
    }
    *message = wanted.messages.front();
    wanted.messages.pop_front();
    return TRUE;
}

BOOL WINAPI SeeTranslateMessage(const MSG* message) {
    Note("translate " + std::to_string(message->message));
    return FALSE;
}

LRESULT WINAPI SeeDispatchMessageW(const MSG* message) {
    Note("dispatch " + std::to_string(message->message));
    return wanted.procedure(message->hwnd, message->message, message->wParam, message->lParam);
}

BOOL WINAPI SeeDestroyWindow(HWND window) {
    Note("DestroyWindow " + NameOf(window));
    wanted.procedure(window, WM_DESTROY, 0, 0);
    return TRUE;
}

void WINAPI SeePostQuitMessage(int code) {
    Note("PostQuitMessage " + std::to_string(code));
}

BOOL WINAPI SeeSetWindowTextW(HWND, LPCWSTR text) {
    Note("button says " + Narrow(text));
    return TRUE;
}

BOOL WINAPI SeeInvalidateRect(HWND window, const RECT* rectangle, BOOL erase) {
    EXPECT_TRUE(!rectangle && erase) << "the whole window, background too";
    Note("repaint " + NameOf(window));
    return TRUE;
}

[[noreturn]] void WINAPI SeeExitProcess(UINT code) {
    throw ProgramEnded{code};
}

}  // namespace

// What a call of an imported function goes through; the linker takes these before the import libraries'.
extern "C" {
decltype(&InitCommonControls) __imp_InitCommonControls = SeeInitCommonControls;
decltype(&CreateSolidBrush) __imp_CreateSolidBrush = SeeCreateSolidBrush;
decltype(&CreateFontW) __imp_CreateFontW = SeeCreateFontW;
decltype(&DeleteObject) __imp_DeleteObject = SeeDeleteObject;
decltype(&SHGetFolderPathW) __imp_SHGetFolderPathW = SeeSHGetFolderPathW;
decltype(&WSAStartup) __imp_WSAStartup = SeeWSAStartup;
decltype(&WSACleanup) __imp_WSACleanup = SeeWSACleanup;
decltype(&LoadCursorW) __imp_LoadCursorW = SeeLoadCursorW;
decltype(&RegisterClassW) __imp_RegisterClassW = SeeRegisterClassW;
decltype(&CreateWindowExW) __imp_CreateWindowExW = SeeCreateWindowExW;
decltype(&GetWindow) __imp_GetWindow = SeeGetWindow;
decltype(&SendMessageW) __imp_SendMessageW = SeeSendMessageW;
decltype(&PostMessageW) __imp_PostMessageW = SeePostMessageW;
decltype(&ShowWindow) __imp_ShowWindow = SeeShowWindow;
decltype(&UpdateWindow) __imp_UpdateWindow = SeeUpdateWindow;
decltype(&GetMessageW) __imp_GetMessageW = SeeGetMessageW;
decltype(&TranslateMessage) __imp_TranslateMessage = SeeTranslateMessage;
decltype(&DispatchMessageW) __imp_DispatchMessageW = SeeDispatchMessageW;
decltype(&DestroyWindow) __imp_DestroyWindow = SeeDestroyWindow;
decltype(&PostQuitMessage) __imp_PostQuitMessage = SeePostQuitMessage;
decltype(&SetWindowTextW) __imp_SetWindowTextW = SeeSetWindowTextW;
decltype(&InvalidateRect) __imp_InvalidateRect = SeeInvalidateRect;
void(WINAPI* __imp_ExitProcess)(UINT) = SeeExitProcess;
}

namespace {

constexpr int kShowCommand = SW_SHOWMINNOACTIVE;
const std::string kLoaded = "<No config.xml found (or empty). Using defaults.><MIBs loaded. OID mappings: 0>";

using Calls = std::vector<std::string>;

Calls Join(std::initializer_list<Calls> parts) {
    Calls joined;
    for (const Calls& part : parts) {
        joined.insert(joined.end(), part.begin(), part.end());
    }
    return joined;
}

const Calls kResources = {"InitCommonControls", "CreateSolidBrush 16777215",
                          "CreateFontW -14 0 0 0 400 0 0 0 1 0 0 5 0 Segoe UI", "SHGetFolderPathW"};
const Calls kWindow = {
    "WSAStartup 2.2 ", "RegisterClassW SNMP_MAIN_WND " + kLoaded,
    "CreateWindowExW SNMP_MAIN_WND Quillmont PRO v1.0 (SNMP v1 and v2c) -  ? 2026 Quillmont 0 " +
        std::to_string(0x00CA0000) + " default default 694 90"};
const Calls kControls = {"control Start server", "control Forwarding", "control Monitor", "control Log",
                         "control Status"};
const Calls kFonts = {"font for main window", "font for Start server", "font for Forwarding",
                      "font for Monitor",     "font for Log",          "font for Status"};
const Calls kStartPosted = {"post 273 100 to main window"};
const Calls kShown = {"ShowWindow main window " + std::to_string(kShowCommand), "UpdateWindow main window"};
const Calls kStarted = {"translate 273", "dispatch 273", "button says Stop server", "repaint main window"};
const Calls kStopped = {"button says Start server", "repaint main window"};
const Calls kReleased = {"WSACleanup", "DeleteObject font", "DeleteObject brush"};

class StartUpTest : public testing::Test {
  protected:
    StartUpTest() {
        wanted = {};
        wanted.applicationData = scratch_.path().wstring();
    }
    ~StartUpTest() override {
        BackgroundBrush = nullptr;
        UiFont = nullptr;
        MainWindowHandle = nullptr;
    }

    // Whether the program returned or ended its process, its exit code is this.
    static int Run() {
        try {
            const int code = wWinMain(nullptr, nullptr, nullptr, kShowCommand);
            wanted.calls.push_back("returned");
            return code;
        } catch (const ProgramEnded& end) {
            return static_cast<int>(end.code);
        }
    }

    ScratchFolder scratch_;
    AppPathsGuard paths_{scratch_};
};

TEST_F(StartUpTest, StartsShowsRunsAndEndsInItsOrder) {
    wanted.messages = {{kMainWindow, WM_CLOSE, 0, 0, 0, {}}};
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(wanted.calls, Join({kResources,
                                  kWindow,
                                  kControls,
                                  kFonts,
                                  kStartPosted,
                                  kFonts,
                                  kShown,
                                  kStarted,
                                  {"translate 16", "dispatch 16", "DestroyWindow main window"},
                                  kStopped,
                                  {"PostQuitMessage 0"},
                                  kReleased}));
    EXPECT_TRUE(LogMessages().ends_with("<Server stopped.><Config saved.>")) << LogMessages();
}

TEST_F(StartUpTest, ALoopThatBreaksOffStopsTheReceiverAndSavesNothing) {
    wanted.endOfMessages = -1;
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(wanted.calls, Join({kResources, kWindow, kControls, kFonts, kStartPosted, kFonts, kShown,
                                  kStarted, kStopped, kReleased}));
    EXPECT_FALSE(ServerState.running.load());
    EXPECT_TRUE(LogMessages().ends_with("<Server stopped.>")) << LogMessages();
}

TEST_F(StartUpTest, WithoutTheSocketLibraryItEndsAtOnceAndWithoutAWord) {
    wanted.refusesSockets = true;
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(wanted.calls, Join({kResources, {"WSAStartup 2.2 ", "returned"}}));
    EXPECT_EQ(LogMessages(), "");
}

TEST_F(StartUpTest, WithoutAWindowItClearsUpAndEnds) {
    wanted.refusesWindow = true;
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(wanted.calls, Join({kResources, kWindow, kReleased}));
    EXPECT_EQ(LogMessages(), kLoaded);
}

// The button has no effect; whoever presses it again may have more luck.
TEST_F(StartUpTest, AToolWindowThatIsRefusedIsNeitherFilledNorShown) {
    wanted.endOfMessages = -1;
    for (const WPARAM button : {101U, 102U, 103U, 104U, 101U}) {
        wanted.messages.push_back({kMainWindow, WM_COMMAND, button, 0, 0, {}});
    }
    EXPECT_EQ(Run(), 0);
    Calls clicks;
    for (const std::string name :
         {"SNMP_FWD_WND", "SNMP_MON_WND", "SNMP_LOG_WND", "SNMP_STATUS_WND", "SNMP_FWD_WND"}) {
        clicks.insert(clicks.end(), {"translate 273", "dispatch 273", "tool window " + name});
    }
    EXPECT_EQ(wanted.calls, Join({kResources, kWindow, kControls, kFonts, kStartPosted, kFonts, kShown,
                                  kStarted, clicks, kStopped, kReleased}));
}

TEST_F(StartUpTest, FontAndBrushAreMadeOnceAndGivenBackOnce) {
    for (int time = 0; time < 2; ++time) {
        CreateBackgroundBrush();
        CreateUiFont();
    }
    EXPECT_EQ(wanted.calls, (Calls{kResources[1], kResources[2]}));
    wanted.calls.clear();
    for (int time = 0; time < 2; ++time) {
        DeleteUiResources();
    }
    EXPECT_EQ(wanted.calls, (Calls{"DeleteObject font", "DeleteObject brush"}));
    EXPECT_EQ(UiFont, nullptr);
    EXPECT_EQ(BackgroundBrush, nullptr);
}

TEST_F(StartUpTest, WithoutFontAndBrushItRunsAllTheSame) {
    wanted.refusesFontAndBrush = true;
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(
        wanted.calls,
        Join({kResources, kWindow, kControls, kStartPosted, kShown, kStarted, kStopped, {"WSACleanup"}}));
}

}  // namespace
