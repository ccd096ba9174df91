// Copies MIB files into the mibs folder and removes them from it, for the two buttons of the status window.
// Results are only logged. Both functions run a modal dialog of `owner`. GUI thread only.
#pragma once

#include "platform/windows/windows_headers.h"

// Lets the operator choose files, copies them into the folder, replacing files of the same name, and loads
// the folder again. False: the dialog was cancelled or failed, and nothing has changed.
bool ImportMibFiles(HWND owner);

// Asks for confirmation, removes the MIB files from the folder up to the first failure, and loads the folder
// again. False: not confirmed, and nothing has changed.
bool DeleteAllMibs(HWND owner);
