#include "tests/desktop/spy_calls.h"

// clang-format off
#include "platform/windows/windows_headers.h"
#include <commdlg.h>
// clang-format on

#include <algorithm>
#include <bit>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <string>
#include <string_view>

namespace {

SpyMemory* memory = nullptr;

// A program that the spy was attached to before is still patched; its calls are no longer logged.
bool IsWatched() {
    return memory->program == GetCurrentProcessId();
}

void LogCall(const std::wstring& call) {
    if (!IsWatched()) {
        return;
    }
    wchar_t* entry = memory->calls[memory->callCount % kSpyCalls];
    entry[call.copy(entry, kSpyCallLength - 1)] = L'\0';
    memory->callCount = memory->callCount + 1;
}

std::wstring Number(HWND window) {
    return std::to_wstring(std::bit_cast<INT_PTR>(window));
}

// An empty text ends the filter.
std::wstring FilterText(const wchar_t* filter) {
    std::wstring text;
    while (*filter != L'\0') {
        const std::wstring_view part = filter;
        text.append(part) += L'|';
        filter += part.size() + 1;
    }
    return text;
}

std::wstring TextOrNone(const wchar_t* text) {
    return text ? text : L"none";
}

LRESULT WINAPI InterceptSendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_SETREDRAW:
            LogCall(L"WM_SETREDRAW " + Number(window) + L" " + std::to_wstring(wParam));
            break;
        case LB_RESETCONTENT:
            LogCall(L"LB_RESETCONTENT " + Number(window));
            break;
        default:
            break;
    }
    return SendMessageW(window, message, wParam, lParam);
}

BOOL WINAPI InterceptInvalidateRect(HWND window, const RECT* rectangle, BOOL erase) {
    LogCall(L"InvalidateRect " + Number(window) + (rectangle ? L" part " : L" whole ") +
            std::to_wstring(erase));
    return InvalidateRect(window, rectangle, erase);
}

int WINAPI InterceptMessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT type) {
    LogCall(L"MessageBoxW " + std::to_wstring(type));
    return MessageBoxW(owner, text, caption, type);
}

BOOL WINAPI InterceptGetOpenFileNameW(LPOPENFILENAMEW dialog) {
    LogCall(L"GetOpenFileNameW filter=" + FilterText(dialog->lpstrFilter) + L" index=" +
            std::to_wstring(dialog->nFilterIndex) + L" capacity=" + std::to_wstring(dialog->nMaxFile) +
            L" flags=" + std::to_wstring(dialog->Flags) + L" flagsEx=" + std::to_wstring(dialog->FlagsEx) +
            L" sizeIsRight=" + std::to_wstring(dialog->lStructSize == sizeof(*dialog)) + L" file=" +
            TextOrNone(dialog->lpstrFile) + L" folder=" + TextOrNone(dialog->lpstrInitialDir) +
            L" extension=" + TextOrNone(dialog->lpstrDefExt));
    SpyActions& actions = memory->actions;
    if (actions.choiceIsReady == 0 || !IsWatched()) {
        return GetOpenFileNameW(dialog);
    }
    actions.choiceIsReady = 0;
    const size_t size = std::min(std::size(actions.choice), static_cast<size_t>(dialog->nMaxFile));
    std::copy_n(actions.choice, size, dialog->lpstrFile);
    return TRUE;
}

void AppendTo(const wchar_t* path, const char* octets) {
    const HANDLE file = CreateFileW(path, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    DWORD written = 0;
    WriteFile(file, octets, static_cast<DWORD>(std::strlen(octets)), &written, nullptr);
    CloseHandle(file);
}

HANDLE WINAPI InterceptCreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                                   DWORD disposition, DWORD attributes, HANDLE pattern) {
    SpyActions& actions = memory->actions;
    if (actions.appendIsReady != 0 && IsWatched() && access == GENERIC_READ &&
        _wcsicmp(path, actions.appendPath) == 0) {
        actions.appendIsReady = 0;
        AppendTo(path, actions.appendOctets);
    }
    return CreateFileW(path, access, share, security, disposition, attributes, pattern);
}

struct Replacement {
    const char* name;
    const void* function;
};

template <typename Function>
const void* AddressOf(Function function) {
    return std::bit_cast<const void*>(function);
}

const Replacement kReplacements[] = {
    {"SendMessageW", AddressOf(&InterceptSendMessageW)},
    {"MessageBoxW", AddressOf(&InterceptMessageBoxW)},
    {"GetOpenFileNameW", AddressOf(&InterceptGetOpenFileNameW)},
    {"CreateFileW", AddressOf(&InterceptCreateFileW)},
    {"InvalidateRect", AddressOf(&InterceptInvalidateRect)},
};

void Redirect(const char* name, IMAGE_THUNK_DATA& entry) {
    for (const Replacement& replacement : kReplacements) {
        if (std::strcmp(name, replacement.name) == 0) {
            DWORD protection = 0;
            VirtualProtect(&entry, sizeof(entry), PAGE_READWRITE, &protection);
            entry.u1.Function = std::bit_cast<ULONG_PTR>(replacement.function);
            VirtualProtect(&entry, sizeof(entry), protection, &protection);
        }
    }
}

// Patches the program's import table, through which it calls the system.
void RedirectImports() {
    auto* image = std::bit_cast<BYTE*>(GetModuleHandleW(nullptr));
    const auto* dosHeader = std::bit_cast<const IMAGE_DOS_HEADER*>(image);
    const auto* header = std::bit_cast<const IMAGE_NT_HEADERS*>(image + dosHeader->e_lfanew);
    const DWORD table = header->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (auto* library = std::bit_cast<const IMAGE_IMPORT_DESCRIPTOR*>(image + table); library->Name != 0;
         ++library) {
        const auto* name = std::bit_cast<const IMAGE_THUNK_DATA*>(image + library->OriginalFirstThunk);
        auto* entry = std::bit_cast<IMAGE_THUNK_DATA*>(image + library->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++entry) {
            if (!IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) {
                Redirect(std::bit_cast<const IMAGE_IMPORT_BY_NAME*>(image + name->u1.AddressOfData)->Name,
                         *entry);
            }
        }
    }
}

}  // namespace

void InterceptCalls(SpyMemory& shared) {
    memory = &shared;
    HMODULE library = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       std::bit_cast<LPCWSTR>(&InterceptCalls), &library);
    RedirectImports();
}
