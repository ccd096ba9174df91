// The two buttons at the foot of the status window: bringing MIB files into the mibs folder and emptying it.
// What came of it stands in the activity log only. GUI thread only; both run a modal dialog.
#pragma once

// Lets the operator choose files and copies them over whatever the folder holds, then loads the folder again.
void ImportMibFiles();

// Asks, removes the MIB files of the folder up to the first failure, then loads the folder again.
void DeleteAllMibs();
