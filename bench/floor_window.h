// Whether the floor program has a window is chosen by linking one of two sources: a window costs memory,
// whoever has it.
#pragma once

void ShowEmptyWindow();
