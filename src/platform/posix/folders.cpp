#include "platform/folders.h"

#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "platform/posix/posix_paths.h"
#include "platform/text_decoding.h"

namespace {

constexpr mode_t kNewFolderMode = 0755;

struct FolderCloser {
    void operator()(DIR* folder) const { closedir(folder); }
};
using ScopedFolder = std::unique_ptr<DIR, FolderCloser>;

// False: the entry was removed meanwhile or cannot be accessed.
bool ReadEntryType(const std::string& folder, const dirent& entry, bool* isRegularFile) {
    if (entry.d_type != DT_UNKNOWN && entry.d_type != DT_LNK) {
        *isRegularFile = entry.d_type == DT_REG;
        return true;
    }
    struct stat status {};
    const bool known = stat((folder + "/" + entry.d_name).c_str(), &status) == 0;
    // A dangling link is an entry like any other, but not a file.
    *isRegularFile = known && S_ISREG(status.st_mode);
    return known || entry.d_type == DT_LNK;
}

}  // namespace

std::wstring QueryLocalAppDataFolder() {
    const char* home = std::getenv("QUILLMONT_DATA_HOME");
    std::wstring folder;
    if (home != nullptr) {
        DecodeUtf8OrAnsi(home, folder);
    }
    return folder;
}

bool PathExists(const std::wstring& path) {
    struct stat status {};
    return stat(PosixPath(path).c_str(), &status) == 0;
}

void CreateFolderWithParents(const std::wstring& path) {
    const std::string folder(PosixPath(path).View());
    for (size_t slash = folder.find('/', 1); slash != std::string::npos;
         slash = folder.find('/', slash + 1)) {
        mkdir(folder.substr(0, slash).c_str(), kNewFolderMode);
    }
    mkdir(folder.c_str(), kNewFolderMode);
}

bool EnumerateFolder(const std::wstring& path, const std::function<void(const FolderEntry&)>& visit) {
    const std::string folder(PosixPath(path).View());
    const ScopedFolder stream(opendir(folder.c_str()));
    if (!stream) {
        return false;
    }
    FolderEntry found;
    for (;;) {
        errno = 0;
        const dirent* entry = readdir(stream.get());
        if (entry == nullptr) {
            return errno == 0;
        }
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") {
            continue;
        }
        if (!ReadEntryType(folder, *entry, &found.isRegularFile)) {
            return false;
        }
        DecodeUtf8OrAnsi(name, found.name);  // not every file name is UTF-8
        visit(found);
    }
}
