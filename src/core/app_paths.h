// Where everything lives: one folder of the user's local application data.
#pragma once

#include <string>

// Written once by InitAppPaths on the GUI thread before any other thread exists, read-only afterwards,
// so no reader needs a lock. Empty until then. Parts are joined by concatenation: each suffix begins
// with a backslash.
struct AppPathTexts {
    std::wstring dataDir;       // <local application data>\Quillmont
    std::wstring mibsDir;       // ...\mibs: imported MIB files
    std::wstring configPath;    // ...\config.xml: forwarding settings
    std::wstring trapFilePath;  // ...\SNMP.txt: one record a trap
    std::wstring logFilePath;   // ...\log.txt: the activity log
};
extern AppPathTexts AppPaths;

// Works out the paths, makes the missing folders and makes sure that SNMP.txt and log.txt exist; an existing
// file is not changed. Every failure is silent: the opens that need the folder meet it later.
// Kept: without an application-data folder the data directory becomes \Quillmont of the current drive.
void InitAppPaths();
