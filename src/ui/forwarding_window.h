// The window in which the operator switches forwarding on or off and enters its target. GUI thread only.
#pragma once

// Opens the window with the current settings, or raises the open one without changing its fields.
void OpenForwardingWindow();
