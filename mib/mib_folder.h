// The mibs folder as a whole. GUI thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// The one test of what counts as a MIB file: extension ".mib", ".txt" or ".my", letter case ignored.
bool IsMibFile(std::wstring_view path);

// Rebuilds the name store from every MIB file in AppPaths.mibsDir and logs how many identifiers have a name.
void LoadMibFolder();

// The names of the MIB files in the folder now, ascending by code unit. Never fails; takes no lock.
std::vector<std::wstring> ListMibFiles();
