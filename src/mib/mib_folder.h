// Loads and lists the mibs folder. GUI thread only.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// Whether `path` names a MIB file: its extension is ".mib", ".txt" or ".my", in any letter case. As in the
// Windows shell, the extension begins at the last dot of the last path component, a name with a blank after
// that dot has none, and a file named ".mib" is a MIB file.
bool IsMibFile(std::wstring_view path);

// Rebuilds the name store from all MIB files in AppPaths.mibsDir, without its subfolders, and logs how many
// identifiers have a name. MibStoreLock is locked for the whole load including the log line, so no other
// thread sees half a load.
//
// Files that cannot be read are skipped. If listing the folder fails or memory runs out, the load ends there,
// names stored so far remain, and the count is logged as usual. Throws only if MibStoreLock cannot be locked;
// nothing has changed then.
void LoadMibFolder();

// Returns the names of the MIB files that are in the folder now, whether loaded or not, in ascending order of
// code units. If listing the folder fails or memory runs out, returns the names found so far. Locks nothing.
std::vector<std::wstring> ListMibFiles();
