// The driver of the desktop tests: a console program in the same Wine prefix as the program under test. Each
// line of its standard input is a request (request.h), each line of its standard output one JSON reply:
// {"value": ...} or {"error": "..."}.
//
// At the end of its input it terminates the programs that it started, so an aborted test leaves none running.

#include <functional>
#include <iostream>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/windows/scoped_handle.h"
#include "platform/windows/windows_headers.h"

// After the system's own header, whose types it uses.
#include <shlobj.h>

#include "tests/desktop/json_text.h"
#include "tests/desktop/request.h"
#include "tests/desktop/spy.h"
#include "tests/desktop/window_facts.h"
#include "tests/support/start_with_retries.h"

namespace {

// By process id; closed with the driver.
std::map<DWORD, ScopedHandle> startedProcesses;

HANDLE StartedProcess(const Request& request, size_t index) {
    const auto found = startedProcesses.find(static_cast<DWORD>(request.Number(index)));
    if (found == startedProcesses.end()) {
        throw RequestError("the driver did not start that process");
    }
    return found->second.get();
}

DWORD StartAt(const std::wstring& program, POINT place, PROCESS_INFORMATION* started) {
    return StartWithRetries([&] {
        std::wstring commandLine = L"\"" + program + L"\"";
        STARTUPINFOW startup = {};
        startup.cb = sizeof(startup);
        startup.dwFlags = STARTF_USEPOSITION;
        startup.dwX = static_cast<DWORD>(place.x);
        startup.dwY = static_cast<DWORD>(place.y);
        return CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                              nullptr, &startup, started);
    });
}

// Two numbers may follow the program: the default position that the system gives to its first window.
std::string StartProcess(const Request& request) {
    PROCESS_INFORMATION started = {};
    POINT place = {};
    if (request.arguments.size() > 1) {
        place = {static_cast<LONG>(request.Number(1)), static_cast<LONG>(request.Number(2))};
    }
    if (const DWORD error = StartAt(request.Text(0), place, &started); error != ERROR_SUCCESS) {
        throw RequestError("CreateProcessW failed: " + std::to_string(error));
    }
    CloseHandle(started.hThread);
    startedProcesses.emplace(started.dwProcessId, ScopedHandle(started.hProcess));
    return JsonNumber(started.dwProcessId);
}

// Returns the exit code, or null if the process still runs after the given time.
std::string WaitForExit(const Request& request) {
    const HANDLE process = StartedProcess(request, 0);
    if (WaitForSingleObject(process, static_cast<DWORD>(request.Number(1))) != WAIT_OBJECT_0) {
        return "null";
    }
    DWORD code = 0;
    GetExitCodeProcess(process, &code);
    return JsonNumber(code);
}

std::string EndProcess(const Request& request) {
    const HANDLE process = StartedProcess(request, 0);
    TerminateProcess(process, 99);
    WaitForSingleObject(process, 10000);
    return "null";
}

std::string SendTo(const Request& request) {
    return JsonNumber(SendWithLimit(request.Window(0), static_cast<UINT>(request.Number(1)),
                                    static_cast<WPARAM>(request.Number(2)),
                                    static_cast<LPARAM>(request.Number(3))));
}

std::string PostTo(const Request& request) {
    return JsonBool(PostMessageW(request.Window(0), static_cast<UINT>(request.Number(1)),
                                 static_cast<WPARAM>(request.Number(2)),
                                 static_cast<LPARAM>(request.Number(3))) != FALSE);
}

std::string SetText(const Request& request) {
    return JsonNumber(
        SendWithLimit(request.Window(0), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(request.Text(1).c_str())));
}

// Appends the characters one by one, as a keyboard does.
std::string TypeText(const Request& request) {
    const HWND edit = request.Window(0);
    for (const wchar_t character : request.Text(1)) {
        SendWithLimit(edit, WM_CHAR, character, 1);
    }
    return "null";
}

// Returns the pixels of the client area at x, y, x, y, ... as 0xBBGGRR. Covered pixels cannot be read.
std::string ReadPixels(const Request& request) {
    const HWND window = request.Window(0);
    const HDC context = GetDC(window);
    std::vector<std::string> colours;
    for (size_t i = 1; i + 1 < request.arguments.size(); i += 2) {
        const COLORREF colour =
            GetPixel(context, static_cast<int>(request.Number(i)), static_cast<int>(request.Number(i + 1)));
        colours.push_back(JsonNumber(colour));
    }
    ReleaseDC(window, context);
    return JsonList(colours);
}

std::string MoveWindowTo(const Request& request) {
    return JsonBool(SetWindowPos(request.Window(0), nullptr, static_cast<int>(request.Number(1)),
                                 static_cast<int>(request.Number(2)), 0, 0,
                                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE) != FALSE);
}

std::string ResizeWindowTo(const Request& request) {
    return JsonBool(SetWindowPos(request.Window(0), nullptr, 0, 0, static_cast<int>(request.Number(1)),
                                 static_cast<int>(request.Number(2)),
                                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE) != FALSE);
}

// Repaints the window, background included, before this returns.
std::string RepaintWindow(const Request& request) {
    return JsonBool(RedrawWindow(request.Window(0), nullptr, nullptr,
                                 RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW) != FALSE);
}

// Presses and releases the left mouse button at a point of the client area.
std::string ClickMouseAt(const Request& request) {
    POINT point = {static_cast<LONG>(request.Number(1)), static_cast<LONG>(request.Number(2))};
    ClientToScreen(request.Window(0), &point);
    SetCursorPos(point.x, point.y);
    INPUT inputs[2] = {};
    inputs[0].type = INPUT_MOUSE;
    inputs[0].mi.dwFlags = MOUSEEVENTF_LEFTDOWN;
    inputs[1].type = INPUT_MOUSE;
    inputs[1].mi.dwFlags = MOUSEEVENTF_LEFTUP;
    return JsonNumber(SendInput(2, inputs, sizeof(INPUT)));
}

// Sends messages to the window for the given number of milliseconds. Returns the longest response time in
// microseconds.
std::string MeasureLongestResponse(const Request& request) {
    const HWND window = request.Window(0);
    LARGE_INTEGER frequency = {};
    QueryPerformanceFrequency(&frequency);
    const auto now = [&frequency] {
        LARGE_INTEGER count = {};
        QueryPerformanceCounter(&count);
        return count.QuadPart * 1000000 / frequency.QuadPart;
    };
    const long long end = now() + request.Number(1) * 1000;
    long long longest = 0;
    for (long long before = now(); before < end; before = now()) {
        SendWithLimit(window, WM_NULL, 0, 0);
        const long long duration = now() - before;
        longest = duration > longest ? duration : longest;
    }
    return JsonNumber(longest);
}

// Files opened without sharing: no other program can read, write or delete them.
std::vector<ScopedHandle> lockedFiles;

std::string LockFile(const Request& request) {
    ScopedHandle file(
        CreateFileW(request.Text(0).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!file) {
        throw RequestError("CreateFileW failed: " + std::to_string(GetLastError()));
    }
    lockedFiles.push_back(std::move(file));
    return "null";
}

std::string ReleaseFiles(const Request&) {
    lockedFiles.clear();
    return "null";
}

std::string ReadAttributes(const Request& request) {
    const DWORD attributes = GetFileAttributesW(request.Text(0).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        throw RequestError("GetFileAttributesW failed: " + std::to_string(GetLastError()));
    }
    return JsonNumber(attributes);
}

std::string SetAttributes(const Request& request) {
    return JsonBool(SetFileAttributesW(request.Text(0).c_str(), static_cast<DWORD>(request.Number(1))) !=
                    FALSE);
}

// Queried each time: returns the folder that a program started now would use.
std::string LocalApplicationData(const Request&) {
    wchar_t folder[MAX_PATH] = {};
    const HRESULT result =
        SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder);
    if (result != S_OK) {
        throw RequestError("SHGetFolderPathW failed: " + std::to_string(result));
    }
    return JsonText(folder);
}

std::string ForegroundWindow(const Request&) {
    return JsonNumber(reinterpret_cast<INT_PTR>(GetForegroundWindow()));
}

std::string WindowExists(const Request& request) {
    const HWND window = reinterpret_cast<HWND>(static_cast<INT_PTR>(request.Number(0)));
    return JsonBool(IsWindow(window) != FALSE);
}

using Handler = std::function<std::string(const Request&)>;

const std::map<std::string, Handler> kHandlers = {
    {"start", StartProcess},
    {"wait_for_exit", WaitForExit},
    {"end_process", EndProcess},
    {"windows", [](const Request& r) { return ListTopLevelWindows(static_cast<DWORD>(r.Number(0))); }},
    {"window", [](const Request& r) { return DescribeWindow(r.Window(0)); }},
    {"children", [](const Request& r) { return ListChildren(r.Window(0)); }},
    {"descendants", [](const Request& r) { return ListDescendants(r.Window(0)); }},
    {"exists", WindowExists},
    {"text", [](const Request& r) { return JsonText(ReadWindowText(r.Window(0))); }},
    {"set_text", SetText},
    {"type_text", TypeText},
    {"send", SendTo},
    {"post", PostTo},
    {"list_items", [](const Request& r) { return ListBoxItems(r.Window(0)); }},
    {"combo_items", [](const Request& r) { return ComboBoxItems(r.Window(0)); }},
    {"edit", [](const Request& r) { return DescribeEdit(r.Window(0)); }},
    {"pixels", ReadPixels},
    {"move", MoveWindowTo},
    {"resize", ResizeWindowTo},
    {"repaint", RepaintWindow},
    {"mouse_click", ClickMouseAt},
    {"longest_response", MeasureLongestResponse},
    {"lock_file", LockFile},
    {"release_files", ReleaseFiles},
    {"attributes", ReadAttributes},
    {"set_attributes", SetAttributes},
    {"local_application_data", LocalApplicationData},
    {"foreground", ForegroundWindow},
    {"ansi_code_page", [](const Request&) { return JsonNumber(GetACP()); }},
    {"spy_attach", [](const Request& r) { return AttachSpy(r.Window(0)); }},
    {"spy_window", [](const Request& r) { return AskSpy(r.Window(0), SpyQuestion::window, 0); }},
    {"spy_colouring",
     [](const Request& r) {
         return AskSpy(r.Window(0), SpyQuestion::colouring, static_cast<UINT>(r.Number(1)));
     }},
    {"spy_calls", [](const Request&) { return ReadSpyCalls(); }},
    {"spy_choose", [](const Request& r) { return ChooseInNextDialog(r.arguments); }},
    {"spy_append", [](const Request& r) { return AppendBeforeNextRead(r.Text(0), r.Text(1)); }},
    {"spy_kill_timer",
     [](const Request& r) {
         return AskSpy(r.Window(0), SpyQuestion::killTimer, static_cast<UINT>(r.Number(1)));
     }},
    {"spy_timers", [](const Request&) { return ReadSpyTimers(); }},
    {"spy_folder", [](const Request& r) { return AskSpy(r.Window(0), SpyQuestion::folder, 0); }},
    {"spy_resources", [](const Request& r) { return AskSpy(r.Window(0), SpyQuestion::resources, 0); }},
};

std::string Answer(const std::string& line) {
    try {
        const Request request = ParseRequest(line);
        const auto handler = kHandlers.find(request.verb);
        if (handler == kHandlers.end()) {
            throw RequestError("unknown request " + request.verb);
        }
        return JsonObject().Add("value", handler->second(request)).Text();
    } catch (const std::exception& error) {
        const std::string what = error.what();
        return JsonObject().Add("error", JsonText(std::wstring(what.begin(), what.end()))).Text();
    }
}

void EndStartedProcesses() {
    for (const auto& [id, process] : startedProcesses) {
        TerminateProcess(process.get(), 99);
    }
}

}  // namespace

int wmain() {
    for (std::string line; std::getline(std::cin, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        std::cout << Answer(line) << '\n' << std::flush;
    }
    EndStartedProcesses();
    return 0;
}
