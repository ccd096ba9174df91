#include "ui/mib_import.h"

// clang-format off
#include "platform/windows/windows_headers.h"
#include <commdlg.h>
// clang-format on

#include <algorithm>
#include <string>
#include <vector>

#include "core/activity_log.h"
#include "core/app_paths.h"
#include "mib/mib_folder.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "ui/open_file_names.h"

namespace {

constexpr DWORD kDialogCapacity = 8192;  // characters; a selection that does not fit counts as cancelled

// The buffer is larger than that: Wine's dialog writes a longer selection past the size that it was given.
constexpr size_t kBufferSize = size_t{8} * kDialogCapacity;

// Pairs of description and pattern, ended by an empty text.
// Intentional: the first description omits ".my", which its pattern includes; the line is long enough.
constexpr wchar_t kDialogFilter[] = L"MIB files (*.mib;*.txt)\0*.mib;*.txt;*.my\0All files\0*.*\0";

// Intentional: the two characters of the umlaut's UTF-8 form instead of the umlaut; operators know the
// question so.
constexpr wchar_t kDeleteQuestion[] = L"Alle MIB Dateien im MIB-Ordner l\u00C3\u00B6schen?";

// The dialog changes the current folder of the process to that of the chosen file, which would keep that
// drive from being ejected. OFN_NOCHANGEDIR has no effect on this dialog.
class ScopedCurrentFolder {
  public:
    ScopedCurrentFolder() : folder_(GetCurrentDirectoryW(0, nullptr), L'\0') {
        GetCurrentDirectoryW(static_cast<DWORD>(folder_.size()), folder_.data());
    }
    ~ScopedCurrentFolder() { SetCurrentDirectoryW(folder_.c_str()); }
    ScopedCurrentFolder(const ScopedCurrentFolder&) = delete;
    ScopedCurrentFolder& operator=(const ScopedCurrentFolder&) = delete;

  private:
    std::wstring folder_;
};

// False: cancelled, or the dialog failed, for example because the selection does not fit.
bool AskForFiles(HWND owner, std::wstring& buffer) {
    const ScopedCurrentFolder former;
    buffer.assign(kBufferSize, L'\0');
    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof(dialog);
    dialog.hwndOwner = owner;
    dialog.lpstrTitle = L"Import MIB files";
    dialog.lpstrFilter = kDialogFilter;
    dialog.nFilterIndex = 1;
    dialog.lpstrFile = buffer.data();
    dialog.nMaxFile = kDialogCapacity;
    dialog.Flags = OFN_EXPLORER | OFN_ALLOWMULTISELECT | OFN_FILEMUSTEXIST;
    return GetOpenFileNameW(&dialog) != FALSE;
}

// Intentional: among several files, one that cannot be copied is not logged; its "MIB imported:" line
// is missing.
void ImportFiles(const ChosenFiles& chosen) {
    for (const ChosenFile& file : chosen.files) {
        if (CopyFileOver(file.path, AppPaths.mibsDir + L"\\" + file.name)) {
            LogMessage(L"MIB imported: " + file.name);
        } else if (!chosen.several) {
            LogMessage(L"MIB import failed.");
        }
    }
}

// Removes in listing order up to the first failure, also when the listing itself failed half-way. The folder
// is listed before anything is removed, because removing during the walk can make it skip entries.
bool RemoveMibFiles() {
    std::vector<std::wstring> paths;
    const bool listed = EnumerateFolder(AppPaths.mibsDir, [&paths](const FolderEntry& entry) {
        const std::wstring path = AppPaths.mibsDir + L"\\" + entry.name;
        if (entry.isRegularFile && IsMibFile(path)) {
            paths.push_back(path);
        }
    });
    return std::all_of(paths.begin(), paths.end(), RemoveFile) && listed;
}

}  // namespace

bool ImportMibFiles(HWND owner) {
    std::wstring buffer;
    if (!AskForFiles(owner, buffer)) {
        return false;
    }
    ImportFiles(ParseOpenFileNames(buffer));
    LoadMibFolder();
    return true;
}

bool DeleteAllMibs(HWND owner) {
    if (MessageBoxW(owner, kDeleteQuestion, L"Delete MIBs", MB_YESNO | MB_ICONWARNING) != IDYES) {
        return false;
    }
    LogMessage(RemoveMibFiles() ? L"All MIB files deleted." : L"Delete MIBs failed.");
    LoadMibFolder();
    return true;
}
