// The live summary of the receiver and the list of imported MIB files, refreshed every 700 ms. GUI
// thread only.
#pragma once

// Opens the window, or raises the one that is open.
void OpenStatusWindow();
