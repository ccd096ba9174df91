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
#include "core/run_guarded.h"
#include "mib/mib_folder.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "ui/open_file_names.h"

namespace {

constexpr DWORD kDialogCapacity = 8192;  // characters; a selection that does not fit counts as cancelled

// Larger than the capacity, because Wine's dialog writes a longer selection beyond the size it was given.
constexpr size_t kBufferSize = size_t{8} * kDialogCapacity;

// Pairs of description and pattern, ended by an empty text.
// Intentional: the first description omits ".my", which its pattern includes, to stay short.
constexpr wchar_t kDialogFilter[] = L"MIB files (*.mib;*.txt)\0*.mib;*.txt;*.my\0All files\0*.*\0";

// Intentional: the two characters of the umlaut's UTF-8 encoding instead of the umlaut. Operators know the
// question in this form.
constexpr wchar_t kDeleteQuestion[] = L"Alle MIB Dateien im MIB-Ordner l\u00C3\u00B6schen?";

// Restores the current folder of the process at scope exit. The dialog changes it to that of the chosen file,
// which would block ejecting that drive. OFN_NOCHANGEDIR has no effect on this dialog.
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

// Removes the files in listing order up to the first failure, even if the listing was incomplete. Returns
// whether the listing and all removals succeeded. Lists the folder first, because removing files during the
// listing could make it skip entries.
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
    bool removed = false;
    RunGuarded([&removed] { removed = RemoveMibFiles(); });
    LogMessage(removed ? L"All MIB files deleted." : L"Delete MIBs failed.");
    LoadMibFolder();
    return true;
}
