// The paths of all data files. They are in one folder of the user's local application data.
#pragma once

#include <string>

// Set once by InitAppPaths, on the GUI thread before any other thread exists, and read-only afterwards, so no
// lock is needed. Empty until then.
struct AppPathTexts {
    std::wstring dataDir;       // <local application data>\Quillmont
    std::wstring mibsDir;       // ...\mibs: imported MIB files
    std::wstring configPath;    // ...\config.xml: forwarding settings
    std::wstring trapFilePath;  // ...\SNMP.txt: one record for each trap
    std::wstring logFilePath;   // ...\log.txt: the activity log
};
extern AppPathTexts AppPaths;

// Sets the paths and creates the folders, SNMP.txt and log.txt, each if it is missing. Existing files are not
// changed. Failures are not reported: later file operations in the folder fail too. May throw std::bad_alloc.
//
// Intentional: without an application-data folder the data folder is \Quillmont on the current drive, so that
// the receiver starts anyway.
void InitAppPaths();
