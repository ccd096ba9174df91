// The trap monitor and the log viewer: two windows of one design, each following a data file as it grows and
// able to empty it. GUI thread only.
#pragma once

// Each opens its window with the whole file in it, or raises the one that is open, untouched.
void OpenMonitorWindow();
void OpenLogWindow();
