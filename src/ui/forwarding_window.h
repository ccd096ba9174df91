// Where the operator switches forwarding on or off and names its target. GUI thread only.
#pragma once

// Opens the window with the current settings in it, or raises the one that is open, untouched.
void OpenForwardingWindow();
