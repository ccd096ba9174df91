#include "mib/mib_folder.h"

#include <algorithm>
#include <cstdint>
#include <cwchar>
#include <cwctype>

#include "core/activity_log.h"
#include "core/app_paths.h"
#include "core/run_guarded.h"
#include "mib/mib_parser.h"
#include "mib/name_store.h"
#include "platform/folders.h"

namespace {

// Returns the extension with its dot, empty if there is none.
std::wstring_view FindExtension(std::wstring_view path) {
    const size_t last = path.find_last_of(L".\\ ");
    return last == std::wstring_view::npos || path[last] != L'.' ? std::wstring_view() : path.substr(last);
}

bool ParseMibFiles() {
    return EnumerateFolder(AppPaths.mibsDir, [](const FolderEntry& entry) {
        if (entry.isRegularFile && IsMibFile(entry.name)) {
            ParseMibFile(AppPaths.mibsDir + L"\\" + entry.name);
        }
    });
}

}  // namespace

bool IsMibFile(std::wstring_view path) {
    std::wstring extension(FindExtension(path));
    for (wchar_t& character : extension) {
        character = static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(character)));
    }
    return extension == L".mib" || extension == L".txt" || extension == L".my";
}

void LoadMibFolder() {
    const std::lock_guard lock(MibStoreLock);
    ClearNameStore();
    try {
        if (ParseMibFiles()) {
            StoreResolvedDefinitions();
        }
    } catch (...) {
        // Out of memory. The names stored so far are valid and remain.
    }
    RunGuarded([] {
        LogMessage(L"MIBs loaded. OID mappings: " + std::to_wstring(static_cast<int32_t>(OidNameMap.size())));
    });
}

std::vector<std::wstring> ListMibFiles() {
    std::vector<std::wstring> names;
    try {
        EnumerateFolder(AppPaths.mibsDir, [&](const FolderEntry& entry) {
            if (entry.isRegularFile && IsMibFile(entry.name)) {
                names.push_back(entry.name);
            }
        });
    } catch (...) {
        // Out of memory. Return the names found so far.
    }
    std::sort(names.begin(), names.end());
    return names;
}
