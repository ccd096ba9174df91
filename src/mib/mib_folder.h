// The mibs folder as a whole. GUI thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// Whether the extension is ".mib", ".txt" or ".my", letter case ignored; nothing else decides what is a MIB
// file. As the shell sees it, the extension begins at the last dot after the last backslash, there is none
// when a blank follows that dot, and a file called just ".mib" is a MIB file.
bool IsMibFile(std::wstring_view path);

// Rebuilds the name store from every MIB file in AppPaths.mibsDir, sub-folders left out, and logs how many
// identifiers have a name. Locks MibStoreLock from start to end, the log line included, so that nobody sees
// half a load. Files that cannot be read are skipped. When the folder cannot be walked to its end or memory
// runs out, the load ends there with what it has stored, and logs nothing but the count. Throws what a lock
// throws that cannot be locked; nothing has changed then.
void LoadMibFolder();

// The names of the MIB files in the folder now, ascending by code unit. Never fails: of a folder that cannot
// be walked to its end the names seen so far. Locks nothing, and does not report what the last load read.
std::vector<std::wstring> ListMibFiles();
