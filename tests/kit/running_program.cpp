#include "tests/kit/running_program.h"

#include <array>
#include <filesystem>
#include <stdexcept>

#include "platform/files.h"
#include "tests/kit/data_folder_aside.h"
#include "tests/support/start_with_retries.h"

namespace {

struct Sought {
    DWORD process = 0;
    std::wstring className;
    std::wstring title;
    int id = 0;
    HWND found = nullptr;
};

std::wstring ClassOf(HWND window) {
    wchar_t name[256] = {};
    GetClassNameW(window, name, 256);
    return name;
}

BOOL CALLBACK MatchTopLevel(HWND window, LPARAM parameter) {
    auto& sought = *reinterpret_cast<Sought*>(parameter);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process != sought.process || !IsWindowVisible(window) || ClassOf(window) != sought.className) {
        return TRUE;
    }
    wchar_t title[512] = {};
    GetWindowTextW(window, title, 512);
    if (!sought.title.empty() && sought.title != title) {
        return TRUE;
    }
    sought.found = window;
    return FALSE;
}

BOOL CALLBACK MatchControl(HWND window, LPARAM parameter) {
    auto& sought = *reinterpret_cast<Sought*>(parameter);
    if (GetDlgCtrlID(window) != sought.id || ClassOf(window) != sought.className) {
        return TRUE;
    }
    sought.found = window;
    return FALSE;
}

std::wstring ProgramPath() {
    std::array<wchar_t, 32768> path{};
    GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return (std::filesystem::path(path.data()).parent_path() / "Quillmont.exe").wstring();
}

}  // namespace

RunningProgram::RunningProgram() {
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started = {};
    const DWORD error = StartWithRetries([&] {
        return CreateProcessW(ProgramPath().c_str(), nullptr, nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                              &startup, &started);
    });
    if (error == ERROR_SUCCESS) {
        CloseHandle(started.hThread);
        process_.Reset(started.hProcess);
        id_ = started.dwProcessId;
    }
}

RunningProgram::~RunningProgram() {
    if (process_ && Close() == MAXDWORD) {
        TerminateProcess(process_.get(), 99);
        WaitForSingleObject(process_.get(), 10'000);
    }
}

HWND RunningProgram::WaitForWindow(const std::wstring& className, const std::wstring& title,
                                   std::chrono::milliseconds limit) const {
    Sought sought = {id_, className, title, 0, nullptr};
    const auto find = [&] {
        EnumWindows(MatchTopLevel, reinterpret_cast<LPARAM>(&sought));
        return sought.found != nullptr;
    };
    WaitUntil(find, limit);
    return sought.found;
}

DWORD RunningProgram::Close() {
    DWORD code = MAXDWORD;
    Sought main = {id_, L"SNMP_MAIN_WND", {}, 0, nullptr};
    EnumWindows(MatchTopLevel, reinterpret_cast<LPARAM>(&main));
    if (main.found != nullptr) {
        PostMessageW(main.found, WM_CLOSE, 0, 0);
    }
    if (WaitForSingleObject(process_.get(), 20'000) == WAIT_OBJECT_0) {
        GetExitCodeProcess(process_.get(), &code);
    }
    return code;
}

HWND FindControl(HWND window, const std::wstring& className, int id) {
    Sought sought = {0, className, {}, id, nullptr};
    EnumChildWindows(window, MatchControl, reinterpret_cast<LPARAM>(&sought));
    return sought.found;
}

void Click(HWND button) {
    const WPARAM clicked = MAKEWPARAM(GetDlgCtrlID(button), BN_CLICKED);
    PostMessageW(GetParent(button), WM_COMMAND, clicked, reinterpret_cast<LPARAM>(button));
}

LRESULT Send(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    constexpr UINT kMinute = 60'000;
    DWORD_PTR result = 0;
    if (SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL, kMinute, &result) == 0 &&
        IsWindow(window)) {
        throw std::runtime_error("the window did not answer message " + std::to_string(message));
    }
    return static_cast<LRESULT>(result);
}

std::wstring ReadText(HWND window) {
    std::wstring text(ReadTextLength(window) + 1, L'\0');
    const LRESULT length = Send(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<size_t>(length));
    return text;
}

size_t ReadTextLength(HWND window) {
    return static_cast<size_t>(Send(window, WM_GETTEXTLENGTH));
}

void ReplaceText(HWND window, const std::wstring& text) {
    Send(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

bool CloseWindowAndWait(HWND window) {
    PostMessageW(window, WM_CLOSE, 0, 0);
    return WaitUntil([window] { return !IsWindow(window); });
}

std::wstring DataFile(const wchar_t* name) {
    return DataFolder() + L"\\" + name;
}

std::string ReadDataFile(const wchar_t* name) {
    std::string octets;
    ReadOctetsFrom(DataFile(name), 0, octets);
    return octets;
}

bool WaitForText(const wchar_t* file, std::string_view text, std::chrono::milliseconds limit) {
    return WaitUntil([&] { return ReadDataFile(file).find(text) != std::string::npos; }, limit);
}
