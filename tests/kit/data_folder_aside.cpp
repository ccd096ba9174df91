#include "tests/kit/data_folder_aside.h"

#include <filesystem>

#include "platform/windows/windows_headers.h"
#include "tests/support/wait_until.h"

// Needs windows.h first.
#include <shlobj.h>

namespace fs = std::filesystem;

namespace {

bool Exists(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// A virus scanner or an Explorer window may have the folder open for a moment.
bool Retry(const auto& attempt) {
    return WaitUntil(attempt, std::chrono::seconds(10));
}

}  // namespace

std::wstring DataFolder() {
    wchar_t folder[MAX_PATH] = {};
    SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder);
    return std::wstring(folder) + L"\\Quillmont";
}

bool RemoveFolder(const std::wstring& folder) {
    return Retry([&folder] {
        std::error_code error;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder, error)) {
            SetFileAttributesW(entry.path().c_str(), FILE_ATTRIBUTE_NORMAL);
        }
        fs::remove_all(folder, error);
        return !Exists(folder);
    });
}

DataFolderAside::DataFolderAside(const std::wstring& folder)
    : folder_(folder), aside_(folder + L".aside-for-check"), marker_(folder + L".none-before-check") {
    foundLeftover_ = Exists(aside_) || Exists(marker_);
    PutBack();
}

DataFolderAside::~DataFolderAside() {
    PutBack();
}

bool DataFolderAside::MoveAside() {
    if (Exists(aside_) || Exists(marker_)) {
        return false;
    }
    return Retry([this] {
        return (Exists(folder_) ? MoveFileW(folder_.c_str(), aside_.c_str())
                                : CreateDirectoryW(marker_.c_str(), nullptr)) != FALSE;
    });
}

bool DataFolderAside::PutBack() {
    if (!Exists(aside_) && !Exists(marker_)) {
        return true;
    }
    if (!RemoveFolder(folder_)) {
        return false;
    }
    return Retry([this] {
        return (Exists(aside_) ? MoveFileW(aside_.c_str(), folder_.c_str())
                               : RemoveDirectoryW(marker_.c_str())) != FALSE;
    });
}
