#include "ui/mib_import.h"

// clang-format off
#include "platform/windows/windows_headers.h"
#include <commdlg.h>
// clang-format on

#include <algorithm>
#include <bit>
#include <string>
#include <vector>

#include "core/activity_log.h"
#include "core/app_paths.h"
#include "core/run_guarded.h"
#include "mib/mib_folder.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "ui/open_file_names.h"
#include "ui/status_window.h"
#include "ui/ui_resources.h"

namespace {

constexpr DWORD kDialogCapacity = 8192;  // characters; a selection that does not fit counts as cancelled

// What the buffer really holds: Wine's dialog writes a longer selection out in full.
constexpr size_t kDialogRoom = size_t{8} * kDialogCapacity;

// Pairs of description and pattern, ended by an empty text.
// Kept: the first description does not name ".my" although its pattern takes it; the line is long enough as
// it is.
constexpr wchar_t kDialogFilter[] = L"MIB files (*.mib;*.txt)\0*.mib;*.txt;*.my\0All files\0*.*\0";

// Kept: the umlaut stands as the two characters that its UTF-8 octets make; operators know the question so.
constexpr wchar_t kDeleteQuestion[] = L"Alle MIB Dateien im MIB-Ordner l\u00C3\u00B6schen?";

// The dialog leaves the process in the folder of what was chosen, and a disk with a process in it is not
// ejected. (The flag that should keep it from there means nothing to this dialog.)
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

using OpenFileDialog = decltype(&GetOpenFileNameW);

// The dialog comes from a library that brings the printing system with it, megabytes that nothing else here
// needs. So it is loaded for the first import, and then stays, since what the shell hangs into the dialog can
// outlive it. Null: it cannot be loaded now.
OpenFileDialog LoadOpenFileDialog() {
    const HMODULE library = LoadLibraryExW(L"comdlg32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    return library ? std::bit_cast<OpenFileDialog>(GetProcAddress(library, "GetOpenFileNameW")) : nullptr;
}

// False: cancelled, or the selection did not fit.
bool AskForFiles(OpenFileDialog openFileDialog, std::wstring& buffer) {
    const ScopedCurrentFolder former;
    buffer.assign(kDialogRoom, L'\0');
    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof(dialog);
    dialog.hwndOwner = StatusWindowHandle ? StatusWindowHandle : MainWindowHandle;
    dialog.lpstrTitle = L"Import MIB files";
    dialog.lpstrFilter = kDialogFilter;
    dialog.nFilterIndex = 1;
    dialog.lpstrFile = buffer.data();
    dialog.nMaxFile = kDialogCapacity;
    dialog.Flags = OFN_EXPLORER | OFN_ALLOWMULTISELECT | OFN_FILEMUSTEXIST;
    return openFileDialog(&dialog) != FALSE;
}

bool ImportFile(const ChosenFile& file) {
    if (!CopyFileOver(file.path, AppPaths.mibsDir + L"\\" + file.name)) {
        return false;
    }
    LogMessage(L"MIB imported: " + file.name);
    return true;
}

// Kept: among several files a failed one is passed over without a line; the missing "MIB imported:" tells.
void ImportFiles(const ChosenFiles& chosen) {
    for (const ChosenFile& file : chosen.files) {
        if (!ImportFile(file) && !chosen.several) {
            LogMessage(L"MIB import failed.");
        }
    }
}

void ReloadMibs() {
    LoadMibFolder();
    RefreshStatus();
}

bool ConfirmDeletion() {
    return MessageBoxW(StatusWindowHandle, kDeleteQuestion, L"Delete MIBs", MB_YESNO | MB_ICONWARNING) ==
           IDYES;
}

// In listing order, up to the first failure. A listing that broke off still loses the files it had got to.
// Listed first and removed afterwards, because removing under a walk can make the walk skip entries.
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

void ImportMibFiles() {
    const OpenFileDialog openFileDialog = LoadOpenFileDialog();
    if (!openFileDialog) {
        // A button that does nothing would be taken for broken.
        LogMessage(L"MIB import failed.");
        return;
    }
    std::wstring buffer;
    if (!AskForFiles(openFileDialog, buffer)) {
        return;
    }
    // What was copied before memory ran out is loaded all the same.
    RunGuarded([&buffer] { ImportFiles(ParseOpenFileNames(buffer)); });
    ReloadMibs();
}

void DeleteAllMibs() {
    if (!ConfirmDeletion()) {
        return;
    }
    bool removed = false;
    RunGuarded([&removed] { removed = RemoveMibFiles(); });
    LogMessage(removed ? L"All MIB files deleted." : L"Delete MIBs failed.");
    ReloadMibs();
}
