// The mibs folder as a whole. GUI thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// The one test of what counts as a MIB file: the extension is ".mib", ".txt" or ".my", letter case ignored.
// It begins at the last dot behind the last backslash; a blank behind that dot makes it none, and a file
// called just ".mib" is a MIB file, both as the shell sees extensions.
bool IsMibFile(std::wstring_view path);

// Rebuilds the name store from every MIB file in AppPaths.mibsDir, sub-folders left out, and logs how many
// identifiers have a name. Holds MibStoreLock from beginning to end, the log line included, so that nobody
// sees half a load. Files that cannot be read are passed over. When the folder cannot be walked to its end or
// memory runs out, the load ends there with what it has stored, and says nothing but the count. Throws what a
// lock throws that cannot be taken; nothing has changed then.
void LoadMibFolder();

// The names of the MIB files in the folder now, ascending by code unit. Never fails: of a folder that cannot
// be walked to its end the names seen so far. Takes no lock, and does not say what the last load read.
std::vector<std::wstring> ListMibFiles();
