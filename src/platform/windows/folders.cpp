#include "platform/folders.h"

#include "platform/windows/windows_headers.h"

// After windows_headers.h, whose types they use.
#include <shlobj.h>
#include <shlwapi.h>

namespace {

class ScopedSearch {
  public:
    explicit ScopedSearch(HANDLE handle) : handle_(handle) {}
    ScopedSearch(const ScopedSearch&) = delete;
    ScopedSearch& operator=(const ScopedSearch&) = delete;
    ~ScopedSearch() {
        if (*this) {
            FindClose(handle_);
        }
    }

    HANDLE get() const { return handle_; }
    explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }

  private:
    HANDLE handle_;
};

bool IsDotEntry(const std::wstring& name) {
    return name == L"." || name == L"..";
}

}  // namespace

std::wstring QueryLocalAppDataFolder() {
    wchar_t folder[MAX_PATH] = {};
    // Not checked: a failure leaves the buffer empty.
    SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder);
    return folder;
}

bool PathExists(const std::wstring& path) {
    return PathFileExistsW(path.c_str()) != FALSE;
}

void CreateFolderWithParents(const std::wstring& path) {
    SHCreateDirectoryExW(nullptr, path.c_str(), nullptr);
}

bool EnumerateFolder(const std::wstring& path, const std::function<void(const FolderEntry&)>& visit) {
    WIN32_FIND_DATAW data{};
    // The search returns each entry's attributes with its name, so no entry has to be opened.
    const ScopedSearch search(FindFirstFileExW((path + L"\\*").c_str(), FindExInfoBasic, &data,
                                               FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH));
    if (!search) {
        return false;
    }
    FolderEntry found;
    do {
        found.name = data.cFileName;
        found.isRegularFile = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
        if (!IsDotEntry(found.name)) {
            visit(found);
        }
    } while (FindNextFileW(search.get(), &data));
    return GetLastError() == ERROR_NO_MORE_FILES;
}
