#include "tests/kit/running_program.h"

#include <array>
#include <filesystem>
#include <utility>

#include "platform/files.h"
#include "tests/desktop/window_facts.h"
#include "tests/support/patient_start.h"

// Behind the system's own header, whose types it uses.
#include <shlobj.h>

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

bool WaitUntil(const std::function<bool()>& condition, DWORD milliseconds) {
    const ULONGLONG deadline = GetTickCount64() + milliseconds;
    while (!condition()) {
        if (GetTickCount64() > deadline) {
            return false;
        }
        Sleep(10);
    }
    return true;
}

RunningProgram::RunningProgram() {
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started = {};
    const DWORD error = StartPatiently([&] {
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
                                   DWORD milliseconds) const {
    Sought sought = {id_, className, title, 0, nullptr};
    const auto find = [&] {
        EnumWindows(MatchTopLevel, reinterpret_cast<LPARAM>(&sought));
        return sought.found != nullptr;
    };
    WaitUntil(find, milliseconds);
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
    PostMessageW(button, BM_CLICK, 0, 0);
}

std::wstring ReadText(HWND window) {
    return ReadWindowText(window);
}

size_t ReadTextLength(HWND window) {
    return static_cast<size_t>(SendWithLimit(window, WM_GETTEXTLENGTH, 0, 0));
}

void ReplaceText(HWND window, const std::wstring& text) {
    SendWithLimit(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

std::wstring DataFolder() {
    wchar_t folder[MAX_PATH] = {};
    SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder);
    return std::wstring(folder) + L"\\Quillmont";
}

std::string ReadDataFile(const wchar_t* name) {
    std::string octets;
    ReadOctetsFrom(DataFolder() + L"\\" + name, 0, octets);
    return octets;
}

bool WaitForText(const wchar_t* file, std::string_view text, DWORD milliseconds) {
    return WaitUntil([&] { return ReadDataFile(file).find(text) != std::string::npos; }, milliseconds);
}
