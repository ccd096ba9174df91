// Finds, creates and lists folders.
#pragma once

#include <functional>
#include <string>

// Returns the user's local, non-roaming application-data folder without a trailing separator; empty if the
// system does not know it.
//
// POSIX: the value of the environment variable QUILLMONT_DATA_HOME, which the engine tests set to a scratch
// folder.
std::wstring QueryLocalAppDataFolder();

// Whether a file or folder exists at `path`.
bool PathExists(const std::wstring& path);

// Creates the folder and its missing parents. Does not report failures: opening a file there fails too.
void CreateFolderWithParents(const std::wstring& path);

struct FolderEntry {
    std::wstring name;           // last component only
    bool isRegularFile = false;  // a link to a file counts as one
};

// Calls `visit` for each entry except "." and "..", in the system's order, without descending into folders.
// False: the folder or an entry could not be read; the entries before it were visited. Exceptions of `visit`
// are passed on.
bool EnumerateFolder(const std::wstring& path, const std::function<void(const FolderEntry&)>& visit);
