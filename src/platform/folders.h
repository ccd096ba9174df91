// Folders: where the user's data belongs, making them, and walking through one.
#pragma once

#include <functional>
#include <string>

// The user's local, non-roaming application-data folder as the system names it, without a trailing separator;
// empty when the system does not know it.
// POSIX: the environment variable QUILLMONT_DATA_HOME, which the engine tests point at a scratch folder.
std::wstring QueryLocalAppDataFolder();

// Whether a file or folder stands at `path`.
bool PathExists(const std::wstring& path);

// Makes the folder and its missing parents. A failure is silent: whoever opens a file there meets it.
void CreateFolderWithParents(const std::wstring& path);

struct FolderEntry {
    std::wstring name;           // last component only
    bool isRegularFile = false;  // a link to a file counts as one
};

// Calls `visit` for each entry but "." and "..", in the system's order, not descending. False: the folder
// cannot be opened, an entry's type cannot be read or the walk broke off; entries seen so far were visited.
// What `visit` throws passes through.
bool EnumerateFolder(const std::wstring& path, const std::function<void(const FolderEntry&)>& visit);
