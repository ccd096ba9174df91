// Start-up when system calls fail. The windows, the receiver and its files are real; the calls that fail in a
// test are replaced at link time.
#include "platform/windows/windows_headers.h"

// After the system's own header, whose types it uses.
#include <shlobj.h>

#include <gtest/gtest.h>

#include <bit>
#include <deque>
#include <string>

#include "core/app_paths.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/stamps.h"
#include "trap/server_state.h"
#include "ui/main_window.h"
#include "ui/ui_resources.h"

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE former, PWSTR commandLine, int showCommand);

namespace {

// The failures and commands that a test requests.
struct System {
    std::wstring applicationData;
    bool refusesSockets = false;
    bool refusesMainWindow = false;
    bool refusesToolWindows = false;
    bool refusesFontAndBrush = false;
    std::deque<UINT> commands;     // of the main window, fetched one by one after the real messages
    bool refusesMessages = false;  // the fetch after them fails; otherwise the main window is closed
    int toolWindows = 0;           // requested by the program
} fake;

template <typename Function>
Function RealFunction(const wchar_t* library, const char* name) {
    return std::bit_cast<Function>(GetProcAddress(LoadLibraryW(library), name));
}

HRESULT WINAPI FindFolder(HWND, int, HANDLE, DWORD, LPWSTR path) {
    path[fake.applicationData.copy(path, MAX_PATH - 1)] = L'\0';
    return S_OK;
}

int WINAPI StartSockets(WORD version, LPWSADATA data) {
    static const auto real = RealFunction<decltype(&WSAStartup)>(L"ws2_32.dll", "WSAStartup");
    return fake.refusesSockets ? WSASYSNOTREADY : real(version, data);
}

HBRUSH WINAPI MakeBrush(COLORREF color) {
    static const auto real = RealFunction<decltype(&CreateSolidBrush)>(L"gdi32.dll", "CreateSolidBrush");
    return fake.refusesFontAndBrush ? nullptr : real(color);
}

HFONT WINAPI MakeFont(int height, int width, int escapement, int orientation, int weight, DWORD italic,
                      DWORD underline, DWORD strikeOut, DWORD charSet, DWORD outPrecision,
                      DWORD clipPrecision, DWORD quality, DWORD pitchAndFamily, LPCWSTR face) {
    static const auto real = RealFunction<decltype(&CreateFontW)>(L"gdi32.dll", "CreateFontW");
    return fake.refusesFontAndBrush
               ? nullptr
               : real(height, width, escapement, orientation, weight, italic, underline, strikeOut, charSet,
                      outPrecision, clipPrecision, quality, pitchAndFamily, face);
}

HWND WINAPI MakeWindow(DWORD exStyle, LPCWSTR className, LPCWSTR text, DWORD style, int x, int y, int width,
                       int height, HWND parent, HMENU menu, HINSTANCE instance, LPVOID parameter) {
    static const auto real = RealFunction<decltype(&CreateWindowExW)>(L"user32.dll", "CreateWindowExW");
    const bool isToolWindow = parent && (style & WS_CHILD) == 0;
    fake.toolWindows += isToolWindow ? 1 : 0;
    if (isToolWindow ? fake.refusesToolWindows : !parent && fake.refusesMainWindow) {
        return nullptr;
    }
    return real(exStyle, className, text, style, x, y, width, height, parent, menu, instance, parameter);
}

BOOL WINAPI FetchMessage(LPMSG message, HWND window, UINT first, UINT last) {
    static const auto real = RealFunction<decltype(&GetMessageW)>(L"user32.dll", "GetMessageW");
    if (PeekMessageW(message, window, first, last, PM_REMOVE)) {
        return message->message != WM_QUIT;
    }
    if (!fake.commands.empty()) {
        *message = {MainWindowHandle, WM_COMMAND, fake.commands.front(), 0, 0, {}};
        fake.commands.pop_front();
        return TRUE;
    }
    if (fake.refusesMessages) {
        return -1;
    }
    PostMessageW(MainWindowHandle, WM_CLOSE, 0, 0);
    return real(message, window, first, last);
}

[[noreturn]] void WINAPI EndThread(UINT code) {
    ExitThread(code);
}

}  // namespace

// Imported functions are called through these pointers; the linker prefers them to the import library's.
extern "C" {
decltype(&SHGetFolderPathW) __imp_SHGetFolderPathW = FindFolder;
decltype(&WSAStartup) __imp_WSAStartup = StartSockets;
decltype(&CreateSolidBrush) __imp_CreateSolidBrush = MakeBrush;
decltype(&CreateFontW) __imp_CreateFontW = MakeFont;
decltype(&CreateWindowExW) __imp_CreateWindowExW = MakeWindow;
decltype(&GetMessageW) __imp_GetMessageW = FetchMessage;
void(WINAPI* __imp_ExitProcess)(UINT) = EndThread;
}

namespace {

const std::string kLoaded = "<No config.xml found (or empty). Using defaults.><MIBs loaded. OID mappings: 0>";

class StartUp : public testing::Test {
  protected:
    StartUp() {
        fake = {};
        fake.applicationData = scratch_.path().wstring();
    }
    ~StartUp() override {
        DeleteUiResources();
        MainWindowHandle = nullptr;
        fake = {};
    }

    // Runs the program on a thread that ends where the process would; returns its exit code.
    static DWORD Run() {
        const auto body = [](void*) -> DWORD {
            return static_cast<DWORD>(wWinMain(nullptr, nullptr, nullptr, SW_SHOWNORMAL));
        };
        const HANDLE thread = CreateThread(nullptr, 0, body, nullptr, 0, nullptr);
        EXPECT_EQ(WaitForSingleObject(thread, 60'000), WAIT_OBJECT_0);
        DWORD code = 99;
        GetExitCodeThread(thread, &code);
        CloseHandle(thread);
        return code;
    }

    // The messages of log.txt without their stamps.
    static std::string LogMessages() {
        std::string messages;
        const std::string log = ReadOctets(AppPaths.logFilePath);
        for (size_t begin = 0; begin < log.size();) {
            const size_t end = log.find("\r\r\n", begin);
            messages += "<" + log.substr(begin + kStampLength + 2, end - begin - kStampLength - 2) + ">";
            begin = end + 3;
        }
        return messages;
    }

    ScratchFolder scratch_;
    AppPathsGuard paths_{scratch_};
};

TEST_F(StartUp, WithoutTheSocketLibraryItEndsAtOnceAndSilently) {
    fake.refusesSockets = true;
    EXPECT_EQ(Run(), 0U);
    EXPECT_EQ(LogMessages(), "");
}

TEST_F(StartUp, WithoutAMainWindowItCleansUpAndEnds) {
    fake.refusesMainWindow = true;
    EXPECT_EQ(Run(), 0U);
    EXPECT_EQ(LogMessages(), kLoaded);
    EXPECT_EQ(UiFont, nullptr);
    EXPECT_EQ(BackgroundBrush, nullptr);
}

TEST_F(StartUp, AFailedMessageLoopStopsTheReceiverAndSavesNothing) {
    fake.refusesMessages = true;
    EXPECT_EQ(Run(), 0U);
    EXPECT_FALSE(ServerState.running.load());
    EXPECT_TRUE(LogMessages().ends_with("<Server stopped.>")) << LogMessages();
}

// The click has no effect, and the next one tries again.
TEST_F(StartUp, ARefusedToolWindowHasNoOtherEffect) {
    fake.refusesToolWindows = true;
    fake.commands = {101, 102, 103, 104, 101};
    EXPECT_EQ(Run(), 0U);
    EXPECT_EQ(fake.toolWindows, 5);
    EXPECT_TRUE(LogMessages().ends_with("<Server stopped.><Config saved.>")) << LogMessages();
}

TEST_F(StartUp, WithoutFontAndBrushItRuns) {
    fake.refusesFontAndBrush = true;
    fake.commands = {104};
    EXPECT_EQ(Run(), 0U);
    EXPECT_EQ(fake.toolWindows, 1);
    EXPECT_NE(LogMessages().find("<Server started.>"), std::string::npos);
    EXPECT_TRUE(LogMessages().ends_with("<Server stopped.><Config saved.>")) << LogMessages();
}

}  // namespace
