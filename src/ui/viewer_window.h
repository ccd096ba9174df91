// The trap monitor and the log viewer: two windows of one design. Each follows a data file as it grows and
// can clear it. GUI thread only.
#pragma once

// Each opens its window with the whole file in it, or raises the open one without reading the file again.
void OpenMonitorWindow();
void OpenLogWindow();
